#include <gtest/gtest.h>

#include "host/KeyDecoder.h"

namespace {

using kibhost::KeyDecoder;
using kibhost::KeyEvent;
using Kind = KeyEvent::Kind;

std::vector<Kind> kinds(const std::vector<KeyEvent>& events) {
  std::vector<Kind> result;
  for (const auto& event : events) result.push_back(event.kind);
  return result;
}

TEST(KeyDecoderTest, KeysSequencesAndMouseReports) {
  KeyDecoder decoder;
  EXPECT_EQ(kinds(decoder.decode("\x1b[A\x1b[B\x1bOC\x1b[D\r\n\t\x7f\x1b[5~\x1b[H\x1b[Z")),
            (std::vector<Kind>{Kind::Up, Kind::Down, Kind::Right, Kind::Left, Kind::Enter, Kind::Enter, Kind::Tab,
                               Kind::Backspace, Kind::PageUp, Kind::Home, Kind::Tab}));

  auto text = decoder.decode("aé♫");
  ASSERT_EQ(text.size(), 3u);
  EXPECT_EQ(text[1].text, "é");
  EXPECT_EQ(text[2].text, "♫");

  auto controls = decoder.decode("\x03\x05");
  ASSERT_EQ(controls.size(), 2u);
  EXPECT_EQ(controls[0].kind, Kind::Control);
  EXPECT_EQ(controls[0].control, 'c');
  EXPECT_EQ(controls[1].control, 'e');

  // A lone Escape at the end of what was read is the key; Escape twice is two presses.
  EXPECT_EQ(kinds(decoder.decode("\x1b")), std::vector<Kind>{Kind::Escape});
  EXPECT_EQ(kinds(decoder.decode("\x1b\x1b")), (std::vector<Kind>{Kind::Escape, Kind::Escape}));
  auto alt = decoder.decode("\x1b\r");
  ASSERT_EQ(alt.size(), 1u);
  EXPECT_EQ(alt[0].kind, Kind::Enter);
  EXPECT_TRUE(alt[0].alt);

  // Left presses (with or without modifier bits) are reported 0-based; releases, other buttons and the wheel are not.
  auto mouse = decoder.decode("\x1b[<0;10;1M\x1b[<0;10;1m\x1b[<2;3;4M\x1b[<64;1;1M\x1b[<16;5;7M");
  ASSERT_EQ(mouse.size(), 2u);
  EXPECT_EQ(mouse[0].kind, Kind::MouseDown);
  EXPECT_EQ(mouse[0].column, 9);
  EXPECT_EQ(mouse[0].row, 0);
  EXPECT_EQ(mouse[1].column, 4);
  EXPECT_EQ(mouse[1].row, 6);

  // Sequences the program does not use are swallowed whole.
  EXPECT_EQ(kinds(decoder.decode("\x1b[15~x")), std::vector<Kind>{Kind::Character});
}

TEST(KeyDecoderTest, MalformedMouseReportsAreDropped) {
  KeyDecoder decoder;
  for (const char* report : {"\x1b[<0;99999999999999999999;1M", "\x1b[<0;2147483648;1M", "\x1b[<0;-5;1M",
                             "\x1b[<0;0;1M", "\x1b[<0;3M", "\x1b[<0;3;4;5M", "\x1b[<0;3:4M", "\x1b[<;;M"}) {
    auto events = decoder.decode(std::string(report) + "q");
    ASSERT_EQ(events.size(), 1u) << report;
    EXPECT_EQ(events[0].kind, Kind::Character) << report;
  }
  // An escape inside a sequence abandons it; what follows is read afresh.
  EXPECT_EQ(kinds(decoder.decode("\x1b[<0;1\x1b[A")),
            (std::vector<Kind>{Kind::Escape, Kind::Character, Kind::Character, Kind::Character, Kind::Character,
                               Kind::Character, Kind::Up}));
}

}  // namespace
