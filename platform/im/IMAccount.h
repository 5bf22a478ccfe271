#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/core/Object.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// One of the user's messaging accounts: the mirror of the daemon's account
// record. A backend sets its state with the setters, which post the account
// notifications on the default centre. The requests an account makes
// (loginAccount, writeSettings) go to the daemon controller's backend.
class IMAccount final : public Object {
 public:
  static IMAccountPtr make(IMServicePtr service, std::string login, std::string uniqueID = "");

  const std::string& uniqueID() const { return uniqueID_; }
  const IMServicePtr& service() const { return service_; }
  const std::string& login() const { return login_; }

  // Enabled by the user; active accounts are the ones the daemon runs.
  bool isActive() const { return isActive_; }
  // kIMAccountLoginStatusOffline, ...Connecting, ...Connected; below 2 is not logged in.
  std::uint32_t loginStatus() const { return loginStatus_; }
  bool isConnected() const { return loginStatus_ >= kIMAccountLoginStatusConnected; }
  // Logged in less than kIMAccountJustLoggedInInterval seconds ago.
  bool justLoggedIn() const;

  // The user's own status on this account.
  IMPersonStatus myStatus() const { return myStatus_; }
  const std::string& myStatusMessage() const { return myStatusMessage_; }
  // The current music track as the status shows it, "" when none.
  const std::string& myNowPlayingString() const { return myNowPlayingString_; }

  bool isInvisible() const { return isInvisible_; }
  // Changes the local setting (posting IMAccountInvisibilityChangedNotification
  // when it changes); writeSettings hands it to the daemon.
  void setInvisible(bool invisible);
  void writeSettings();
  // Asks the daemon to log this account in.
  void loginAccount();

  std::uint64_t capabilities() const { return capabilities_; }
  // Every bit of a non-zero mask is set.
  bool hasCapability(std::uint64_t mask) const;

  // The account's buddy list.
  const IMPeoplePtr& buddyList() const { return buddyList_; }
  // The handle that stands for the user on this account (its ID is the login).
  IMHandlePtr loginIMHandle();

  // Backend setters; each posts only when something changed.
  void setActive(bool active);                // IMAccountActivated/DeactivatedNotification
  void setLoginStatus(std::uint32_t status);  // IMAccountLoginStatusChangedNotification
  // IMMeStatusChangedNotification.
  void setMyStatus(IMPersonStatus status, std::string message, std::string nowPlaying = "");
  void setCapabilities(std::uint64_t capabilities);

  std::string className() const override { return "IMAccount"; }
  // "<login> (<service name>)".
  std::string description() const override;

  IMAccount(IMServicePtr service, std::string login, std::string uniqueID);

 private:
  void post(const char* name);

  std::string uniqueID_;
  IMServicePtr service_;
  std::string login_;
  bool isActive_ = true;
  std::uint32_t loginStatus_ = kIMAccountLoginStatusOffline;
  std::optional<double> loggedInAt_;
  IMPersonStatus myStatus_ = kIMPersonStatusOffline;
  std::string myStatusMessage_;
  std::string myNowPlayingString_;
  bool isInvisible_ = false;
  std::uint64_t capabilities_ = 0;
  IMPeoplePtr buddyList_;
  IMHandlePtr loginIMHandle_;
};

}  // namespace platform
