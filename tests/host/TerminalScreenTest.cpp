#include <gtest/gtest.h>

#include "host/TerminalScreen.h"

namespace {

using kibhost::TerminalScreen;

TEST(TerminalScreenTest, TextIsPlacedByCodePointsAndCutAtTheEdge) {
  TerminalScreen screen;
  screen.resize(10, 2);
  EXPECT_EQ(screen.put(7, 0, "Inês"), 3);
  EXPECT_EQ(screen.rowText(0), "       Inê");
  EXPECT_EQ(screen.put(-1, 1,
                       "ab\x01"
                       "cd",
                       {}, 4),
            4);
  EXPECT_EQ(screen.rowText(1), "b c       ") << "cut at the left edge; the control character shows as a space";
  EXPECT_EQ(screen.put(0, 5, "off screen"), 0);

  EXPECT_EQ(TerminalScreen::fitted("Maya", 6), "Maya  ");
  EXPECT_EQ(TerminalScreen::fitted("selftest@jabber", 8), "selftes…");
  EXPECT_EQ(TerminalScreen::fitted("Inês", 4), "Inês");
  EXPECT_EQ(TerminalScreen::fitted("x", 0), "");
  EXPECT_EQ(TerminalScreen::columns("♫ é\xff"), 4) << "an invalid byte counts as one replacement character";
}

TEST(TerminalScreenTest, RenderingWritesOnlyTheRowsThatChanged) {
  TerminalScreen before;
  before.resize(6, 3);
  before.put(0, 0, "top");
  before.put(0, 2, "end");
  TerminalScreen after = before;
  TerminalScreen::Style red;
  red.foreground = TerminalScreen::Color::Red;
  red.bold = true;
  after.put(1, 1, "ok", red);

  const std::string update = after.render(before);
  EXPECT_EQ(update, "\x1b[2;1H\x1b[0m \x1b[0;1;31mok\x1b[0m   \x1b[0m");
  EXPECT_EQ(after.render(after), "");

  TerminalScreen empty;
  const std::string full = after.render(empty);
  EXPECT_EQ(full.rfind("\x1b[0m\x1b[2J", 0), 0u) << "a terminal of unknown content is cleared first";
  EXPECT_NE(full.find("\x1b[1;1H"), std::string::npos);
  EXPECT_NE(full.find("\x1b[3;1H"), std::string::npos);

  TerminalScreen::Style bright;
  bright.foreground = TerminalScreen::Color::BrightWhite;
  bright.background = TerminalScreen::Color::Blue;
  bright.reverse = true;
  after.put(0, 0, "x", bright);
  EXPECT_NE(after.render(before).find("\x1b[0;7;97;44mx"), std::string::npos);
}

}  // namespace
