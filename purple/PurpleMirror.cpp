#include "purple/PurpleMirror.h"

#include <algorithm>
#include <ctime>

#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMNameCollation.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"
#include "purple/PurpleMapping.h"

namespace kibpurple {
namespace {

// An XMPP user name carries the resource ("sam@example.org/laptop"); the
// screen name the buddies know is the part before it.
std::string loginOf(const PurpleAccountRecord& record) {
  if (record.protocolID != "prpl-jabber") return record.username;
  return record.username.substr(0, record.username.find('/'));
}

std::uint32_t loginStatusOf(const PurpleAccountRecord& record) {
  if (record.connected) return platform::kIMAccountLoginStatusConnected;
  if (record.connecting) return platform::kIMAccountLoginStatusConnecting;
  return platform::kIMAccountLoginStatusOffline;
}

void appendOnce(std::vector<std::string>& list, const std::string& text) {
  if (!text.empty() && std::find(list.begin(), list.end(), text) == list.end()) list.push_back(text);
}

}  // namespace

platform::IMServicePtr PurpleMirror::serviceFor(const PurpleAccountRecord& record) {
  auto names = PurpleMapping::serviceForProtocol(record.protocolID, record.protocolName);
  auto service = platform::IMService::serviceWithName(names.name);
  if (!service) {
    service = platform::IMService::make(names.name, names.internalName, names.shortName);
    service->setEnabled(false);
    platform::IMService::registerService(service);
  }
  protocols_[service->internalName()] = record.protocolID;
  return service;
}

platform::IMAccountPtr PurpleMirror::applyAccount(const PurpleAccountRecord& record) {
  auto& account = accounts_[record.id];
  if (!account) {
    auto service = serviceFor(record);
    account =
        platform::IMAccount::make(service, loginOf(record), "purple:" + record.protocolID + ":" + record.username);
    platform::IMAccountController::sharedInstance()->addAccount(account);
  }
  account->setCapabilities(PurpleMapping::accountCapabilities(record));
  account->setActive(record.enabled);
  // An invisible user's accounts report available.
  const bool invisible = record.connected && (record.primitive == PurplePrimitive::Invisible || savedStatusInvisible_);
  account->setInvisible(invisible);
  auto status = !record.connected ? platform::kIMPersonStatusOffline
                : invisible       ? platform::kIMPersonStatusAvailable
                                  : PurpleMapping::accountStatus(record.primitive);
  account->setMyStatus(status, record.message);
  account->setLoginStatus(loginStatusOf(record));
  updateService(account->service());
  return account;
}

void PurpleMirror::removeAccount(PurpleID id) {
  auto found = accounts_.find(id);
  if (found == accounts_.end()) return;
  for (auto buddy : buddiesOfAccount(id)) removeBuddy(buddy);
  auto account = found->second;
  accounts_.erase(found);
  platform::IMAccountController::sharedInstance()->removeAccount(account);
  updateService(account->service());
}

platform::IMAccountPtr PurpleMirror::account(PurpleID id) const {
  auto found = accounts_.find(id);
  return found == accounts_.end() ? nullptr : found->second;
}

std::optional<PurpleID> PurpleMirror::accountID(const platform::IMAccount* account) const {
  for (const auto& [id, candidate] : accounts_)
    if (candidate.get() == account) return id;
  return std::nullopt;
}

std::vector<PurpleID> PurpleMirror::accountIDs() const {
  std::vector<PurpleID> ids;
  for (const auto& entry : accounts_) ids.push_back(entry.first);
  return ids;
}

void PurpleMirror::updateService(const platform::IMServicePtr& service) {
  if (!service) return;
  bool enabled = false, connected = false;
  for (const auto& [id, account] : accounts_) {
    if (account->service() != service) continue;
    enabled = enabled || account->isActive();
    connected = connected || (account->isActive() && account->isConnected());
  }
  service->setEnabled(enabled);
  service->setStatus(connected ? platform::kIMPersonStatusAvailable : platform::kIMPersonStatusOffline);
}

platform::IMPersonPtr PurpleMirror::personFor(PurpleID contact) {
  if (contact <= 0) return nullptr;
  auto& person = people_[contact];
  if (!person) person = platform::IMPerson::make("purple-contact-" + std::to_string(contact));
  return person;
}

void PurpleMirror::forgetPersonIfUnused(PurpleID contact) {
  if (buddiesOfContact(contact).empty()) people_.erase(contact);
}

bool PurpleMirror::applyBuddy(const PurpleBuddyRecord& record) {
  auto account = this->account(record.account);
  if (!account) return false;
  auto found = buddies_.find(record.id);
  if (found != buddies_.end() && found->second.account != record.account) {
    removeBuddy(record.id);
    found = buddies_.end();
  }
  if (found == buddies_.end()) {
    auto handle = platform::IMHandle::make(account, record.name, personFor(record.contact));
    handle->setIsLoginIMHandle(platform::IMNameCollation::normalizeID(record.name) ==
                               platform::IMNameCollation::normalizeID(account->login()));
    found = buddies_.emplace(record.id, Buddy{record.account, record.contact, handle}).first;
    account->buddyList()->addIMHandle(handle);
  } else if (found->second.contact != record.contact) {
    auto previous = found->second.contact;
    found->second.contact = record.contact;
    found->second.handle->setPerson(personFor(record.contact));
    forgetPersonIfUnused(previous);
  }
  auto& handle = *found->second.handle;
  handle.setNickname(record.alias == record.name ? "" : record.alias);
  handle.setGroups(record.group.empty() ? std::vector<std::string>{} : std::vector<std::string>{record.group});
  auto status = PurpleMapping::buddyStatus(record.online, record.primitive, record.idle);
  std::optional<double> idle;
  if (status == platform::kIMPersonStatusIdle)
    idle = record.idleSince > 0 ? std::max<double>(0, std::difftime(std::time(nullptr), record.idleSince)) : 0.0;
  handle.updateStatus(status, record.online ? record.message : "", idle);
  handle.setCapabilities(PurpleMapping::hasAudio(record.mediaCaps), PurpleMapping::hasVideo(record.mediaCaps),
                         record.online);
  return true;
}

void PurpleMirror::removeBuddy(PurpleID id) {
  auto found = buddies_.find(id);
  if (found == buddies_.end()) return;
  auto buddy = found->second;
  buddies_.erase(found);
  if (auto account = buddy.handle->account()) account->buddyList()->removeIMHandle(buddy.handle.get());
  forgetPersonIfUnused(buddy.contact);
}

platform::IMHandlePtr PurpleMirror::handle(PurpleID id) const {
  auto found = buddies_.find(id);
  return found == buddies_.end() ? nullptr : found->second.handle;
}

std::vector<PurpleID> PurpleMirror::buddiesOfContact(PurpleID contact) const {
  std::vector<PurpleID> ids;
  for (const auto& [id, buddy] : buddies_)
    if (buddy.contact == contact) ids.push_back(id);
  return ids;
}

std::vector<PurpleID> PurpleMirror::buddiesOfAccount(PurpleID account) const {
  std::vector<PurpleID> ids;
  for (const auto& [id, buddy] : buddies_)
    if (buddy.account == account) ids.push_back(id);
  return ids;
}

void PurpleMirror::applySavedStatuses(const std::vector<PurpleSavedStatusRecord>& records) {
  std::vector<std::string> available, away;
  for (const auto& record : records) {
    if (record.transient) continue;
    auto status = PurpleMapping::accountStatus(record.primitive);
    if (record.primitive == PurplePrimitive::Invisible || record.primitive == PurplePrimitive::Offline) continue;
    appendOnce(status == platform::kIMPersonStatusAway ? away : available, record.message);
  }
  const auto& agent = platform::IMServiceAgent::sharedAgent();
  agent->setMyAvailableMessages(std::move(available));
  agent->setMyAwayMessages(std::move(away));
}

void PurpleMirror::clear() {
  while (!accounts_.empty()) removeAccount(accounts_.begin()->first);
  people_.clear();
  for (const auto& service : platform::IMService::allServices()) {
    service->setEnabled(false);
    service->setStatus(platform::kIMPersonStatusOffline);
  }
}

std::string PurpleMirror::protocolOfService(const std::string& internalName) const {
  auto found = protocols_.find(internalName);
  return found == protocols_.end() ? "" : found->second;
}

}  // namespace kibpurple
