#pragma once

#include <memory>
#include <string>

#include "purple/PurpleRecords.h"

namespace platform {
class MessagingURL;
}

namespace kibpurple {

class PurpleBackend;

// The messaging application behind the "Parlo:" URLs when the libpurple
// client plays it: compose opens a conversation with the buddy on the
// matching account (an audio or video session where the protocol and the
// buddy support one, unless "&style=IM" asks for text), openbuddylist shows
// the client's buddy list. Installed as the workspace's URL handler.
class PurpleApplication {
 public:
  explicit PurpleApplication(std::weak_ptr<PurpleBackend> backend) : backend_(std::move(backend)) {}

  // Makes this the workspace's URL handler.
  static void install(std::shared_ptr<PurpleApplication> application);

  // False for a URL that is not one of the application's.
  bool openURL(const std::string& url);

 private:
  bool compose(PurpleBackend& backend, const platform::MessagingURL& url);
  bool openBuddyList(PurpleBackend& backend);
  bool startMedia(PurpleBackend& backend, PurpleID account, const std::string& id, bool video);

  std::weak_ptr<PurpleBackend> backend_;
};

}  // namespace kibpurple
