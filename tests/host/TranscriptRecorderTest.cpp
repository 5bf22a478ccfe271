#include <gtest/gtest.h>

#include <sstream>

#include "host/Transcript.h"
#include "host/TranscriptRecorder.h"
#include "platform/core/AssertionHandler.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Preferences.h"
#include "platform/core/String.h"
#include "platform/im/IMDaemonController.h"
#include "platform/ui/ButtonCell.h"
#include "platform/ui/TextFieldCell.h"
#include "platform/ui/Workspace.h"
#include "sim/SimWorld.h"
#include "tests/host/HostTestSupport.h"
#include "tests/support/PlatformTest.h"

namespace {

using kibtest::linesOfType;
using kibtest::transcriptLines;

class TranscriptRecorderTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    world = sim::SimWorld::makeDefault();
    transcript = std::make_unique<kibhost::Transcript>(out);
    recorder = std::make_unique<kibhost::TranscriptRecorder>(*transcript, world.get());
  }
  void TearDown() override {
    recorder.reset();
    world.reset();
    PlatformTest::TearDown();
  }

  std::vector<nlohmann::ordered_json> lines() const { return transcriptLines(out.str()); }

  // Draws a slot with an icon and, when given, a text at x.
  // Draws a slot with an icon and, when given, a text at x (and its following copy 20 points after its end, as a
  // scrolling banner draws it).
  void display(const std::string& image, bool dimmed, std::optional<std::string> text = std::nullopt, double x = 30,
               bool highlighted = false) {
    platform::RecordingCanvas canvas;
    canvas.fillMenuBackground({0, 0, 24, 22}, highlighted);
    platform::ButtonCell icon;
    icon.setImage(platform::Image::initByReferencingFile("/nowhere/" + image));
    icon.setEnabled(!dimmed);
    canvas.drawCell(icon, {2, 3, 20, 15});
    if (text) canvas.drawCell(platform::TextFieldCell(*text), {x, 0, 50, 20});
    if (text && x < 30) canvas.drawCell(platform::TextFieldCell(*text), {x + 70, 0, 50, 20});
    recorder->slotDidDisplay(canvas);
  }

  std::ostringstream out;
  std::shared_ptr<sim::SimWorld> world;
  std::unique_ptr<kibhost::Transcript> transcript;
  std::unique_ptr<kibhost::TranscriptRecorder> recorder;
};

TEST_F(TranscriptRecorderTest, LinesCarryTheTimeAndType) {
  advance(1.25);
  transcript->write("step", {{"line", 3}});
  auto line = lines().at(0);
  EXPECT_EQ(line.dump(), R"({"t":1.25,"type":"step","line":3})") << "time and type come first";
  EXPECT_EQ(kibhost::Transcript::rounded(1.0 / 60), 0.0167);
  EXPECT_EQ(kibhost::Transcript::rounded(-0.00001), 0.0);
}

TEST_F(TranscriptRecorderTest, TheSlotIsWrittenWhenItChanges) {
  recorder->slotLengthDidChange(24);
  recorder->slotLengthDidChange(24.0001);  // the same at a thousandth of a point
  recorder->slotLengthDidChange(61.75);
  display("MenuExtra.pdf", true);
  display("MenuExtra.pdf", true);
  display("MenuExtra.pdf", false);
  display("MenuExtra-.pdf", false, "Lunch");
  display("MenuExtra-.pdf", false, "Lunch", 30);
  display("MenuExtra-.pdf", false, "Lunch", 28);  // scrolling
  display("MenuExtra-.pdf", false, "Lunch", -38);
  display("MenuExtra-.pdf", false, "Lunch", 30);  // where its copy stood: one cycle
  display("MenuExtra-.pdf", false, "Lunch", 28);
  display("MenuExtra-.pdf", false, "Lunch", 10);
  display("MenuExtra-.pdf", false, "Lunch", 30);  // a jump back: the scrolling restarts, no cycle
  display("MenuExtra-.pdf", false, "Lunch", 28);
  display("MenuExtra-.pdf", false, "Lunch", -40);
  display("MenuExtra-.pdf", false, "Lunch", 30);
  display("MenuExtra-.pdf", false, "Lunch", 30, true);
  display("MenuExtra-.pdf", false);

  std::vector<std::string> summary;
  for (const auto& line : lines()) {
    std::string text = line["type"];
    for (const auto& [key, value] : line.items())
      if (key != "t" && key != "type") text += " " + value.dump();
    summary.push_back(text);
  }
  EXPECT_EQ(summary, (std::vector<std::string>{
                         "length 24.0",
                         "length 61.75",
                         "icon \"MenuExtra.pdf\" true",
                         "icon \"MenuExtra.pdf\" false",
                         "icon \"MenuExtra-.pdf\" false",
                         "banner \"Lunch\"",
                         "banner-scroll \"start\"",
                         "banner-scroll \"wrap\" 1",
                         "banner-scroll \"start\"",
                         "banner-scroll \"wrap\" 1",
                         "highlight true",
                         "highlight false",
                         "banner null",
                     }));
}

TEST_F(TranscriptRecorderTest, WhatTheExtraDoesToTheWorldIsWritten) {
  auto menu = platform::Menu::initWithTitle("");
  auto item = menu->addItemWithTitleActionKeyEquivalent("Away", "selectMenuItem:", "");
  item->setTag(3);
  item->setRepresentedObject(platform::makeString("Away"));
  menu->addItem(platform::MenuItem::separatorItem());
  recorder->menuDidOpen(menu);
  recorder->menuDidClose(0);

  platform::IMDaemonController::sharedController()->setMyStatusMessage(3, platform::makeString("Away"));
  platform::Workspace::sharedWorkspace().openURL("Parlo:compose?service=AIM&id=jreyes77&style=IM");
  platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
      "kKBParloScreenSharingShouldTerminateNotification");
  drain();
  platform::CFLogTest(0, "Duration: %f", 0.0);
  platform::IMWarn("bad sort key %d", 9);
  platform::Preferences::setAppValue("DefaultServiceName", platform::makeString("AIM"), "com.velmo.menuextra.Parlo");
  platform::Preferences::appSynchronize("com.velmo.menuextra.Parlo");
  platform::AssertionHandler::current().handleFailureInMethod("-[Animator start]", nullptr, "MenuExtra/Animator", 12,
                                                              "Can't call -[Animator start] while animating!");
  world->apply(sim::SimEvent::buddyOffline("aim", "jreyes77"));
  EXPECT_TRUE(assertions->failures.empty()) << "the recorder's handler took the report and returned";

  auto all = lines();
  auto menus = linesOfType(all, "menu");
  ASSERT_EQ(menus.size(), 1u);
  EXPECT_EQ(menus[0]["items"].dump(),
            R"([{"index":0,"title":"Away","tag":3,"state":0,"enabled":false,"action":"selectMenuItem:",)"
            R"("alternate":false,"key":"","modifiers":0,"indent":0,"image":null,"represented":"Away"},)"
            R"({"index":1,"separator":true}])");
  EXPECT_EQ(linesOfType(all, "menu-close").at(0)["title"], "Away");

  auto daemon = linesOfType(all, "daemon");
  ASSERT_FALSE(daemon.empty());
  EXPECT_EQ(daemon[0]["request"], "setMyStatus:message:");
  EXPECT_EQ(daemon[0]["arguments"], nlohmann::ordered_json::array({"3", "\"Away\""}));
  EXPECT_EQ(linesOfType(all, "url").at(0)["url"], "Parlo:compose?service=AIM&id=jreyes77&style=IM");
  EXPECT_EQ(linesOfType(all, "application").at(0)["activity"], "text chat with jreyes77 on AIM")
      << "the URL still reaches the messaging application";
  EXPECT_EQ(linesOfType(all, "distributed").at(0)["name"], "kKBParloScreenSharingShouldTerminateNotification");
  EXPECT_EQ(linesOfType(all, "test-log").at(0)["line"], "Duration: 0.000000");
  auto warnings = linesOfType(all, "log");
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0]["channel"], "warning");
  EXPECT_EQ(warnings[0]["line"], "bad sort key 9");
  auto preferences = linesOfType(all, "preferences");
  ASSERT_EQ(preferences.size(), 1u);
  EXPECT_EQ(preferences[0]["domain"], "com.velmo.menuextra.Parlo");
  EXPECT_EQ(preferences[0]["values"], nlohmann::ordered_json({{"DefaultServiceName", "AIM"}}));
  auto failures = linesOfType(all, "assertion");
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0]["file"], "MenuExtra/Animator");
  EXPECT_EQ(failures[0]["line"], 12);
  EXPECT_EQ(failures[0]["description"], "Can't call -[Animator start] while animating!");
  EXPECT_EQ(linesOfType(all, "event").at(0)["event"], "buddy-offline aim/jreyes77");

  // Once the recorder is gone, the platform is as it was.
  recorder.reset();
  const auto count = lines().size();
  platform::CFLogTest(0, "after");
  platform::AssertionHandler::current().handleFailureInMethod("m", nullptr, "f", 1, "after");
  EXPECT_EQ(lines().size(), count);
  EXPECT_EQ(testLog().back(), "after");
  EXPECT_EQ(assertions->failures.size(), 1u);
}

}  // namespace
