#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/im/IMPersonStatus.h"
#include "purple/PurpleRecords.h"

namespace kibpurple {

// The one place where libpurple's vocabulary meets the platform's
// (docs/purple.md lists every rule).
class PurpleMapping {
 public:
  struct ServiceNames {
    std::string name;
    std::string internalName;
    std::string shortName;
  };

  // prpl-aim -> AIM, prpl-bonjour -> the local-network service, prpl-jabber ->
  // Jabber; any other protocol a service of its own named after the protocol.
  static ServiceNames serviceForProtocol(const std::string& protocolID, const std::string& protocolName);

  // A primitive as libpurple sends it: values outside the enumeration are nothing.
  static std::optional<PurplePrimitive> primitiveFromWire(std::int32_t value);

  // A buddy's status on the person-status scale.
  static platform::IMPersonStatus buddyStatus(bool online, PurplePrimitive primitive, bool idle);
  // The user's own status on an account; an invisible user reads as available.
  static platform::IMPersonStatus accountStatus(PurplePrimitive primitive);

  // The primitive a status request activates.
  static PurplePrimitive primitiveForRequest(platform::IMPersonStatus status, bool invisible);

  // Account capabilities: text chats and a buddy list for every protocol,
  // invisible login where the protocol offers an invisible status.
  static std::uint64_t accountCapabilities(const PurpleAccountRecord& account);

  static bool hasAudio(std::int32_t mediaCaps);
  static bool hasVideo(std::int32_t mediaCaps);

  // The listener's audio/video capabilities for the client's user interface
  // ("gtk-gaim": Pidgin with its media window; anything else: none).
  static std::uint64_t vcCapabilitiesForUI(const std::string& ui);
};

}  // namespace kibpurple
