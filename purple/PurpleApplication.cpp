#include "purple/PurpleApplication.h"

#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMService.h"
#include "platform/ui/MessagingURL.h"
#include "platform/ui/Workspace.h"
#include "purple/PurpleBackend.h"

namespace kibpurple {
namespace {

bool allowsVideo(std::uint64_t vc) {
  return (vc & platform::kIMVCCapabilityCamera) &&
         (vc & (platform::kIMVCCapabilityConference | platform::kIMVCCapabilityMultiway));
}

bool allowsAudio(std::uint64_t vc) {
  return (vc & platform::kIMVCCapabilityMicrophone) && (vc & platform::kIMVCCapabilityConference);
}

}  // namespace

void PurpleApplication::install(std::shared_ptr<PurpleApplication> application) {
  platform::Workspace::sharedWorkspace().setURLHandler(
      [application](const std::string& url) { return application->openURL(url); });
}

bool PurpleApplication::openURL(const std::string& url) {
  auto parsed = platform::MessagingURL::parse(url);
  if (!parsed) return false;
  auto backend = backend_.lock();
  if (!backend) return false;
  const auto& command = parsed->command();
  if (command != "compose" && command != "openbuddylist") return false;
  if (!backend->client()) {
    backend->note("no libpurple client to open " + url);
    return false;
  }
  return command == "compose" ? compose(*backend, *parsed) : openBuddyList(*backend);
}

bool PurpleApplication::compose(PurpleBackend& backend, const platform::MessagingURL& url) {
  const auto serviceName = url.parameter("service").value_or("");
  const auto id = url.parameter("id").value_or("");
  const bool textOnly = url.parameter("style").value_or("") == "IM";
  auto service = platform::IMService::serviceWithInternalName(serviceName);
  platform::IMAccountPtr account;
  platform::IMHandlePtr handle;
  // The account that lists the buddy, else the service's first connected one.
  for (const auto& candidate : platform::IMAccountController::sharedInstance()->connectedAccountsForService(service)) {
    if (!service || !backend.mirror().accountID(candidate.get())) continue;
    if (!account) account = candidate;
    if (auto listed = candidate->buddyList()->imHandleWithID(id)) {
      account = candidate;
      handle = listed;
      break;
    }
  }
  if (!account || id.empty()) {
    backend.note("no connected account of " + serviceName + " for " + id);
    return false;
  }
  const PurpleID accountID = *backend.mirror().accountID(account.get());
  const auto vc = backend.vcCapabilities();
  if (!textOnly && handle) {
    if (handle->hasVideo() && allowsVideo(vc) && startMedia(backend, accountID, id, true)) return true;
    if (handle->hasAudio() && allowsAudio(vc) && startMedia(backend, accountID, id, false)) return true;
  }
  try {
    auto conversation = backend.client()->call<PurpleID>("PurpleConversationNew", kPurpleConversationIM, accountID, id);
    if (conversation <= 0) throw PurpleReplyError("PurpleConversationNew made no conversation with " + id);
    backend.client()->send("PurpleConversationPresent", conversation);
    backend.note("conversation with " + id + " on " + account->login());
    return true;
  } catch (const PurpleReplyError& error) {
    backend.complaints().complain(error.what());
    return false;
  }
}

bool PurpleApplication::startMedia(PurpleBackend& backend, PurpleID account, const std::string& id, bool video) {
  try {
    auto type = video ? kPurpleMediaVideo : kPurpleMediaAudio;
    if (!backend.client()->call<std::int32_t>("PurplePrplInitiateMedia", account, id, type)) return false;
    backend.note(std::string(video ? "video" : "audio") + " session with " + id);
    return true;
  } catch (const PurpleReplyError& error) {
    backend.complaints().complain(error.what());
    return false;
  }
}

bool PurpleApplication::openBuddyList(PurpleBackend& backend) {
  try {
    backend.client()->send("PurpleBlistSetVisible", std::int32_t{1});
    backend.note("buddy list shown");
    return true;
  } catch (const PurpleReplyError& error) {
    backend.complaints().complain(error.what());
    return false;
  }
}

}  // namespace kibpurple
