// The screen-sharing indicator: a blinking icon and a menu section while the
// messaging application shares the screen.
#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Format.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/Workspace.h"

using namespace platform;

namespace {

constexpr double kPulseInterval = 2.0;

NotificationCenter& workspaceCentre() { return Workspace::sharedWorkspace().notificationCenter(); }

}  // namespace

void VelmoKibExtra::screenSharingStarted(const ObjectPtr& notification) {
  // A second start keeps the running blink and the first partner's name.
  if (_screenSharingPulse) return;

  auto posted = std::dynamic_pointer_cast<Notification>(notification);
  ObjectPtr name = posted ? posted->object() : nullptr;
  if (name.get() != _screenSharingName.get()) {
    auto text = asString(name);
    _screenSharingName = text && !text->empty() ? makeString(text->value()) : nullptr;
  }

  _screenSharingPulse =
      Timer::timerWithTimeInterval(kPulseInterval, shared_from_this(), "screenSharingPulse:", nullptr, true);
  RunLoop::main().addTimer(_screenSharingPulse, kDefaultRunLoopMode);
  myStatusChanged();
  // The application may quit without telling us that sharing ended.
  workspaceCentre().addObserver(this, "applicationDidTerminate:", NSWorkspaceDidTerminateApplicationNotification,
                                nullptr);
}

void VelmoKibExtra::screenSharingEnded(const ObjectPtr&) {
  if (!_screenSharingPulse) return;
  stopScreenSharingPulse();
  myStatusChanged();
  workspaceCentre().removeObserver(this, NSWorkspaceDidTerminateApplicationNotification, nullptr);
  // The name and the blink phase stay: a later start goes on from them.
}

void VelmoKibExtra::screenSharingPulse(const ObjectPtr&) {
  _isShowingScreenSharingIcon = !_isShowingScreenSharingIcon;
  myStatusChanged();
}

void VelmoKibExtra::applicationDidTerminate(const ObjectPtr& notification) {
  auto posted = std::dynamic_pointer_cast<Notification>(notification);
  auto userInfo = posted ? posted->userInfo() : nullptr;
  auto bundleIdentifier = userInfo ? asString(userInfo->objectForKey(kApplicationBundleIdentifierKey)) : nullptr;
  if (bundleIdentifier && bundleIdentifier->value() == kKBAppBundleIdentifier) screenSharingEnded(nullptr);
}

void VelmoKibExtra::endScreenSharing(const ObjectPtr&) {
  // The indicator stays until the application answers with the ended notice.
  DistributedNotificationCenter::defaultCenter().postNotificationName(kKBParloScreenSharingShouldTerminateNotification,
                                                                      nullptr);
}

void VelmoKibExtra::_appendScreenSharingControls(const MenuPtr& menu) {
  const char* headingKey = _screenSharingName ? "Screen Sharing with %@" : "Sharing My Screen";
  menu->addItem(labelItem(format(localized(headingKey), _screenSharingName)));

  auto end = MenuItem::initWithTitleActionKeyEquivalent(localized("End Screen Sharing"),
                                                        "endScreenSharing:", kEscapeKeyEquivalent);
  end->setKeyEquivalentModifierMask(kControlKeyMask);
  end->setIndentationLevel(1);
  end->setTarget(this);
  menu->addItem(end);
  menu->addItem(MenuItem::separatorItem());
}
