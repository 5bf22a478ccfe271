#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/core/String.h"
#include "platform/ui/Workspace.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class WorkspaceTest : public kibtest::PlatformTest {};

TEST_F(WorkspaceTest, OpenURLReachesTheInstalledHandler) {
  auto& workspace = Workspace::sharedWorkspace();
  EXPECT_EQ(&workspace, &Workspace::sharedWorkspace());
  std::vector<std::string> opened;
  workspace.setURLHandler([&](const std::string& url) {
    opened.push_back(url);
    return url.rfind("Parlo:", 0) == 0;
  });
  EXPECT_TRUE(workspace.openURL("Parlo:compose?service=AIM&id=alex%40example.com&style=IM"));
  EXPECT_FALSE(workspace.openURL("mailto:alex@example.com"));
  EXPECT_EQ(opened, (std::vector<std::string>{"Parlo:compose?service=AIM&id=alex%40example.com&style=IM",
                                              "mailto:alex@example.com"}));
  EXPECT_EQ(linesOf(Log::Channel::System),
            (std::vector<std::string>{"cannot open mailto:alex@example.com: the handler refused it"}));
}

TEST_F(WorkspaceTest, WithoutAHandlerNothingOpensAndTheAttemptIsLogged) {
  auto& workspace = Workspace::sharedWorkspace();
  EXPECT_FALSE(workspace.hasURLHandler()) << "each test starts without a handler";
  EXPECT_FALSE(workspace.openURL("Parlo:openbuddylist?service=AIM"));
  EXPECT_EQ(linesOf(Log::Channel::System),
            (std::vector<std::string>{"cannot open Parlo:openbuddylist?service=AIM: no application handles URLs"}));

  workspace.setURLHandler([](const std::string&) { return true; });
  auto previous = workspace.setURLHandler(nullptr);
  EXPECT_TRUE(previous);
  EXPECT_FALSE(workspace.openURL("Parlo:openbuddylist?service=AIM"));
}

TEST_F(WorkspaceTest, ApplicationTerminationIsPostedOnTheWorkspaceCentre) {
  auto& workspace = Workspace::sharedWorkspace();
  EXPECT_EQ(&workspace.notificationCenter(), &NotificationCenter::centerNamed("workspace"));
  std::vector<std::string> quit;
  workspace.notificationCenter().addObserverForName(
      std::string(NSWorkspaceDidTerminateApplicationNotification), nullptr, [&](const NotificationPtr& n) {
        quit.push_back(stringValue(n->userInfo()->objectForKey(kApplicationBundleIdentifierKey)));
      });
  bool heardOnDefault = false;
  NotificationCenter::defaultCenter().addObserverForName(std::nullopt, nullptr,
                                                        [&](const NotificationPtr&) { heardOnDefault = true; });
  workspace.noteApplicationTerminated("com.velmo.Parlo");
  EXPECT_EQ(quit, (std::vector<std::string>{"com.velmo.Parlo"}));
  EXPECT_FALSE(heardOnDefault);
  EXPECT_STREQ(kApplicationBundleIdentifierKey, "NSApplicationBundleIdentifier");
}

}  // namespace
