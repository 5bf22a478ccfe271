#include "purple/PurpleApplication.h"

#include <cctype>

#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMService.h"
#include "platform/ui/Workspace.h"
#include "purple/PurpleBackend.h"

namespace kibpurple {
namespace {

const std::string kScheme = "parlo:";

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Percent-decoding; a malformed escape is kept as it stands.
std::string unescape(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
      plain += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool hasScheme(const std::string& url) {
  if (url.size() < kScheme.size()) return false;
  for (std::size_t i = 0; i < kScheme.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(url[i])) != kScheme[i]) return false;
  return true;
}

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

std::optional<std::string> PurpleApplication::parameter(const std::string& query, const std::string& name) {
  std::size_t start = 0;
  while (start <= query.size()) {
    auto end = query.find('&', start);
    if (end == std::string::npos) end = query.size();
    auto pair = query.substr(start, end - start);
    auto equals = pair.find('=');
    if (pair.substr(0, equals) == name) return unescape(equals == std::string::npos ? "" : pair.substr(equals + 1));
    start = end + 1;
  }
  return std::nullopt;
}

bool PurpleApplication::openURL(const std::string& url) {
  if (!hasScheme(url)) return false;
  auto backend = backend_.lock();
  if (!backend) return false;
  auto rest = url.substr(kScheme.size());
  auto question = rest.find('?');
  auto command = rest.substr(0, question);
  auto query = question == std::string::npos ? std::string() : rest.substr(question + 1);
  if (command != "compose" && command != "openbuddylist") return false;
  if (!backend->client()) {
    backend->note("no libpurple client to open " + url);
    return false;
  }
  return command == "compose" ? compose(*backend, query) : openBuddyList(*backend);
}

bool PurpleApplication::compose(PurpleBackend& backend, const std::string& query) {
  const auto serviceName = parameter(query, "service").value_or("");
  const auto id = parameter(query, "id").value_or("");
  const bool textOnly = parameter(query, "style").value_or("") == "IM";
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
