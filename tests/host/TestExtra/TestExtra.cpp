#include "tests/host/TestExtra/TestExtra.h"

#include "platform/core/AssertionHandler.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Log.h"
#include "platform/core/Notification.h"
#include "platform/core/Preferences.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMDaemonController.h"
#include "platform/ui/ButtonCell.h"
#include "platform/ui/Canvas.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/TextFieldCell.h"
#include "platform/ui/Workspace.h"

namespace kibtest {

void TestSlotView::setImage(platform::ImagePtr image, bool dimmed) {
  image_ = std::move(image);
  dimmed_ = dimmed;
  setNeedsDisplay(true);
}

void TestSlotView::setText(std::string text) {
  text_ = std::move(text);
  setNeedsDisplay(true);
}

void TestSlotView::drawRect(platform::Canvas& canvas, const platform::Rect&) {
  item_->drawMenuBackground(canvas, item_->isMenuDown());
  platform::ButtonCell icon;
  icon.setImage(image_);
  icon.setEnabled(!dimmed_);
  icon.drawWithFrameInView({2, 3, 20, 15}, this, canvas);
  if (text_.empty()) return;
  platform::TextFieldCell text(text_);
  canvas.saveGraphicsState();
  canvas.clipToRect({30, 0, frame().width - 33, frame().height - 2});
  text.drawWithFrameInView({30, 0, text.cellSizeForBounds({0, 0, 1e9, 1e9}).width, frame().height - 2}, this, canvas);
  canvas.restoreGraphicsState();
}

void TestSlotView::mouseDown(const platform::Event&) { item_->popUpMenu(item_->menu()); }

const platform::SelectorTable<TestExtra>& TestExtra::selectorTable() {
  static const platform::SelectorTable<TestExtra> table{
      {"textChanged:", &TestExtra::textChanged},
      {"sayHello:", &TestExtra::sayHello},
      {"sayHelloQuietly:", &TestExtra::sayHelloQuietly},
      {"openExample:", &TestExtra::openExample},
      {"stop:", &TestExtra::stop},
      {"remember:", &TestExtra::remember},
      {"setAway:", &TestExtra::setAway},
      {"fail:", &TestExtra::fail},
      {"selfTestStep:", &TestExtra::selfTestStep},
  };
  return table;
}

std::shared_ptr<platform::MenuExtra> TestExtra::initWithBundle(const platform::BundlePtr& bundle) {
  auto extra = std::make_shared<TestExtra>();
  if (!extra->MenuExtra::initWithBundle(bundle)) return nullptr;
  extra->view_ = std::make_shared<TestSlotView>(platform::Rect{0, 0, 24, 22}, extra.get());
  extra->view_->setAutoresizingMask(platform::kViewWidthSizable);
  extra->setView(extra->view_);
  extra->setLength(24);
  extra->view_->setImage(platform::Image::initByReferencingFile(bundle->resourcePath() + "/MenuExtra.pdf"), true);
  platform::DistributedNotificationCenter::defaultCenter().addObserver(extra.get(), "textChanged:", "TestExtraText",
                                                                       nullptr);
  return extra;
}

TestExtra::~TestExtra() { platform::DistributedNotificationCenter::defaultCenter().removeObserver(this); }

platform::MenuPtr TestExtra::menu() {
  using platform::MenuItem;
  auto menu = platform::Menu::initWithTitle("");
  auto add = [&](std::string title, std::string action) {
    auto item = menu->addItemWithTitleActionKeyEquivalent(std::move(title), std::move(action), "");
    item->setTarget(this);
    return item;
  };
  add("Menu " + std::to_string(++menusBuilt_), ":");
  menu->addItem(MenuItem::separatorItem());
  auto hello = add("Say Hello", "sayHello:");
  hello->setTag(7);
  hello->setState(platform::kOnState);
  hello->setRepresentedObject(platform::makeString("hello"));
  hello->setImage(platform::Image::imageNamed("status-available"));
  auto quietly = add("Say Hello Quietly", "sayHelloQuietly:");
  quietly->setAlternate(true);
  quietly->setKeyEquivalentModifierMask(platform::kAlternateKeyMask);
  add("Open Example", "openExample:")->setState(platform::kMixedState);
  auto stop = add("Stop", "stop:");
  stop->setKeyEquivalent(platform::kEscapeKeyEquivalent);
  stop->setKeyEquivalentModifierMask(platform::kControlKeyMask);
  stop->setIndentationLevel(1);
  menu->addItem(MenuItem::separatorItem());
  add("Remember", "remember:");
  add("Set Away", "setAway:");
  add("Fail", "fail:");
  add("Not Handled", "noSuchAction:");
  return menu;
}

void TestExtra::textChanged(const platform::ObjectPtr& notification) {
  auto note = std::static_pointer_cast<platform::Notification>(notification);
  std::string text = platform::stringValue(note->object());
  view_->setText(text);
  view_->setImage(platform::Image::initByReferencingFile(bundle()->resourcePath() + "/MenuExtra.pdf"), text.empty());
  setLength(text.empty() ? 24 : 24 + 8.0 * static_cast<double>(text.size()));
}

void TestExtra::sayHello(const platform::ObjectPtr&) { platform::CFLogTest(0, "hello"); }

void TestExtra::sayHelloQuietly(const platform::ObjectPtr&) { platform::CFLogTest(0, "hello, quietly"); }

void TestExtra::openExample(const platform::ObjectPtr&) {
  platform::Workspace::sharedWorkspace().openURL("Parlo:openbuddylist?service=AIM");
}

void TestExtra::stop(const platform::ObjectPtr&) {
  platform::DistributedNotificationCenter::defaultCenter().postNotificationName("TestExtraStopped");
}

void TestExtra::remember(const platform::ObjectPtr&) {
  const auto& domain = bundle()->bundleIdentifier();
  platform::Preferences::setAppValue("Remembered", platform::makeString("yes"), domain);
  platform::Preferences::appSynchronize(domain);
}

void TestExtra::setAway(const platform::ObjectPtr&) {
  platform::IMDaemonController::sharedController()->setMyStatusMessage(3, platform::makeString("Away"));
}

void TestExtra::fail(const platform::ObjectPtr&) {
  platform::assertParameter(false, "menusBuilt_ < 0", "-[TestExtra fail:]", this, "tests/host/TestExtra", 1);
  platform::CFLogTest(0, "went on after the assertion");
}

void TestExtra::runSelfTestDuration(std::uint32_t test, double duration) {
  platform::CFLogTest(0, "Running test %d for %f", static_cast<int>(test), duration);
  platform::RunLoop::main().performSelectorAfterDelay(shared_from_this(),
                                                      "selfTestStep:", platform::makeString("Say Hello"), 1.0);
}

void TestExtra::selfTestStep(const platform::ObjectPtr& title) {
  auto menu = this->menu();
  menu->performActionForItemAtIndex(menu->indexOfItemWithTitle(platform::stringValue(title)));
  platform::CFLogTest(0, "Performed action on item with title: %@", title);
}

void TestExtra::willUnload() {
  platform::CFLogTest(0, "unloading");
  platform::DistributedNotificationCenter::defaultCenter().removeObserver(this);
  MenuExtra::willUnload();
}

}  // namespace kibtest
