#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/TerminalScreen.h"
#include "platform/ui/MenuTracking.h"

namespace kibhost {

// An open menu as the terminal shows it: a box of rows under the slot with
// check marks and dashes, images as glyphs, indentation, key equivalents, and
// disabled rows dimmed. It keeps the highlighted row and whether Option is
// held (alternate rows replace their main rows then).
class TerminalMenu {
 public:
  TerminalMenu(const platform::MenuTracking& tracking, std::uint64_t modifierFlags);

  std::uint64_t modifierFlags() const { return modifierFlags_; }
  bool isOptionHeld() const;
  void toggleOption();

  // Moves the highlight to the next (or previous) enabled row, wrapping around.
  void moveSelection(int direction);
  // The menu index of the highlighted row, −1 when none is.
  std::int64_t selectedIndex() const;

  // Draws the box with its top-left corner under the slot's first column,
  // moved left as far as needed to fit the screen, in the rows [top, bottom);
  // a menu that does not fit shows the part around the highlighted row, with
  // ▲ and ▼ on its borders where rows are hidden.
  void draw(TerminalScreen& screen, int slotColumn, int top, int bottom);
  // The menu index of the enabled row drawn at the cell, −1 for anything else;
  // inBox tells whether the cell is inside the box at all.
  std::int64_t indexAt(int column, int row, bool& inBox) const;

  // "⌃⎋" for Control-Escape, "⌥⇧K" …: how a key equivalent is shown.
  static std::string keyEquivalentText(const std::string& key, std::uint64_t modifierMask);

 private:
  std::vector<platform::MenuTracking::Row> rows() const;
  std::string rowTitle(const platform::MenuItem& item) const;

  const platform::MenuTracking& tracking_;
  std::uint64_t modifierFlags_;
  int selected_ = -1;  // position among the visible rows
  int first_ = 0;      // the first row drawn when the menu is taller than the screen
  int shownRows_ = 0;
  // Where the box was last drawn.
  int boxX_ = 0, boxY_ = 0, boxWidth_ = 0, boxHeight_ = 0;
};

}  // namespace kibhost
