#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kibhost {

// One thing the user did at the terminal.
struct KeyEvent {
  enum class Kind {
    Character,  // text: one UTF-8 character
    Control,    // control: the letter of a Control chord ('c' for Control-C)
    Enter,
    Escape,
    Tab,
    Backspace,
    Up,
    Down,
    Left,
    Right,
    Home,
    End,
    PageUp,
    PageDown,
    MouseDown,  // column, row: 0-based cell of a left-button press
  };
  Kind kind = Kind::Character;
  std::string text;
  char control = 0;
  int column = 0;
  int row = 0;
  bool alt = false;  // the key came with Alt (Escape before it)

  friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

// Turns the bytes a terminal sends into key events: characters, control
// chords, the usual cursor-key sequences and SGR mouse reports. A lone Escape
// at the end of the bytes read is the Escape key.
class KeyDecoder {
 public:
  std::vector<KeyEvent> decode(std::string_view bytes);

 private:
  // Reads an escape sequence at i (bytes[i] is ESC); answers the bytes used.
  std::size_t decodeEscape(std::string_view bytes, std::size_t i, std::vector<KeyEvent>& events);
};

}  // namespace kibhost
