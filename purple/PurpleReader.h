#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "purple/PurpleClient.h"
#include "purple/PurpleComplaints.h"
#include "purple/PurpleRecords.h"

namespace kibpurple {

// Reads libpurple's objects into records and checks them: a record that
// cannot be read whole (a vanished id, a reply of the wrong type, a value
// outside libpurple's enumerations, an empty name) is complained about once
// and left out, never half-filled.
class PurpleReader {
 public:
  PurpleReader(PurpleClient& client, PurpleComplaints& complaints) : client_(client), complaints_(complaints) {}

  std::vector<PurpleID> accountIDs();
  // The buddies of one account, in blist order.
  std::vector<PurpleID> buddyIDs(PurpleID account);
  std::optional<PurpleAccountRecord> account(PurpleID id);
  std::optional<PurpleBuddyRecord> buddy(PurpleID id);
  // The saved statuses, unreadable ones left out.
  std::vector<PurpleSavedStatusRecord> savedStatuses();
  // The primitive of the client's current saved status; nothing when it cannot be read.
  std::optional<PurplePrimitive> currentSavedPrimitive();
  // The client's user-interface id ("gnt-purple", "gtk-gaim"), "" when unknown; asked once.
  std::string ui();
  // Whether a blist node is a contact; false when it cannot be told.
  bool isContact(PurpleID node);

 private:
  void skip(const PurpleReplyError& error);
  // What read answers, or nothing when a reply fails (complained about).
  template <class Read>
  std::optional<std::invoke_result_t<Read>> tryRead(Read read) {
    try {
      return read();
    } catch (const PurpleReplyError& error) {
      skip(error);
      return std::nullopt;
    }
  }
  // The active status's primitive and message.
  void readStatus(PurpleID status, PurplePrimitive& primitive, std::string& message);
  PurplePrimitive primitive(std::int32_t wire, const std::string& where);
  std::optional<PurpleSavedStatusRecord> savedStatus(PurpleID id);
  std::vector<PurpleID> validIDs(std::vector<PurpleID> ids, const std::string& where);

  PurpleClient& client_;
  PurpleComplaints& complaints_;
  std::optional<std::string> ui_;
};

}  // namespace kibpurple
