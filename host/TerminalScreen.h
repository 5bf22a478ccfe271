#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kibhost {

// A character-cell picture of the whole terminal, drawn into and then turned
// into the escape sequences that bring the terminal from the previous picture
// to this one (only changed rows are written). Every code point takes one column.
class TerminalScreen {
 public:
  // The 16 terminal colours; Default leaves the terminal's own.
  enum class Color : std::int8_t {
    Default = -1,
    Black = 0,
    Red,
    Green,
    Yellow,
    Blue,
    Magenta,
    Cyan,
    White,
    BrightBlack,
    BrightRed,
    BrightGreen,
    BrightYellow,
    BrightBlue,
    BrightMagenta,
    BrightCyan,
    BrightWhite
  };

  struct Style {
    Color foreground = Color::Default;
    Color background = Color::Default;
    bool bold = false;
    bool dim = false;
    bool reverse = false;
    friend bool operator==(const Style&, const Style&) = default;
  };

  struct Cell {
    std::string glyph = " ";
    Style style;
    friend bool operator==(const Cell&, const Cell&) = default;
  };

  void resize(int width, int height);
  int width() const { return width_; }
  int height() const { return height_; }

  // Blanks every cell.
  void clear();
  // Writes text from (x, y), cut at the right edge or after maxWidth columns;
  // answers the columns written. Control characters show as spaces.
  int put(int x, int y, std::string_view text, const Style& style, int maxWidth = -1);
  int put(int x, int y, std::string_view text);
  void fill(int x, int y, int width, const Style& style, std::string_view glyph = " ");
  Cell& at(int x, int y);
  const Cell& at(int x, int y) const;
  bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
  // The text of a row (glyphs only), for tests and captured screens.
  std::string rowText(int y) const;

  // The escape sequences that bring a terminal showing `previous` (or
  // anything, when it is empty or of another size) to this picture.
  std::string render(const TerminalScreen& previous) const;

  // Splits UTF-8 text into code points (an invalid byte becomes U+FFFD).
  static std::vector<std::string> codePoints(std::string_view text);
  static int columns(std::string_view text) { return static_cast<int>(codePoints(text).size()); }
  // The text cut or padded with spaces to exactly the columns; a cut text ends in "…".
  static std::string fitted(std::string_view text, int width);

 private:
  static std::string styleSequence(const Style& style);

  int width_ = 0;
  int height_ = 0;
  std::vector<Cell> cells_;
};

}  // namespace kibhost
