#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/im/IMForward.h"
#include "purple/PurpleRecords.h"

namespace kibpurple {

// Writes what the libpurple client reports into the platform's mirror
// objects: services (one per protocol), accounts, their buddy lists of
// handles, people (libpurple contacts) and the saved status messages. It is
// the only writer of those objects while the purple backend runs; records
// come checked from PurpleReader.
class PurpleMirror {
 public:
  // Creates the account (and its service) or brings it up to date.
  platform::IMAccountPtr applyAccount(const PurpleAccountRecord& record);
  void removeAccount(PurpleID id);
  platform::IMAccountPtr account(PurpleID id) const;
  // The client's id of a mirrored account, nothing for another account.
  std::optional<PurpleID> accountID(const platform::IMAccount* account) const;
  std::vector<PurpleID> accountIDs() const;

  // Creates the handle (and its person) or brings it up to date; false when
  // the buddy's account is not mirrored.
  bool applyBuddy(const PurpleBuddyRecord& record);
  void removeBuddy(PurpleID id);
  bool hasBuddy(PurpleID id) const { return buddies_.count(id) != 0; }
  platform::IMHandlePtr handle(PurpleID id) const;
  std::vector<PurpleID> buddiesOfContact(PurpleID contact) const;
  std::vector<PurpleID> buddiesOfAccount(PurpleID account) const;

  // Non-transient saved statuses with a message become the saved available
  // and away messages.
  void applySavedStatuses(const std::vector<PurpleSavedStatusRecord>& records);

  // Whether the client's current saved status is the invisible one. Accounts
  // whose protocol has no invisible status stay visible to their buddies, but
  // the user chose invisibility, and the client shows it: so do the accounts here.
  void setSavedStatusInvisible(bool invisible) { savedStatusInvisible_ = invisible; }
  bool savedStatusInvisible() const { return savedStatusInvisible_; }

  // The client went away: every account and handle leaves the mirror and every service goes offline.
  void clear();

  // The libpurple protocol of a mirrored service's internal name, "" when unknown.
  std::string protocolOfService(const std::string& internalName) const;

 private:
  struct Buddy {
    PurpleID account = 0;
    PurpleID contact = 0;
    platform::IMHandlePtr handle;
  };

  platform::IMServicePtr serviceFor(const PurpleAccountRecord& record);
  platform::IMPersonPtr personFor(PurpleID contact);
  void updateService(const platform::IMServicePtr& service);
  void forgetPersonIfUnused(PurpleID contact);

  std::map<PurpleID, platform::IMAccountPtr> accounts_;
  std::map<PurpleID, Buddy> buddies_;
  std::map<PurpleID, platform::IMPersonPtr> people_;
  std::map<std::string, std::string> protocols_;
  bool savedStatusInvisible_ = false;  // service internal name -> protocol id
};

}  // namespace kibpurple
