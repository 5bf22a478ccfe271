#include "platform/ui/Workspace.h"

#include "platform/core/Dictionary.h"
#include "platform/core/Log.h"
#include "platform/core/String.h"

namespace platform {

Workspace& Workspace::sharedWorkspace() {
  static Workspace* shared = new Workspace;  // lives as long as the process
  return *shared;
}

bool Workspace::openURL(const std::string& url) {
  if (!handler_) {
    Log::write(Log::Channel::System, "cannot open " + url + ": no application handles URLs");
    return false;
  }
  URLHandler handler = handler_;  // the handler may replace itself
  if (handler(url)) return true;
  Log::write(Log::Channel::System, "cannot open " + url + ": the handler refused it");
  return false;
}

Workspace::URLHandler Workspace::setURLHandler(URLHandler handler) {
  URLHandler previous = std::move(handler_);
  handler_ = std::move(handler);
  return previous;
}

NotificationCenter& Workspace::notificationCenter() { return NotificationCenter::centerNamed("workspace"); }

void Workspace::noteApplicationTerminated(const std::string& bundleIdentifier) {
  notificationCenter().postNotificationName(NSWorkspaceDidTerminateApplicationNotification, nullptr,
                                            makeDictionary({{kApplicationBundleIdentifierKey, makeString(bundleIdentifier)}}));
}

void Workspace::reset() { handler_ = nullptr; }

}  // namespace platform
