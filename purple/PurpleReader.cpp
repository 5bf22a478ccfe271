#include "purple/PurpleReader.h"

#include "purple/PurpleMapping.h"

namespace kibpurple {
namespace {

std::string where(const char* what, PurpleID id) { return std::string(what) + " " + std::to_string(id); }

bool flag(std::int32_t value) { return value != 0; }

}  // namespace

// A client that does not answer is said once, not once per call.
void PurpleReader::skip(const PurpleReplyError& error) {
  if (dynamic_cast<const PurpleNoAnswer*>(&error))
    complaints_.complain("the client does not answer in time");
  else
    complaints_.complain(error.what());
}

std::vector<PurpleID> PurpleReader::validIDs(std::vector<PurpleID> ids, const std::string& where) {
  std::vector<PurpleID> valid;
  for (auto id : ids) {
    if (id > 0)
      valid.push_back(id);
    else
      complaints_.complain(where + " lists the id " + std::to_string(id));
  }
  return valid;
}

std::vector<PurpleID> PurpleReader::accountIDs() {
  return tryRead([&] { return validIDs(client_.ids("PurpleAccountsGetAll"), "PurpleAccountsGetAll"); })
    .value_or(std::vector<PurpleID>());
}

std::vector<PurpleID> PurpleReader::buddyIDs(PurpleID account) {
  return tryRead([&] {
         // An empty name asks for every buddy of the account.
         return validIDs(client_.call<std::vector<PurpleID>>("PurpleFindBuddies", account, std::string()),
                         where("the buddy list of account", account));
       })
    .value_or(std::vector<PurpleID>());
}

PurplePrimitive PurpleReader::primitive(std::int32_t wire, const std::string& where) {
  auto value = PurpleMapping::primitiveFromWire(wire);
  if (!value) throw PurpleReplyError(where + " has the status primitive " + std::to_string(wire));
  return *value;
}

void PurpleReader::readStatus(PurpleID status, PurplePrimitive& primitive, std::string& message) {
  if (status <= 0) {
    primitive = PurplePrimitive::Unset;
    message.clear();
    return;
  }
  auto type = client_.integer("PurpleStatusGetType", status);
  primitive = this->primitive(client_.integer("PurpleStatusTypeGetPrimitive", type), where("status", status));
  message = client_.call<std::string>("PurpleStatusGetAttrString", status, std::string("message"));
}

std::optional<PurpleAccountRecord> PurpleReader::account(PurpleID id) {
  return tryRead([&] {
    PurpleAccountRecord record;
    record.id = id;
    record.username = client_.text("PurpleAccountGetUsername", id);
    record.protocolID = client_.text("PurpleAccountGetProtocolId", id);
    record.protocolName = client_.text("PurpleAccountGetProtocolName", id);
    if (record.username.empty() || record.protocolID.empty())
      throw PurpleReplyError(where("account", id) + " has no user name or protocol");
    record.enabled = flag(client_.call<std::int32_t>("PurpleAccountGetEnabled", id, ui()));
    record.connected = flag(client_.integer("PurpleAccountIsConnected", id));
    record.connecting = flag(client_.integer("PurpleAccountIsConnecting", id));
    readStatus(client_.integer("PurpleAccountGetActiveStatus", id), record.primitive, record.message);
    record.offersInvisible = client_.call<std::int32_t>("PurpleAccountGetStatusTypeWithPrimitive", id,
                                                        static_cast<std::int32_t>(PurplePrimitive::Invisible)) != 0;
    return record;
  });
}

std::optional<PurpleBuddyRecord> PurpleReader::buddy(PurpleID id) {
  return tryRead([&] {
    PurpleBuddyRecord record;
    record.id = id;
    record.account = client_.integer("PurpleBuddyGetAccount", id);
    record.name = client_.text("PurpleBuddyGetName", id);
    if (record.account <= 0 || record.name.empty())
      throw PurpleReplyError(where("buddy", id) + " has no account or name");
    record.alias = client_.text("PurpleBuddyGetAlias", id);
    record.contact = client_.integer("PurpleBuddyGetContact", id);
    if (auto group = client_.integer("PurpleBuddyGetGroup", id); group > 0)
      record.group = client_.text("PurpleGroupGetName", group);
    auto presence = client_.integer("PurpleBuddyGetPresence", id);
    if (presence <= 0) throw PurpleReplyError(where("buddy", id) + " has no presence");
    record.online = flag(client_.integer("PurplePresenceIsOnline", presence));
    readStatus(client_.integer("PurplePresenceGetActiveStatus", presence), record.primitive, record.message);
    record.idle = flag(client_.integer("PurplePresenceIsIdle", presence));
    if (record.idle) record.idleSince = client_.integer("PurplePresenceGetIdleTime", presence);
    record.mediaCaps = client_.integer("PurpleBuddyGetMediaCaps", id);
    return record;
  });
}

std::optional<PurpleSavedStatusRecord> PurpleReader::savedStatus(PurpleID id) {
  return tryRead([&] {
    PurpleSavedStatusRecord record;
    record.id = id;
    record.title = client_.text("PurpleSavedstatusGetTitle", id);
    record.primitive = primitive(client_.integer("PurpleSavedstatusGetType", id), where("saved status", id));
    record.message = client_.text("PurpleSavedstatusGetMessage", id);
    record.transient = flag(client_.integer("PurpleSavedstatusIsTransient", id));
    return record;
  });
}

std::vector<PurpleSavedStatusRecord> PurpleReader::savedStatuses() {
  std::vector<PurpleSavedStatusRecord> records;
  try {
    for (auto id : validIDs(client_.ids("PurpleSavedstatusesGetAll"), "PurpleSavedstatusesGetAll"))
      if (auto record = savedStatus(id)) records.push_back(std::move(*record));
  } catch (const PurpleReplyError& error) {
    skip(error);
  }
  return records;
}

std::optional<PurplePrimitive> PurpleReader::currentSavedPrimitive() {
  return tryRead([&]() -> std::optional<PurplePrimitive> {
           auto current = client_.call<PurpleID>("PurpleSavedstatusGetCurrent");
           if (current <= 0) return std::nullopt;
           return primitive(client_.integer("PurpleSavedstatusGetType", current), where("saved status", current));
         })
      .value_or(std::nullopt);
}

std::string PurpleReader::ui() {
  if (!ui_) ui_ = tryRead([&] { return client_.call<std::string>("PurpleCoreGetUi"); });
  return ui_.value_or("");
}

bool PurpleReader::isContact(PurpleID node) {
  try {
    return flag(client_.integer("PurpleBlistNodeIsContact", node));
  } catch (const PurpleReplyError&) {
    return false;
  }
}

}  // namespace kibpurple
