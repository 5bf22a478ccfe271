#pragma once

#include <cstdint>

namespace platform {

// Modifier-key masks of key equivalents and events, with the platform's values.
inline constexpr std::uint64_t kAlphaShiftKeyMask = 0x10000;
inline constexpr std::uint64_t kShiftKeyMask = 0x20000;
inline constexpr std::uint64_t kControlKeyMask = 0x40000;
inline constexpr std::uint64_t kAlternateKeyMask = 0x80000;  // Option
inline constexpr std::uint64_t kCommandKeyMask = 0x100000;
// The modifiers that distinguish key equivalents and alternate items.
inline constexpr std::uint64_t kDeviceIndependentModifierMask =
    kShiftKeyMask | kControlKeyMask | kAlternateKeyMask | kCommandKeyMask;

// Key equivalents that are not printable characters.
inline constexpr const char* kEscapeKeyEquivalent = "\033";

}  // namespace platform
