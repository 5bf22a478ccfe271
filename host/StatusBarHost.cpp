#include "host/StatusBarHost.h"

#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"
#include "platform/ui/Event.h"

namespace kibhost {

StatusBarHost::StatusBarHost(StatusBarHostDelegate& delegate)
    : delegate_(delegate), self_(std::make_shared<StatusBarHost*>(this)) {}

StatusBarHost::~StatusBarHost() {
  if (extra_) extra_->setHost(nullptr);
}

bool StatusBarHost::load(const PluginBundle& bundle, std::string& error) {
  extra_ = bundle.instantiate();
  if (!extra_) {
    error = "the principal class " + bundle.bundle()->principalClassName() + " refused the bundle " +
            bundle.bundle()->bundlePath();
    return false;
  }
  extra_->setHost(this);
  // What the extra set up before it had a host.
  delegate_.slotLengthDidChange(extra_->length());
  scheduleDisplay();
  return true;
}

void StatusBarHost::click(std::uint64_t modifierFlags) {
  if (!extra_ || openMenu_) return;
  auto extra = extra_;  // a menu action may unload the extra
  clickModifiers_ = modifierFlags;
  if (const auto& view = extra->view()) {
    platform::Event event;
    event.locationInView = {view->bounds().width / 2, view->bounds().height / 2};
    event.modifierFlags = modifierFlags;
    view->mouseDown(event);
  } else {
    extra->popUpMenu(extra->menu());
  }
}

void StatusBarHost::closeMenu(std::int64_t chosenIndex) {
  if (!openMenu_ || openMenu_->closing) return;
  openMenu_->closing = true;
  openMenu_->chosenIndex = chosenIndex;
  platform::RunLoop::main().stop();
}

void StatusBarHost::menuExtraPopUpMenu(platform::MenuExtra& /*extra*/, const platform::MenuPtr& menu) {
  if (openMenu_ || !menu) return;
  openMenu_ = std::make_unique<OpenMenu>(OpenMenu{platform::MenuTracking(menu), clickModifiers_});
  clickModifiers_ = 0;
  displayNow();  // the slot shows as the open menu's title
  delegate_.menuDidOpen(menu);
  auto& loop = platform::RunLoop::main();
  // Work due at the deadline itself still runs (a script's last lines at its
  // last instant act on the open menu); then an unclosed menu closes.
  while (!openMenu_->closing) {
    const double deadline = delegate_.menuTrackingDeadline();
    loop.runUntil(deadline, platform::kEventTrackingRunLoopMode);
    if (platform::Clock::current().now() >= deadline) break;
  }
  auto closed = std::move(openMenu_);
  const std::int64_t chosen = closed->closing ? closed->chosenIndex : -1;
  displayNow();
  delegate_.menuDidClose(chosen);
  if (chosen >= 0) closed->tracking.chooseItemAtIndex(chosen);
}

bool StatusBarHost::menuExtraIsMenuDown(const platform::MenuExtra& /*extra*/) const { return openMenu_ != nullptr; }

void StatusBarHost::menuExtraMenuDidChange(platform::MenuExtra& /*extra*/) { delegate_.cachedMenuDidChange(); }

void StatusBarHost::unload() {
  if (!extra_) return;
  auto extra = std::move(extra_);
  extra->willUnload();
  extra->setHost(nullptr);
}

void StatusBarHost::menuExtraLengthDidChange(platform::MenuExtra& extra) {
  delegate_.slotLengthDidChange(extra.length());
  scheduleDisplay();
}

void StatusBarHost::menuExtraNeedsDisplay(platform::MenuExtra& /*extra*/) { scheduleDisplay(); }

void StatusBarHost::scheduleDisplay() {
  if (displayScheduled_) return;
  displayScheduled_ = true;
  std::weak_ptr<StatusBarHost*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kCommonRunLoopModes, [self] {
    if (auto host = self.lock()) {
      (*host)->displayScheduled_ = false;
      (*host)->displayNow();
    }
  });
}

void StatusBarHost::displayNow() {
  if (!extra_ || !extra_->view()) return;
  platform::RecordingCanvas canvas;
  extra_->view()->display(canvas);
  delegate_.slotDidDisplay(canvas);
}

}  // namespace kibhost
