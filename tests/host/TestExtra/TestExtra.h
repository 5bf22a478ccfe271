#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/core/Object.h"
#include "platform/ui/Image.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/View.h"

namespace kibtest {

// The view of the test extra: its icon, and its text while it has one.
class TestSlotView final : public platform::View {
 public:
  TestSlotView(const platform::Rect& frame, platform::MenuExtra* item) : View(frame), item_(item) {}

  void setImage(platform::ImagePtr image, bool dimmed);
  void setText(std::string text);
  const std::string& text() const { return text_; }

  void drawRect(platform::Canvas& canvas, const platform::Rect& dirtyRect) override;
  void mouseDown(const platform::Event& event) override;

 private:
  platform::MenuExtra* item_;
  platform::ImagePtr image_;
  bool dimmed_ = false;
  std::string text_;
};

// A small extra for the host's tests: a slot with an icon and a text that a
// distributed notification sets, and a menu whose items exercise what the
// host must show and record (labels, states, alternates, indentation, a
// Control-Escape key equivalent, images, URLs, daemon requests, preferences,
// assertions and the test log).
class TestExtra final : public platform::MenuExtra {
  PLATFORM_SELECTORS(TestExtra, platform::MenuExtra)

 public:
  static std::shared_ptr<platform::MenuExtra> initWithBundle(const platform::BundlePtr& bundle);
  ~TestExtra() override;

  platform::MenuPtr menu() override;
  void willUnload() override;
  bool convertedForNewUI() const override { return true; }

  void runSelfTestDuration(std::uint32_t test, double duration);
  double durationOfTest(std::uint32_t test) const { return test <= 4 ? test * 2.0 : 0.0; }

  std::string className() const override { return "TestExtra"; }

 private:
  void textChanged(const platform::ObjectPtr& notification);
  void sayHello(const platform::ObjectPtr& item);
  void sayHelloQuietly(const platform::ObjectPtr& item);
  void openExample(const platform::ObjectPtr& item);
  void stop(const platform::ObjectPtr& item);
  void remember(const platform::ObjectPtr& item);
  void setAway(const platform::ObjectPtr& item);
  void fail(const platform::ObjectPtr& item);
  void selfTestStep(const platform::ObjectPtr& title);

  std::shared_ptr<TestSlotView> view_;
  int menusBuilt_ = 0;
};

}  // namespace kibtest
