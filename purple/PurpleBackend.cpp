#include "purple/PurpleBackend.h"

#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMMelodix.h"
#include "purple/PurpleMapping.h"

namespace kibpurple {
namespace {

// The signals that change what the mirror shows, and what each one names.
enum class Subject { Account, AccountWithBuddies, AccountGone, Buddy, BuddyGone, Node, SavedStatuses };

const std::map<std::string, Subject>& signalSubjects() {
  static const std::map<std::string, Subject> subjects = {
      {"AccountSignedOn", Subject::AccountWithBuddies},
      {"AccountSignedOff", Subject::AccountWithBuddies},
      {"AccountAdded", Subject::AccountWithBuddies},
      {"AccountRemoved", Subject::AccountGone},
      {"AccountEnabled", Subject::Account},
      {"AccountDisabled", Subject::Account},
      {"AccountConnecting", Subject::Account},
      {"AccountStatusChanged", Subject::Account},
      {"BuddyStatusChanged", Subject::Buddy},
      {"BuddySignedOn", Subject::Buddy},
      {"BuddySignedOff", Subject::Buddy},
      {"BuddyIdleChanged", Subject::Buddy},
      {"BuddyCapsChanged", Subject::Buddy},
      {"BuddyAdded", Subject::Buddy},
      {"BuddyRemoved", Subject::BuddyGone},
      {"BlistNodeAliased", Subject::Node},
      {"SavedstatusChanged", Subject::SavedStatuses},
      {"SavedstatusAdded", Subject::SavedStatuses},
      {"SavedstatusDeleted", Subject::SavedStatuses},
      {"SavedstatusModified", Subject::SavedStatuses},
  };
  return subjects;
}

const char* primitiveName(PurplePrimitive primitive) {
  switch (primitive) {
    case PurplePrimitive::Offline:
      return "offline";
    case PurplePrimitive::Invisible:
      return "invisible";
    case PurplePrimitive::Away:
      return "away";
    default:
      return "available";
  }
}

}  // namespace

PurpleBackend::PurpleBackend(kibbus::BusConnection& bus) : bus_(bus) {}

PurpleBackend::~PurpleBackend() {
  watch_.reset();
  reader_.reset();
  client_.reset();
  proxy_.reset();
}

void PurpleBackend::start() {
  platform::IMDaemonController::sharedController()->setBackend(shared_from_this());
  std::weak_ptr<PurpleBackend> weakSelf = shared_from_this();
  watch_ = bus_.watchName(kPurpleService, [weakSelf](const std::string& owner) {
    if (auto self = weakSelf.lock()) self->ownerChanged(owner);
  });
  ownerChanged(bus_.ownerOf(kPurpleService));
}

void PurpleBackend::note(const std::string& line) {
  if (observer_) observer_(line);
}

void PurpleBackend::ownerChanged(const std::string& owner) {
  if (owner == owner_) return;
  if (!owner_.empty()) disconnect();
  if (!owner.empty()) connect(owner);
}

void PurpleBackend::connect(const std::string& owner) {
  owner_ = owner;
  try {
    proxy_ = sdbus::createProxy(bus_.connection(), owner, kPurpleObjectPath);
    subscribe();
  } catch (const sdbus::Error& error) {
    complaints_.complain("cannot follow the client's signals: " + error.getMessage());
    proxy_.reset();
    owner_.clear();
    return;
  }
  client_ = std::make_unique<PurpleClient>(*proxy_);
  reader_ = std::make_unique<PurpleReader>(*client_, complaints_);
  readAttempts_ = 0;
  attemptFirstRead();
}

// A client takes its name before it answers calls; until a whole read goes
// through it is not connected.
void PurpleBackend::attemptFirstRead() {
  constexpr int kMaximumAttempts = 10;
  constexpr double kRetryDelay = 1.0;
  const auto unansweredBefore = client_->unansweredCalls();
  readEverything();
  if (client_->unansweredCalls() != unansweredBefore && ++readAttempts_ < kMaximumAttempts) {
    platform::RunLoop::main().performBlock(kRetryDelay, platform::kCommonRunLoopModes,
                                           [weakSelf = weak_from_this(), owner = owner_] {
                                             auto self = weakSelf.lock();
                                             if (self && self->owner_ == owner && self->client_ && !self->ready_)
                                               self->attemptFirstRead();
                                           });
    return;
  }
  ready_ = true;
  const auto ui = reader_->ui();
  note("client appeared (" + (ui.empty() ? std::string("unknown interface") : ui) + ")");
  platform::IMDaemonController::sharedController()->noteDaemonDidConnect();
  if (!listeners_.empty()) platform::IMAccountController::sharedInstance()->postUpdated();
}

void PurpleBackend::disconnect() {
  const bool wasReady = ready_;
  ready_ = false;
  reader_.reset();
  client_.reset();
  proxy_.reset();
  owner_.clear();
  pendingRequest_.reset();
  mirror_.clear();
  complaints_.forget();
  if (!wasReady) return;
  note("client went away");
  platform::IMDaemonController::sharedController()->noteDaemonDidDisconnect();
}

void PurpleBackend::subscribe() {
  for (const auto& [name, subject] : signalSubjects()) {
    (void)subject;
    proxy_->registerSignalHandler(kPurpleInterface, name,
                                  [this, name = name](sdbus::Signal& signal) { onSignal(name, signal); });
  }
  proxy_->finishRegistration();
}

void PurpleBackend::readEverything() {
  vcCapabilities_ = PurpleMapping::vcCapabilitiesForUI(reader_->ui());
  mirror_.setSavedStatusInvisible(reader_->currentSavedPrimitive() == PurplePrimitive::Invisible);
  for (auto id : reader_->accountIDs()) refreshAccount(id, true);
  mirror_.applySavedStatuses(reader_->savedStatuses());
}

// Runs inside the bus library's dispatch: nothing may escape.
void PurpleBackend::onSignal(const std::string& name, sdbus::Signal& signal) {
  if (!reader_) return;
  try {
    PurpleID id = 0;
    signal >> id;
    switch (signalSubjects().at(name)) {
      case Subject::Account:
        refreshAccount(id, false);
        break;
      case Subject::AccountWithBuddies:
        refreshAccount(id, true);
        break;
      case Subject::AccountGone:
        mirror_.removeAccount(id);
        break;
      case Subject::Buddy:
        refreshBuddy(id);
        break;
      case Subject::BuddyGone:
        mirror_.removeBuddy(id);
        break;
      case Subject::Node:
        refreshNode(id);
        break;
      case Subject::SavedStatuses:
        refreshSavedStatuses();
        break;
    }
  } catch (const sdbus::Error& error) {
    complaints_.complain("signal " + name + " with unexpected arguments: " + error.getMessage());
  } catch (const std::exception& error) {
    complaints_.complain("signal " + name + ": " + error.what());
  }
}

void PurpleBackend::refreshAccount(PurpleID id, bool withBuddies) {
  auto record = reader_->account(id);
  if (!record) return;
  mirror_.applyAccount(*record);
  if (!withBuddies) return;
  for (auto buddy : reader_->buddyIDs(id)) refreshBuddy(buddy);
}

void PurpleBackend::refreshBuddy(PurpleID id) {
  auto record = reader_->buddy(id);
  if (!record) {
    // The buddy is gone or unreadable: it leaves the mirror until it is readable again.
    mirror_.removeBuddy(id);
    return;
  }
  if (mirror_.applyBuddy(*record)) return;
  refreshAccount(record->account, false);
  if (!mirror_.applyBuddy(*record))
    complaints_.complain("buddy " + std::to_string(id) + " belongs to the unknown account " +
                         std::to_string(record->account));
}

// An alias changed on a buddy, or on a contact (all of its buddies show it).
void PurpleBackend::refreshNode(PurpleID node) {
  if (mirror_.hasBuddy(node)) {
    refreshBuddy(node);
    return;
  }
  for (auto buddy : mirror_.buddiesOfContact(node)) refreshBuddy(buddy);
}

// A change of the current saved status may change the accounts' invisibility.
void PurpleBackend::refreshSavedStatuses() {
  mirror_.applySavedStatuses(reader_->savedStatuses());
  const bool invisible = reader_->currentSavedPrimitive() == PurplePrimitive::Invisible;
  if (invisible == mirror_.savedStatusInvisible()) return;
  mirror_.setSavedStatusInvisible(invisible);
  for (auto id : mirror_.accountIDs()) refreshAccount(id, false);
}

void PurpleBackend::addListener(const std::string& listenerID, std::uint32_t capabilities) {
  listeners_[listenerID] = capabilities;
  // As a daemon does: a new listener hears about the accounts once it observes them.
  if (isConnected())
    platform::RunLoop::main().performBlock(0, platform::kCommonRunLoopModes, [weakSelf = weak_from_this()] {
      if (auto self = weakSelf.lock(); self && self->isConnected())
        platform::IMAccountController::sharedInstance()->postUpdated();
    });
}

void PurpleBackend::removeListener(const std::string& listenerID) { listeners_.erase(listenerID); }

void PurpleBackend::setMyStatus(platform::IMPersonStatus status, const platform::StringPtr& message) {
  if (!isConnected()) return;
  pendingRequest_ = StatusRequest{status, message ? message->value() : ""};
  scheduleStatusUpdate();
}

void PurpleBackend::writeAccountSettings(const platform::IMAccountPtr& account) {
  if (!isConnected() || !account || !mirror_.accountID(account.get())) return;
  invisibility_[account->uniqueID()] = account->isInvisible();
  scheduleStatusUpdate();
}

void PurpleBackend::scheduleStatusUpdate() {
  if (updateScheduled_) return;
  updateScheduled_ = true;
  platform::RunLoop::main().performBlock(0, platform::kCommonRunLoopModes, [weakSelf = weak_from_this()] {
    if (auto self = weakSelf.lock()) {
      self->updateScheduled_ = false;
      self->applyStatusRequest();
    }
  });
}

bool PurpleBackend::allAccountsInvisible() const {
  bool any = false;
  for (auto id : mirror_.accountIDs()) {
    auto found = invisibility_.find(mirror_.account(id)->uniqueID());
    if (found == invisibility_.end() || !found->second) return false;
    any = true;
  }
  return any;
}

// libpurple's status is one saved status for all accounts; invisibility is
// its invisible primitive, so it is applied when every account asks for it.
void PurpleBackend::applyStatusRequest() {
  if (!isConnected()) return;
  const bool invisible = allAccountsInvisible();
  if (!pendingRequest_ && invisible == invisibleApplied_) return;
  if (pendingRequest_) lastRequest_ = *pendingRequest_;
  pendingRequest_.reset();
  invisibleApplied_ = invisible;
  auto primitive = PurpleMapping::primitiveForRequest(lastRequest_.status, invisible);
  const bool keepsMessage = primitive == PurplePrimitive::Available || primitive == PurplePrimitive::Away;
  activateStatus(primitive, keepsMessage ? lastRequest_.message : "");
}

// Reuses the transient saved status of that primitive and message, as
// libpurple's own clients do, or makes one.
void PurpleBackend::activateStatus(PurplePrimitive primitive, const std::string& message) {
  const auto type = static_cast<std::int32_t>(primitive);
  try {
    auto saved = client_->call<PurpleID>("PurpleSavedstatusFindTransientByTypeAndMessage", type, message);
    if (saved <= 0) {
      saved = client_->call<PurpleID>("PurpleSavedstatusNew", std::string(), type);
      if (saved <= 0) throw PurpleReplyError("PurpleSavedstatusNew made no saved status");
      client_->send("PurpleSavedstatusSetMessage", saved, message);
    }
    client_->send("PurpleSavedstatusActivate", saved);
    note(std::string("activated saved status ") + primitiveName(primitive) + " \"" + message + "\"");
  } catch (const PurpleReplyError& error) {
    complaints_.complain(error.what());
  }
}

void PurpleBackend::loginAllAccounts() {
  if (!isConnected()) return;
  const auto ui = reader_->ui();
  for (auto id : mirror_.accountIDs()) {
    auto account = mirror_.account(id);
    try {
      if (!account->isActive()) client_->send("PurpleAccountSetEnabled", id, ui, std::int32_t{1});
      if (!account->isConnected()) client_->send("PurpleAccountConnect", id);
      note("logging in " + account->login());
    } catch (const PurpleReplyError& error) {
      complaints_.complain(error.what());
    }
  }
}

void PurpleBackend::loginAccount(const platform::IMAccountPtr& account) {
  if (!isConnected() || !account || !account->isActive() || account->isConnected()) return;
  auto id = mirror_.accountID(account.get());
  if (!id) return;
  try {
    client_->send("PurpleAccountConnect", *id);
    note("logging in " + account->login());
  } catch (const PurpleReplyError& error) {
    complaints_.complain(error.what());
  }
}

platform::ObjectPtr PurpleBackend::valueOfPersistentProperty(const std::string& key) const {
  if (key == platform::kKBDaemonPropertyNowPlayingFormatString) return platform::IMMelodixMessageFormat();
  return nullptr;
}

}  // namespace kibpurple
