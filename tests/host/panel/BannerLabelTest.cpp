#include <gtest/gtest.h>

#include "host/panel/BannerLabel.h"
#include "host/panel/LabelThrottle.h"
#include "platform/ui/TextFieldCell.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using kibhost::BannerLabel;
using kibhost::LabelThrottle;

namespace {

// The banner as the view draws it: the text (and a following copy) at x, clipped to the text area.
RecordingCanvas banner(const std::string& text, double x, double clipWidth, std::optional<double> copyX = {}) {
  RecordingCanvas canvas;
  TextFieldCell cell(text);
  canvas.saveGraphicsState();
  canvas.clipToRect({30, 0, clipWidth, 20});
  canvas.drawCell(cell, {x, 0, 400, 20});
  if (copyX) canvas.drawCell(cell, {*copyX, 0, 400, 20});
  canvas.restoreGraphicsState();
  return canvas;
}

TEST(BannerLabelTest, TheLabelIsWhatTheClipShowsCutByCharacters) {
  const double step = BannerLabel::advance();
  struct Case {
    const char* what;
    RecordingCanvas canvas;
    std::string label;
  };
  std::vector<Case> cases;
  cases.push_back({"fully revealed", banner("Back soon", 30, 9 * step + 2), "Back soon"});
  cases.push_back({"revealing: the first characters", banner("Back soon", 30, 4 * step), "Back"});
  cases.push_back({"collapsed: an empty clip", banner("Back soon", 30, 0), ""});
  cases.push_back({"scrolled by three characters", banner("Back soon", 30 - 3 * step, 6 * step), "k soon"});
  cases.push_back({"multi-byte characters are kept whole", banner("Inês Ž→", 30, 3 * step + 1), "Inê"});
  cases.push_back(
      {"the gap before the copy is spaces", banner("abcdef", 30 - 4 * step, 7 * step, 30 + 2 * step + 20), "ef   ab"});
  for (const auto& c : cases) EXPECT_EQ(BannerLabel::visibleText(c.canvas), c.label) << c.what;
  EXPECT_EQ(BannerLabel::bannerText(cases[0].canvas), "Back soon");
  EXPECT_EQ(BannerLabel::bannerText(RecordingCanvas{}), "");
}

TEST(BannerLabelTest, TheGuideIsTheWidestTextTheSlotCanShow) {
  EXPECT_EQ(BannerLabel::guideFor("Short"), "Short");
  EXPECT_EQ(BannerLabel::guideFor("Proofreading chapter 3 tonight"), "Proofreading ch");
  EXPECT_EQ(BannerLabel::guideFor("ÄÖÜäöüßÄÖÜäöüßÄÖÜ"), "ÄÖÜäöüßÄÖÜäöüßÄ");  // 15 characters, 30 bytes
}

class LabelThrottleTest : public kibtest::PlatformTest {};

TEST_F(LabelThrottleTest, LabelsGoOutAtMostTenTimesASecondAndTheLatestWins) {
  std::vector<std::pair<double, std::string>> sent;
  LabelThrottle throttle(0.1, [&](const std::string& label) { sent.emplace_back(now(), label); });
  const double start = now();
  // A 30-per-second scroll for one second.
  for (int frame = 0; frame < 30; ++frame) {
    throttle.update("frame " + std::to_string(frame));
    advance(1.0 / 30);
  }
  advance(0.5);
  ASSERT_GE(sent.size(), 9u);
  EXPECT_LE(sent.size(), 11u);
  for (std::size_t i = 1; i < sent.size(); ++i) EXPECT_GE(sent[i].first - sent[i - 1].first, 0.1 - 1e-9);
  EXPECT_EQ(sent.front(), std::make_pair(start, std::string("frame 0")));
  EXPECT_EQ(sent.back().second, "frame 29");
  EXPECT_FALSE(throttle.hasPending());

  // The same label again sends nothing; at rest nothing is scheduled.
  const auto count = sent.size();
  throttle.update("frame 29");
  advance(1);
  EXPECT_EQ(sent.size(), count);
  EXPECT_EQ(RunLoop::main().nextDueTime(kCommonRunLoopModes), std::numeric_limits<double>::infinity());

  // A change that comes back before the interval ends sends nothing.
  throttle.update("x");
  throttle.update("y");
  throttle.update("x");
  advance(0.2);
  EXPECT_EQ(sent.back().second, "x");
  EXPECT_EQ(sent.size(), count + 1);
}

}  // namespace
