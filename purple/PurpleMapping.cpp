#include "purple/PurpleMapping.h"

#include "platform/im/IMConstants.h"

namespace kibpurple {

PurpleMapping::ServiceNames PurpleMapping::serviceForProtocol(const std::string& protocolID,
                                                              const std::string& protocolName) {
  if (protocolID == "prpl-aim") return {"AIM", "AIM", "AIM"};
  if (protocolID == "prpl-bonjour") return {"SubNet", "SubNet", "Ambrel"};
  if (protocolID == "prpl-jabber") return {"Jabber", "Jabber", "Jabber"};
  const std::string name = protocolName.empty() ? protocolID : protocolName;
  return {name, name, name};
}

std::optional<PurplePrimitive> PurpleMapping::primitiveFromWire(std::int32_t value) {
  if (value < static_cast<std::int32_t>(PurplePrimitive::Unset) ||
      value > static_cast<std::int32_t>(PurplePrimitive::Mood))
    return std::nullopt;
  return static_cast<PurplePrimitive>(value);
}

platform::IMPersonStatus PurpleMapping::buddyStatus(bool online, PurplePrimitive primitive, bool idle) {
  if (!online) return platform::kIMPersonStatusOffline;
  switch (primitive) {
    case PurplePrimitive::Unset:
      return platform::kIMPersonStatusUnknown;
    case PurplePrimitive::Offline:
    case PurplePrimitive::Invisible:
      return platform::kIMPersonStatusOffline;
    case PurplePrimitive::Unavailable:
    case PurplePrimitive::Away:
    case PurplePrimitive::ExtendedAway:
      return platform::kIMPersonStatusAway;
    case PurplePrimitive::Available:
    case PurplePrimitive::Mobile:
    case PurplePrimitive::Tune:
    case PurplePrimitive::Mood:
      break;
  }
  return idle ? platform::kIMPersonStatusIdle : platform::kIMPersonStatusAvailable;
}

platform::IMPersonStatus PurpleMapping::accountStatus(PurplePrimitive primitive) {
  switch (primitive) {
    case PurplePrimitive::Unset:
      return platform::kIMPersonStatusUnknown;
    case PurplePrimitive::Offline:
      return platform::kIMPersonStatusOffline;
    case PurplePrimitive::Unavailable:
    case PurplePrimitive::Away:
    case PurplePrimitive::ExtendedAway:
      return platform::kIMPersonStatusAway;
    default:
      return platform::kIMPersonStatusAvailable;
  }
}

PurplePrimitive PurpleMapping::primitiveForRequest(platform::IMPersonStatus status, bool invisible) {
  if (status == platform::kIMPersonStatusOffline) return PurplePrimitive::Offline;
  if (invisible) return PurplePrimitive::Invisible;
  if (status == platform::kIMPersonStatusAway || status == platform::kIMPersonStatusIdle) return PurplePrimitive::Away;
  return PurplePrimitive::Available;
}

std::uint64_t PurpleMapping::accountCapabilities(const PurpleAccountRecord& account) {
  std::uint64_t capabilities = platform::kIMAccountCapabilityTextChat | platform::kIMAccountCapabilityBuddyList;
  if (account.offersInvisible) capabilities |= platform::kIMAccountCapabilityInvisibleLogin;
  return capabilities;
}

bool PurpleMapping::hasAudio(std::int32_t mediaCaps) {
  return (mediaCaps & (kPurpleMediaCapsAudio | kPurpleMediaCapsAudioVideo)) != 0;
}

bool PurpleMapping::hasVideo(std::int32_t mediaCaps) {
  return (mediaCaps & (kPurpleMediaCapsVideo | kPurpleMediaCapsAudioVideo)) != 0;
}

std::uint64_t PurpleMapping::vcCapabilitiesForUI(const std::string& ui) {
  if (ui != "gtk-gaim") return 0;
  return platform::kIMVCCapabilityConference | platform::kIMVCCapabilityCamera | platform::kIMVCCapabilityMicrophone;
}

}  // namespace kibpurple
