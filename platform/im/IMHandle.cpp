#include "platform/im/IMHandle.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/core/Clock.h"
#include "platform/core/Prefetch.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMNameCollation.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"

namespace platform {
namespace {

double now() { return Clock::current().now(); }

}  // namespace

IMHandlePtr IMHandle::make(const IMAccountPtr& account, std::string ID, IMPersonPtr person) {
  auto handle = std::make_shared<IMHandle>(account, std::move(ID), std::move(person));
  if (handle->person_) handle->person_->attachHandle(handle);
  return handle;
}

IMHandle::IMHandle(const IMAccountPtr& account, std::string ID, IMPersonPtr person)
    : account_(account),
      service_(account ? account->service() : nullptr),
      ID_(std::move(ID)),
      person_(std::move(person)),
      statusChangedAt_(now()),
      wentOfflineAt_(statusChangedAt_) {}

IMHandle::~IMHandle() {
  if (person_) person_->detachHandle(this);
}

std::string IMHandle::normalizedID() const { return IMNameCollation::normalizeID(ID_); }

IMServicePtr IMHandle::service() const { return service_; }

bool IMHandle::isAccountSiblingOf(const IMHandle* other) const {
  if (!other || other == this || !service_ || other->service_ != service_) return false;
  return normalizedID() == other->normalizedID();
}

std::set<std::string> IMHandle::groups() const { return {groups_.begin(), groups_.end()}; }

std::uint32_t IMHandle::sortOrderInGroup(const std::string& group) const {
  auto found = sortOrders_.find(group);
  return found == sortOrders_.end() ? 0xFFFFFFFFu : found->second;
}

std::string IMHandle::nameOfStatus() const { return IMNameOfPersonStatus(status_); }

double IMHandle::timeSinceStatusChanged() const { return std::max(0.0, now() - statusChangedAt_); }

double IMHandle::timeSinceWentOffline() const {
  if (IMPersonStatusIsOnline(status_)) return 0;
  return std::max(0.0, now() - wentOfflineAt_);
}

double IMHandle::idleTime() const {
  if (status_ != kIMPersonStatusIdle || !idleSince_) return 0;
  return std::max(0.0, now() - *idleSince_);
}

std::string IMHandle::idleString() const {
  if (status_ != kIMPersonStatusIdle) return "";
  auto minutes = static_cast<long long>(idleTime() / 60.0);
  char text[64];
  if (minutes < 1) return "Idle";
  if (minutes < 60) {
    std::snprintf(text, sizeof text, "Idle %lldm", minutes);
  } else if (minutes < 24 * 60) {
    std::snprintf(text, sizeof text, "Idle %lldh %02lldm", minutes / 60, minutes % 60);
  } else {
    std::snprintf(text, sizeof text, "Idle %lldd %lldh", minutes / (24 * 60), (minutes / 60) % 24);
  }
  return text;
}

std::string IMHandle::firstName() const { return person_ ? person_->firstName() : ""; }
std::string IMHandle::lastName() const { return person_ ? person_->lastName() : ""; }
std::string IMHandle::fullName() const { return person_ ? person_->fullName() : ""; }

std::string IMHandle::name() const {
  switch (IMHandleRegistrar::sharedInstance()->nameStyle()) {
    case kIMNameStyleScreenName:
      return ID_;
    case kIMNameStyleShortName:
      if (!nickname_.empty()) return nickname_;
      if (!firstName().empty()) return firstName();
      return ID_;
    default:
      if (!fullName().empty()) return fullName();
      if (!nickname_.empty()) return nickname_;
      return ID_;
  }
}

std::string IMHandle::uniqueName() const { return nickname_.empty() ? ID_ : nickname_; }

std::vector<std::string> IMHandle::emails() const {
  if (!emails_.empty() || !person_) return emails_;
  return person_->emails();
}

std::string IMHandle::nameAndEmail() const {
  auto addresses = emails();
  return addresses.empty() ? name() : name() + " <" + addresses.front() + ">";
}

int IMHandle::compareIDs(const IMHandle* other) const {
  if (!other) return 1;
  return IMNameCollation::compareNames(normalizedID(), other->normalizedID());
}

int IMHandle::compareFirstNames(const IMHandle* other) const {
  if (!other) return 1;
  auto mine = firstName(), theirs = other->firstName();
  return IMNameCollation::compareNames(mine.empty() ? name() : mine, theirs.empty() ? other->name() : theirs);
}

int IMHandle::compareLastNames(const IMHandle* other) const {
  if (!other) return 1;
  auto mine = lastName(), theirs = other->lastName();
  return IMNameCollation::compareNames(mine.empty() ? name() : mine, theirs.empty() ? other->name() : theirs);
}

void IMHandle::prefetchNameSortKeys() const { prefetch(&nameSortKeys_, sizeof(nameSortKeys_)); }

void IMHandle::prefetchNameSortKeyBytes() const {
  prefetch(nameSortKeys_.first.data());
  prefetch(nameSortKeys_.last.data());
}

const IMHandle::NameSortKeys& IMHandle::nameSortKeys() const {
  return nameSortKeys(TextServices::collationGeneration(), IMHandleRegistrar::sharedInstance()->nameStyle());
}

const IMHandle::NameSortKeys& IMHandle::nameSortKeys(std::uint64_t generation, std::uint32_t style) const {
  auto& keys = nameSortKeys_;
  if (keys.made && keys.nameRevision == nameRevision_ && keys.collationGeneration == generation &&
      keys.nameStyle == style)
    return keys;
  if (style == kIMNameStyleScreenName) {
    keys.first = IMNameCollation::sortKey(normalizedID());
    keys.last.clear();
  } else {
    // As compareFirstNames and compareLastNames: the name stands in for a missing one.
    auto first = firstName(), last = lastName();
    if (first.empty() || last.empty()) {
      auto fullName = name();
      if (first.empty()) first = fullName;
      if (last.empty()) last = std::move(fullName);
    }
    keys.first = IMNameCollation::sortKey(first);
    keys.last = IMNameCollation::sortKey(last);
  }
  keys.nameRevision = nameRevision_;
  keys.collationGeneration = generation;
  keys.nameStyle = style;
  keys.made = true;
  ++keys.version;
  return keys;
}

IMHandlePtr IMHandle::bestIMHandleInArray(std::span<const IMHandlePtr> handles) {
  IMHandlePtr best;
  for (const auto& handle : handles) {
    if (!handle) continue;
    if (!best || IMComparePersonStatus(handle->status_, best->status_) > 0) best = handle;
  }
  return best;
}

void IMHandle::updateStatus(IMPersonStatus status, std::string message, std::optional<double> idleSeconds) {
  bool changed = false;
  // Observers hear of the change once, before anything moves.
  auto willChange = [this, &changed] {
    if (!changed) informObserversOfWillChange();
    changed = true;
  };
  if (status != status_) {
    willChange();
    bool wasOnline = IMPersonStatusIsOnline(status_);
    status_ = status;
    statusChangedAt_ = now();
    if (wasOnline && !IMPersonStatusIsOnline(status)) wentOfflineAt_ = statusChangedAt_;
    if (status != kIMPersonStatusIdle) idleSince_.reset();
  }
  if (message != statusMessage_) {
    willChange();
    previousStatusMessage_ = std::move(statusMessage_);
    statusMessage_ = std::move(message);
  }
  if (idleSeconds && status_ == kIMPersonStatusIdle) {
    double since = now() - std::max(0.0, *idleSeconds);
    if (!idleSince_ || std::fabs(*idleSince_ - since) > 1e-9) {
      willChange();
      idleSince_ = since;
    }
  } else if (status_ == kIMPersonStatusIdle && !idleSince_) {
    idleSince_ = now();
  }
  if (changed) postStatusChanged();
}

void IMHandle::setStatus(IMPersonStatus status) { updateStatus(status, statusMessage_); }

void IMHandle::setStatusMessage(std::string message) { updateStatus(status_, std::move(message)); }

void IMHandle::setIdleTime(double seconds) { updateStatus(status_, statusMessage_, seconds); }

void IMHandle::setStatusURL(std::string url) {
  if (url == statusURL_) return;
  informObserversOfWillChange();
  statusURL_ = std::move(url);
  postDirectNotification(IMHandleExtraPropertiesChangedNotification);
}

void IMHandle::setMobileDeviceName(std::string deviceName) {
  if (deviceName == mobileDeviceName_) return;
  informObserversOfWillChange();
  mobileDeviceName_ = std::move(deviceName);
  postDirectNotification(IMHandleIsMobileChangedNotification);
}

void IMHandle::setPerson(IMPersonPtr person) {
  if (person == person_) return;
  informObserversOfWillChange();
  if (person_) person_->detachHandle(this);
  person_ = std::move(person);
  if (person_) person_->attachHandle(std::static_pointer_cast<IMHandle>(shared_from_this()));
  postInfoChanged();
}

void IMHandle::setNickname(std::string nickname) {
  if (nickname == nickname_) return;
  informObserversOfWillChange();
  nickname_ = std::move(nickname);
  postInfoChanged();
}

void IMHandle::setEmails(std::vector<std::string> emails) {
  if (emails == emails_) return;
  informObserversOfWillChange();
  emails_ = std::move(emails);
  postInfoChanged();
}

void IMHandle::setOtherServiceIDs(std::map<std::string, std::string> ids) {
  if (ids == otherServiceIDs_) return;
  informObserversOfWillChange();
  otherServiceIDs_ = std::move(ids);
  ++nameRevision_;
  postDirectNotification(IMHandleExtraPropertiesChangedNotification);
}

void IMHandle::setAuthRequestStatus(std::uint32_t status) {
  if (status == authRequestStatus_) return;
  informObserversOfWillChange();
  authRequestStatus_ = status;
  postDirectNotification(IMHandleExtraPropertiesChangedNotification);
}

void IMHandle::setBlocked(bool blocked) {
  if (blocked == isBlocked_) return;
  informObserversOfWillChange();
  isBlocked_ = blocked;
  postDirectNotification(IMHandleExtraPropertiesChangedNotification);
}

void IMHandle::setCapabilities(bool audio, bool video, bool conferenceAvailable) {
  if (audio == hasAudio_ && video == hasVideo_ && conferenceAvailable == isConferenceAvailable_) return;
  informObserversOfWillChange();
  hasAudio_ = audio;
  hasVideo_ = video;
  isConferenceAvailable_ = conferenceAvailable;
  postDirectNotification(IMHandleCapabilitiesChangedNotification);
}

void IMHandle::setGroups(std::vector<std::string> groups, std::map<std::string, std::uint32_t> sortOrders) {
  std::vector<std::string> unique;
  for (auto& group : groups)
    if (std::find(unique.begin(), unique.end(), group) == unique.end()) unique.push_back(std::move(group));
  std::map<std::string, std::uint32_t> orders;
  for (std::size_t i = 0; i < unique.size(); ++i) {
    auto given = sortOrders.find(unique[i]);
    orders[unique[i]] = given != sortOrders.end() ? given->second : static_cast<std::uint32_t>(i);
  }
  if (unique == groups_ && orders == sortOrders_) return;
  informObserversOfWillChange();
  groups_ = std::move(unique);
  sortOrders_ = std::move(orders);
  postDirectNotification(IMHandleGroupsChangedNotification);
}

void IMHandle::setSortOrderInGroup(const std::string& group, std::uint32_t order) {
  auto found = sortOrders_.find(group);
  if (found == sortOrders_.end() || found->second == order) return;
  informObserversOfWillChange();
  found->second = order;
  postDirectNotification(IMHandleSortOrderChangedNotification);
}

void IMHandle::notePictureChanged() { postDirectNotification(IMHandlePictureChangedNotification); }

std::string IMHandle::description() const {
  return ID_ + " (" + (service_ ? service_->name() : std::string("no service")) + ")";
}

void IMHandle::postInfoChanged() {
  ++nameRevision_;
  postDirectNotification(IMHandleInfoChangedNotification);
  IMService::notificationCenter().postNotificationName(IMPersonInfoChangedNotification, weak_from_this().lock());
}

void IMHandle::postStatusChanged() {
  postDirectNotification(IMHandleStatusChangedNotification);
  IMService::notificationCenter().postNotificationName(IMPersonStatusChangedNotification, weak_from_this().lock());
}

}  // namespace platform
