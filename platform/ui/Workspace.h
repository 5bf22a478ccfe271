#pragma once

#include <functional>
#include <string>

#include "platform/core/NotificationCenter.h"
#include "platform/core/Object.h"

namespace platform {

// Posted on the workspace notification centre when an application quits; the
// user info holds the application's bundle identifier.
inline constexpr const char* NSWorkspaceDidTerminateApplicationNotification =
    "NSWorkspaceDidTerminateApplicationNotification";
inline constexpr const char* kApplicationBundleIdentifierKey = "NSApplicationBundleIdentifier";

// The desktop workspace: opens URLs in the applications that handle them and
// tells about applications that quit. What opens a URL is a replaceable
// handler (the messaging application, a recording test double, a desktop
// opener); with none installed nothing can be opened.
class Workspace final : public Object {
 public:
  // Answers whether the URL was opened.
  using URLHandler = std::function<bool(const std::string& url)>;

  static Workspace& sharedWorkspace();

  // Answers NO, and logs, when no handler is installed or the handler refuses.
  bool openURL(const std::string& url);
  // Installs a handler (nil removes it); answers the previous one.
  URLHandler setURLHandler(URLHandler handler);
  bool hasURLHandler() const { return static_cast<bool>(handler_); }

  // The workspace's own centre, the shared centre named "workspace".
  NotificationCenter& notificationCenter();
  // Posts NSWorkspaceDidTerminateApplicationNotification for the application.
  void noteApplicationTerminated(const std::string& bundleIdentifier);

  // Removes the handler (tests).
  void reset();

  std::string className() const override { return "Workspace"; }

 private:
  URLHandler handler_;
};

}  // namespace platform
