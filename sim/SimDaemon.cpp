#include "sim/SimDaemon.h"

#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMMelodix.h"
#include "sim/SimWorld.h"

namespace sim {

SimDaemon::SimDaemon(std::weak_ptr<SimWorld> world, const Scenario& scenario)
    : world_(std::move(world)),
      latency_(scenario.latency),
      connected_(scenario.daemon.connected),
      vcCapabilities_(scenario.daemon.vcCapabilities),
      nowPlayingFormat_(scenario.daemon.nowPlayingFormat.value_or(platform::IMMelodixMessageFormat()->value())) {
  for (const auto& account : scenario.accounts) invisibility_[account.id] = account.invisible;
}

void SimDaemon::addListener(const std::string& listenerID, std::uint32_t capabilities) {
  listeners_[listenerID] = capabilities;
  // A new listener hears about the accounts on the loop's next turn, once it
  // has had the chance to observe the account notifications.
  if (connected_) later(0, [](SimWorld&) { platform::IMAccountController::sharedInstance()->postUpdated(); });
}

void SimDaemon::removeListener(const std::string& listenerID) { listeners_.erase(listenerID); }

void SimDaemon::setMyStatus(platform::IMPersonStatus status, const platform::StringPtr& message) {
  if (!connected_) return;
  std::string text = message ? message->value() : "";
  later(latency_.status, [this, status, text](SimWorld& world) {
    requestedStatus_ = status;
    requestedMessage_ = text;
    world.applyMyStatus(status, text);
  });
}

void SimDaemon::loginAllAccounts() {
  if (!connected_) return;
  for (const auto& account : platform::IMAccountController::sharedInstance()->activeAccounts()) startLogin(account);
}

void SimDaemon::loginAccount(const platform::IMAccountPtr& account) {
  if (!connected_ || !account || !account->isActive()) return;
  startLogin(account);
}

void SimDaemon::writeAccountSettings(const platform::IMAccountPtr& account) {
  if (!connected_ || !account) return;
  invisibility_[account->uniqueID()] = account->isInvisible();
}

platform::ObjectPtr SimDaemon::valueOfPersistentProperty(const std::string& key) const {
  if (key == platform::kKBDaemonPropertyNowPlayingFormatString) return platform::makeString(nowPlayingFormat_);
  return nullptr;
}

void SimDaemon::setConnected(bool connected) {
  if (connected == connected_) return;
  connected_ = connected;
  if (!connected) pendingLogins_.clear();
  const auto& controller = platform::IMDaemonController::sharedController();
  if (controller->backend().get() != this) return;
  if (connected) {
    controller->noteDaemonDidConnect();
  } else {
    controller->noteDaemonDidDisconnect();
  }
}

bool SimDaemon::invisibilityOf(const std::string& accountUniqueID) const {
  auto found = invisibility_.find(accountUniqueID);
  return found != invisibility_.end() && found->second;
}

void SimDaemon::setInvisibility(const std::string& accountUniqueID, bool invisible) {
  invisibility_[accountUniqueID] = invisible;
}

void SimDaemon::startLogin(const platform::IMAccountPtr& account) {
  if (account->isConnected() || !pendingLogins_.insert(account->uniqueID()).second) return;
  if (auto world = world_.lock()) world->beginLogin(account);
  later(latency_.login, [this, account](SimWorld& world) {
    if (!pendingLogins_.erase(account->uniqueID())) return;  // the daemon went away meanwhile
    world.connectAccount(account);
  });
}

void SimDaemon::later(double delay, std::function<void(SimWorld&)> work) {
  platform::RunLoop::main().performBlock(delay, platform::kCommonRunLoopModes,
                                         [weakWorld = world_, work = std::move(work)] {
                                           if (auto world = weakWorld.lock()) work(*world);
                                         });
}

}  // namespace sim
