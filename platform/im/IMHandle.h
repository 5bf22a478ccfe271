#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// One buddy on one account: the mirror of the daemon's record of a screen name
// on the account's buddy list. A backend sets its state through the setters;
// each change posts the matching handle notification to the handle's direct
// observers (and, for status and info changes, a person notification on the
// service centre). Every accessor answers the zero value for missing data.
class IMHandle final : public IMDirectlyObservableObject {
 public:
  // A handle of the account's service; it is not on the buddy list until the
  // list adds it (IMPeople::addIMHandle).
  static IMHandlePtr make(const IMAccountPtr& account, std::string ID, IMPersonPtr person = nullptr);

  // Identity.
  const std::string& ID() const { return ID_; }
  // The ID as compared: lower case, without spaces.
  std::string normalizedID() const;
  IMServicePtr service() const;
  IMAccountPtr account() const { return account_.lock(); }
  const IMPersonPtr& person() const { return person_; }
  bool isLoginIMHandle() const { return isLoginIMHandle_; }
  // Another handle (not this one) of the same service with the same normalized ID.
  bool isAccountSiblingOf(const IMHandle* other) const;
  bool isAccountSiblingOf(const IMHandlePtr& other) const { return isAccountSiblingOf(other.get()); }

  // Buddy-list groups.
  std::set<std::string> groups() const;
  const std::vector<std::string>& groupsArray() const { return groups_; }
  // The handle's position in the group; 0xFFFFFFFF when it is not in the group.
  std::uint32_t sortOrderInGroup(const std::string& group) const;

  // Status.
  IMPersonStatus status() const { return status_; }
  const std::string& statusMessage() const { return statusMessage_; }
  const std::string& previousStatusMessage() const { return previousStatusMessage_; }
  std::string nameOfStatus() const;
  double timeSinceStatusChanged() const;
  // Seconds since the handle went offline; 0 while it is online.
  double timeSinceWentOffline() const;
  // Seconds idle; 0 unless the status is idle.
  double idleTime() const;
  // "Idle", "Idle 12m", "Idle 1h 05m", "Idle 3d 4h"; "" when not idle.
  std::string idleString() const;
  const std::string& statusURL() const { return statusURL_; }
  const std::string& mobileDeviceName() const { return mobileDeviceName_; }
  bool isMobile() const { return !mobileDeviceName_.empty(); }

  // Names. name() follows the registrar's name style: full name (then
  // nickname, then ID), short name (nickname, then first name, then ID) or the ID.
  std::string name() const;
  // The nickname, else the ID.
  std::string uniqueName() const;
  std::string fullName() const;
  std::string firstName() const;
  std::string lastName() const;
  const std::string& nickname() const { return nickname_; }
  // Grows with every change of the handle's names, addresses and other IDs or
  // its person's, so that values derived from them (sort keys, folded search
  // texts) can tell when to recompute.
  std::uint64_t nameRevision() const { return nameRevision_; }
  // The handle's own addresses, else its person's.
  std::vector<std::string> emails() const;
  // "name <first e-mail>", or the name alone.
  std::string nameAndEmail() const;
  // Service name -> ID of the same buddy on other services.
  const std::map<std::string, std::string>& otherServiceIDs() const { return otherServiceIDs_; }
  std::uint32_t authRequestStatus() const { return authRequestStatus_; }
  bool isBlocked() const { return isBlocked_; }

  // Chat capabilities.
  bool hasAudio() const { return hasAudio_; }
  bool hasVideo() const { return hasVideo_; }
  // Free to take an audio or video chat now (not in another one).
  bool isConferenceAvailable() const { return isConferenceAvailable_; }

  // Comparisons (-1, 0, 1): normalized IDs, case-insensitively; first names
  // (falling back to name() when missing) and last names likewise, with the
  // localized case-insensitive collation.
  int compareIDs(const IMHandle* other) const;
  int compareFirstNames(const IMHandle* other) const;
  int compareLastNames(const IMHandle* other) const;
  int compareIDs(const IMHandlePtr& other) const { return compareIDs(other.get()); }

  // Collation keys for sorting many handles: with the screen-name style
  // `first` orders as compareIDs and `last` is empty; otherwise they order as
  // compareFirstNames and compareLastNames. Made once and kept until a name,
  // the name style or the collation language changes (version counts the
  // remakes). Keys of the collation's current language
  // (TextServices::refreshCollationLanguage).
  struct NameSortKeys {
    std::string first;
    std::string last;
    std::uint64_t version = 0;
    std::uint64_t nameRevision = 0;
    std::uint64_t collationGeneration = 0;
    std::uint32_t nameStyle = 0;
    bool made = false;
  };
  const NameSortKeys& nameSortKeys() const;
  // Start loading the kept keys, for loops over many handles: the keys'
  // place in the handle, then (once that is loaded) their bytes.
  void prefetchNameSortKeys() const;
  void prefetchNameSortKeyBytes() const;
  // The same for a collation generation and name style the caller read already.
  const NameSortKeys& nameSortKeys(std::uint64_t collationGeneration, std::uint32_t nameStyle) const;
  int compareFirstNames(const IMHandlePtr& other) const { return compareFirstNames(other.get()); }
  int compareLastNames(const IMHandlePtr& other) const { return compareLastNames(other.get()); }

  // The most available handle (IMComparePersonStatus), the first in the array
  // on a tie; nil for an empty array. Nil entries are skipped.
  static IMHandlePtr bestIMHandleInArray(std::span<const IMHandlePtr> handles);

  // Backend setters. Each posts only when something changed.
  // Status, message and idle time together: one status notification.
  void updateStatus(IMPersonStatus status, std::string message, std::optional<double> idleSeconds = std::nullopt);
  void setStatus(IMPersonStatus status);
  void setStatusMessage(std::string message);
  void setIdleTime(double seconds);
  void setStatusURL(std::string url);                                      // extra properties
  void setMobileDeviceName(std::string deviceName);                        // mobile
  void setPerson(IMPersonPtr person);                                      // info
  void setNickname(std::string nickname);                                  // info
  void setEmails(std::vector<std::string> emails);                         // info
  void setOtherServiceIDs(std::map<std::string, std::string> ids);         // extra properties
  void setAuthRequestStatus(std::uint32_t status);                         // extra properties
  void setBlocked(bool blocked);                                           // extra properties
  void setCapabilities(bool audio, bool video, bool conferenceAvailable);  // capabilities
  // Groups in order with their sort orders (missing orders count from 0 in list order).
  void setGroups(std::vector<std::string> groups, std::map<std::string, std::uint32_t> sortOrders = {});
  void setSortOrderInGroup(const std::string& group, std::uint32_t order);  // sort order
  void notePictureChanged();                                                // picture
  void setIsLoginIMHandle(bool isLogin) { isLoginIMHandle_ = isLogin; }

  std::string className() const override { return "IMHandle"; }
  // "<ID> (<service name>)".
  std::string description() const override;

  IMHandle(const IMAccountPtr& account, std::string ID, IMPersonPtr person);
  ~IMHandle() override;

 private:
  friend class IMPerson;
  void postInfoChanged();
  void postStatusChanged();

  std::weak_ptr<IMAccount> account_;
  IMServicePtr service_;
  std::string ID_;
  IMPersonPtr person_;
  bool isLoginIMHandle_ = false;

  std::vector<std::string> groups_;
  std::map<std::string, std::uint32_t> sortOrders_;

  IMPersonStatus status_ = kIMPersonStatusOffline;
  std::string statusMessage_;
  std::string previousStatusMessage_;
  double statusChangedAt_;
  double wentOfflineAt_;
  std::optional<double> idleSince_;
  std::string statusURL_;
  std::string mobileDeviceName_;

  std::string nickname_;
  std::uint64_t nameRevision_ = 0;
  mutable NameSortKeys nameSortKeys_;
  std::vector<std::string> emails_;
  std::map<std::string, std::string> otherServiceIDs_;
  std::uint32_t authRequestStatus_ = 0;
  bool isBlocked_ = false;

  bool hasAudio_ = false;
  bool hasVideo_ = false;
  bool isConferenceAvailable_ = false;
};

}  // namespace platform
