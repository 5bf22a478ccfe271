#include "platform/ui/KeyEquivalentText.h"

#include <cctype>

#include "platform/ui/KeyModifiers.h"

namespace platform {

std::string keyEquivalentText(const std::string& key, std::uint64_t modifierMask) {
  if (key.empty()) return "";
  std::string text;
  if (modifierMask & kControlKeyMask) text += "⌃";
  if (modifierMask & kAlternateKeyMask) text += "⌥";
  if (modifierMask & kShiftKeyMask) text += "⇧";
  if (modifierMask & kCommandKeyMask) text += "⌘";
  if (key == "\033")
    text += "⎋";
  else if (key == "\r")
    text += "↩";
  else if (key == "\t")
    text += "⇥";
  else if (key == " ")
    text += "Space";
  else if (key.size() == 1)
    text += static_cast<char>(std::toupper(static_cast<unsigned char>(key[0])));
  else
    text += key;
  return text;
}

}  // namespace platform
