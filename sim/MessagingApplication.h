#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/Object.h"

namespace platform {
class MessagingURL;
}

namespace sim {

// The simulated messaging application. It handles the "Parlo:" URLs the
// extra opens (compose a chat, show a buddy list) and records what it opened;
// it shares the screen, ends sharing when asked through the distributed
// should-terminate notification (answering with the ended notification after
// a short delay), and quits.
class MessagingApplication final : public platform::Object {
 public:
  struct Chat {
    std::string service;  // the service's internal name as the URL gave it
    std::string ID;
    bool textOnly = false;    // "&style=IM"
    bool knownBuddy = false;  // the service knows the ID (infoForScreenName)
    std::string url;
  };
  using ActivityObserver = std::function<void(const std::string&)>;

  // endLatency: seconds from the should-terminate notification to the ended one.
  static std::shared_ptr<MessagingApplication> make(double endLatency);
  ~MessagingApplication() override;

  // Handles "Parlo:compose?service=…&id=…[&style=IM]" and
  // "Parlo:openbuddylist?service=…"; false for any other URL (nothing recorded).
  bool openURL(const std::string& url);

  const std::vector<Chat>& openedChats() const { return chats_; }
  // Service names of the buddy lists shown, in order.
  const std::vector<std::string>& shownBuddyLists() const { return buddyLists_; }
  // One line per thing the application did, in order.
  const std::vector<std::string>& activity() const { return activity_; }
  void setActivityObserver(ActivityObserver observer) { observer_ = std::move(observer); }

  bool isRunning() const { return running_; }
  bool isScreenSharing() const { return sharing_; }
  const std::optional<std::string>& screenSharingPartner() const { return partner_; }

  // Posts kKBParloScreenSharingStartedNotification (distributed) with the partner name.
  void startScreenSharing(std::optional<std::string> partner);
  // Posts kKBParloScreenSharingEndedNotification (distributed).
  void endScreenSharing();
  // Stops sharing without a word and posts the workspace's termination notice.
  void quit();

  std::string className() const override { return "MessagingApplication"; }

  explicit MessagingApplication(double endLatency) : endLatency_(endLatency) {}

 private:
  void listen();
  void shouldTerminateSharing();
  void record(std::string line);
  bool compose(const std::string& url, const platform::MessagingURL& parsed);
  bool openBuddyList(const platform::MessagingURL& parsed);

  double endLatency_;
  platform::ObjectPtr shouldTerminateToken_;
  std::vector<Chat> chats_;
  std::vector<std::string> buddyLists_;
  std::vector<std::string> activity_;
  ActivityObserver observer_;
  bool running_ = true;
  bool sharing_ = false;
  std::optional<std::string> partner_;
};

}  // namespace sim
