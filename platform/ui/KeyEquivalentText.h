#pragma once

#include <cstdint>
#include <string>

namespace platform {

// How menus show a key equivalent: the modifier symbols in the platform's
// order (⌃ ⌥ ⇧ ⌘), then the key ("⎋" for Escape, "↩", "⇥", "Space", a letter
// in upper case): "⌃⎋", "⌥⇧K". "" for no key.
std::string keyEquivalentText(const std::string& key, std::uint64_t modifierMask);

}  // namespace platform
