#include "sim/SimWorld.h"


#include "platform/core/Clock.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMMelodix.h"
#include "platform/im/IMMessagingWorld.h"
#include "platform/im/IMNameCollation.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "platform/ui/Workspace.h"
#include "platform/im/IMServiceAgent.h"
#include "sim/ScenarioLoader.h"

namespace sim {

using platform::IMAccountPtr;
using platform::IMPersonStatus;

namespace {

double now() { return platform::Clock::current().now(); }

}  // namespace

std::shared_ptr<SimWorld> SimWorld::make(Scenario scenario, ScenarioPeople people) {
  auto world = std::make_shared<SimWorld>(std::move(scenario));
  world->build();
  if (people == ScenarioPeople::Released) std::vector<ScenarioPerson>().swap(world->scenario_.people);
  return world;
}

std::shared_ptr<SimWorld> SimWorld::makeDefault() { return make(ScenarioLoader::defaultScenario()); }

SimWorld::~SimWorld() {
  if (!daemon_) return;
  daemon_->detach();
  const auto& controller = platform::IMDaemonController::sharedController();
  if (controller->backend() == daemon_) controller->setBackend(nullptr);
}

void SimWorld::build() {
  platform::IMResetMessagingWorld();
  buildServices();
  buildAccounts();
  buildPeople();
  for (const auto& service : scenario_.services)
    if (!service.status) updateServiceStatus(platform::IMService::serviceWithName(service.name));

  const auto& agent = platform::IMServiceAgent::sharedAgent();
  agent->setMyAvailableMessages(scenario_.availableMessages);
  agent->setMyAwayMessages(scenario_.awayMessages);
  agent->setMelodixInteropAvailable(scenario_.music.interop);

  daemon_ = std::make_shared<SimDaemon>(std::static_pointer_cast<SimWorld>(shared_from_this()), scenario_);
  platform::IMDaemonController::sharedController()->setBackend(daemon_);
  application_ = MessagingApplication::make(scenario_.latency.screenSharingEnd);
  // The messaging application handles the URLs the workspace opens.
  std::weak_ptr<MessagingApplication> application = application_;
  platform::Workspace::sharedWorkspace().setURLHandler([application](const std::string& url) {
    auto app = application.lock();
    return app && app->openURL(url);
  });
}

void SimWorld::buildServices() {
  for (const auto& entry : scenario_.services) {
    auto service = platform::IMService::make(entry.name, entry.internalName, entry.shortName);
    service->setEnabled(entry.enabled);
    service->setPersistent(entry.persistent);
    if (entry.status) service->setStatus(*entry.status);
    platform::IMService::registerService(service);
  }
}

void SimWorld::buildAccounts() {
  const auto& controller = platform::IMAccountController::sharedInstance();
  for (const auto& entry : scenario_.accounts) {
    auto account =
        platform::IMAccount::make(platform::IMService::serviceWithName(entry.service), entry.login, entry.id);
    account->setActive(entry.active);
    account->setCapabilities(entry.capabilities);
    account->setInvisible(entry.invisible);
    auto nowPlaying = entry.nowPlaying ? *entry.nowPlaying : nowPlayingFor(entry.myMessage);
    account->setMyStatus(entry.myStatus, entry.myMessage, nowPlaying);
    account->setLoginStatus(entry.loginStatus);
    accounts_[entry.id] = account;
    controller->addAccount(account);
  }
}

void SimWorld::buildPeople() {
  std::size_t handles = 0;
  for (const auto& entry : scenario_.people) handles += entry.handles.size();
  buddies_.reserve(buddies_.size() + handles);
  std::map<std::string, std::string> normalizedLogins;
  for (const auto& [id, account] : accounts_)
    normalizedLogins[id] = platform::IMNameCollation::normalizeID(account->login());
  for (const auto& entry : scenario_.people) {
    auto person = platform::IMPerson::make(entry.id, entry.firstName, entry.lastName);
    person->setEmails(entry.emails);
    for (const auto& h : entry.handles) {
      const auto& account = accounts_.at(h.account);
      auto handle = platform::IMHandle::make(account, h.id, person);
      handle->setGroups(h.groups, h.sortOrders);
      handle->setNickname(h.nickname);
      handle->setEmails(h.emails);
      handle->setOtherServiceIDs(h.otherServiceIDs);
      handle->setAuthRequestStatus(h.authRequest);
      handle->setStatusURL(h.statusURL);
      handle->setMobileDeviceName(h.mobile);
      handle->setCapabilities(h.audio, h.video, h.conference);
      handle->setBlocked(h.blocked);
      if (platform::IMNameCollation::normalizeID(h.id) == normalizedLogins.at(h.account))
        handle->setIsLoginIMHandle(true);
      Buddy buddy{h.account, handle, h.status, h.message, std::nullopt};
      if (h.status == platform::kIMPersonStatusIdle) buddy.idleSince = now() - h.idle;
      show(buddy);
      buddies_.push_back(std::move(buddy));
      account->buddyList()->addIMHandle(handle);
    }
  }
}

void SimWorld::start() {
  if (startTime_) return;
  startTime_ = now();
  for (const auto& event : scenario_.events) schedule(event, event.at);
}

bool SimWorld::apply(const SimEvent& event, std::string* error) {
  auto refuse = [error](std::string reason) {
    if (error) *error = std::move(reason);
    return false;
  };
  using Type = SimEvent::Type;
  IMAccountPtr target;
  if (SimEvent::needsAccount(event.type)) {
    target = account(event.account);
    if (!target) return refuse("no account with id \"" + event.account + "\"");
  }
  Buddy* buddyRecord = nullptr;
  if (SimEvent::needsHandle(event.type)) {
    buddyRecord = buddy(event.account, event.handle);
    if (!buddyRecord) return refuse("no handle \"" + event.handle + "\" on account \"" + event.account + "\"");
  }
  if (eventObserver_) eventObserver_(event);
  switch (event.type) {
    case Type::BuddyStatus:
    case Type::BuddyOnline:
    case Type::BuddyOffline:
    case Type::BuddyGroups:
    case Type::BuddyCapabilities:
      applyBuddyEvent(event, *buddyRecord);
      break;
    case Type::AccountConnect:
      target->setActive(true);
      connectAccount(target);
      break;
    case Type::AccountDisconnect:
      disconnectAccount(target);
      break;
    case Type::DaemonDisconnect:
      daemon_->setConnected(false);
      break;
    case Type::DaemonConnect:
      daemon_->setConnected(true);
      break;
    case Type::StatusText:
      postStatusText(event);
      break;
    case Type::ScreenSharingStart:
      application_->startScreenSharing(event.partner);
      break;
    case Type::ScreenSharingEnd:
      application_->endScreenSharing();
      break;
    case Type::ApplicationQuit:
      application_->quit();
      break;
  }
  return true;
}

void SimWorld::applyBuddyEvent(const SimEvent& event, Buddy& buddy) {
  using Type = SimEvent::Type;
  auto& handle = *buddy.handle;
  switch (event.type) {
    case Type::BuddyOnline:
      buddy.status = event.status.value_or(platform::kIMPersonStatusAvailable);
      buddy.message = event.message.value_or("");
      break;
    case Type::BuddyOffline:
      buddy.status = platform::kIMPersonStatusOffline;
      buddy.message.clear();
      break;
    case Type::BuddyStatus:
      if (event.status) buddy.status = *event.status;
      if (event.message) buddy.message = *event.message;
      break;
    case Type::BuddyGroups:
      handle.setGroups(event.groups.value_or(std::vector<std::string>{}), event.sortOrders);
      return;
    case Type::BuddyCapabilities:
      handle.setCapabilities(event.audio.value_or(handle.hasAudio()), event.video.value_or(handle.hasVideo()),
                             event.conference.value_or(handle.isConferenceAvailable()));
      return;
    default:
      return;
  }
  if (buddy.status != platform::kIMPersonStatusIdle) {
    buddy.idleSince.reset();
  } else if (event.idle) {
    buddy.idleSince = now() - *event.idle;
  } else if (!buddy.idleSince) {
    buddy.idleSince = now();
  }
  show(buddy);
}

void SimWorld::schedule(const SimEvent& event, double delay) {
  std::weak_ptr<SimWorld> weakSelf = std::static_pointer_cast<SimWorld>(shared_from_this());
  platform::RunLoop::main().performBlock(delay, platform::kCommonRunLoopModes, [weakSelf, event] {
    if (auto self = weakSelf.lock()) {
      std::string error;
      if (!self->apply(event, &error)) platform::IMWarn("Simulated event %s skipped: %s", event.description(), error);
    }
  });
}

IMAccountPtr SimWorld::account(const std::string& id) const {
  auto found = accounts_.find(id);
  return found == accounts_.end() ? nullptr : found->second;
}

std::string SimWorld::accountID(const platform::IMAccount* account) const {
  for (const auto& [id, candidate] : accounts_)
    if (candidate.get() == account) return id;
  return "";
}

platform::IMHandlePtr SimWorld::handle(const std::string& accountID, const std::string& handleID) const {
  auto* found = const_cast<SimWorld*>(this)->buddy(accountID, handleID);
  return found ? found->handle : nullptr;
}

SimWorld::Buddy* SimWorld::buddy(const std::string& accountID, const std::string& handleID) {
  auto wanted = platform::IMNameCollation::normalizeID(handleID);
  for (auto& candidate : buddies_)
    if (candidate.accountID == accountID && candidate.handle->normalizedID() == wanted) return &candidate;
  return nullptr;
}

// A buddy shows its true presence while its account is logged in, and offline otherwise.
void SimWorld::show(const Buddy& buddy) {
  auto account = buddy.handle->account();
  if (!account || !account->isConnected()) {
    buddy.handle->updateStatus(platform::kIMPersonStatusOffline, "");
    return;
  }
  std::optional<double> idle;
  if (buddy.idleSince) idle = now() - *buddy.idleSince;
  buddy.handle->updateStatus(buddy.status, buddy.message, idle);
}

void SimWorld::applyMyStatus(IMPersonStatus status, const std::string& message) {
  for (const auto& account : platform::IMAccountController::sharedInstance()->connectedAccounts()) {
    if (status == platform::kIMPersonStatusOffline) {
      account->setMyStatus(status, "", "");
      disconnectAccount(account);
    } else {
      account->setMyStatus(status, message, nowPlayingFor(message));
    }
  }
}

void SimWorld::beginLogin(const IMAccountPtr& account) {
  if (!account->isConnected()) account->setLoginStatus(platform::kIMAccountLoginStatusConnecting);
}

void SimWorld::connectAccount(const IMAccountPtr& account) {
  if (account->isConnected()) return;
  auto status = daemon_->requestedStatus();
  std::string message = daemon_->requestedMessage();
  if (!status) {
    const auto* entry = scenario_.accountWithID(accountID(account.get()));
    status = entry ? entry->myStatus : platform::kIMPersonStatusAvailable;
    message = entry ? entry->myMessage : "";
  }
  if (!platform::IMPersonStatusIsOnline(*status)) {
    status = platform::kIMPersonStatusAvailable;
    message.clear();
  }
  account->setMyStatus(*status, message, nowPlayingFor(message));
  account->setInvisible(daemon_->invisibilityOf(account->uniqueID()));
  account->setLoginStatus(platform::kIMAccountLoginStatusConnected);
  for (const auto& candidate : buddies_)
    if (candidate.handle->account() == account) show(candidate);
  updateServiceStatus(account->service());
}

void SimWorld::disconnectAccount(const IMAccountPtr& account) {
  if (account->loginStatus() == platform::kIMAccountLoginStatusOffline) return;
  account->setMyStatus(platform::kIMPersonStatusOffline, account->myStatusMessage(), "");
  account->setLoginStatus(platform::kIMAccountLoginStatusOffline);
  for (const auto& candidate : buddies_)
    if (candidate.handle->account() == account) show(candidate);
  updateServiceStatus(account->service());
}

std::string SimWorld::nowPlayingFor(const std::string& message) const {
  const auto& format = daemon_
                           ? daemon_->nowPlayingFormat()
                           : scenario_.daemon.nowPlayingFormat.value_or(platform::IMMelodixMessageFormat()->value());
  if (message.empty() || message != format || !scenario_.music.interop || scenario_.music.currentTrack.empty())
    return "";
  auto text = format;
  auto slot = text.find("%@");
  if (slot != std::string::npos) text.replace(slot, 2, scenario_.music.currentTrack);
  return text;
}

void SimWorld::updateServiceStatus(const platform::IMServicePtr& service) {
  if (!service) return;
  bool online = !platform::IMAccountController::sharedInstance()->connectedAccountsForService(service).empty();
  service->setStatus(online ? platform::kIMPersonStatusAvailable : platform::kIMPersonStatusOffline);
}

void SimWorld::postStatusText(const SimEvent& event) {
  auto text = platform::makeString(event.text);
  if (event.centre == "distributed" || event.centre == "both")
    platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
        platform::IMDisplayStatusTextNotification, text);
  if (event.centre == "service" || event.centre == "both")
    platform::IMService::notificationCenter().postNotificationName(platform::IMDisplayStatusTextNotification, text);
}

}  // namespace sim
