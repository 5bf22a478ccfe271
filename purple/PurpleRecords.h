#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kibpurple {

// libpurple's object handles on the bus: int32, 0 for none.
using PurpleID = std::int32_t;

// libpurple's PurpleStatusPrimitive.
enum class PurplePrimitive : std::int32_t {
  Unset = 0,
  Offline = 1,
  Available = 2,
  Unavailable = 3,
  Invisible = 4,
  Away = 5,
  ExtendedAway = 6,
  Mobile = 7,
  Tune = 8,
  Mood = 9,
};

// libpurple's PurpleMediaCaps bits.
inline constexpr std::int32_t kPurpleMediaCapsAudio = 0x1;
inline constexpr std::int32_t kPurpleMediaCapsVideo = 0x4;
inline constexpr std::int32_t kPurpleMediaCapsAudioVideo = 0x10;
// PurpleMediaSessionType: send and receive.
inline constexpr std::int32_t kPurpleMediaAudio = 0x1 | 0x2;
inline constexpr std::int32_t kPurpleMediaVideo = 0x4 | 0x8;
// PurpleConversationType.
inline constexpr std::int32_t kPurpleConversationIM = 1;

// One account as the client reports it.
struct PurpleAccountRecord {
  PurpleID id = 0;
  std::string username;
  std::string protocolID;    // "prpl-jabber"
  std::string protocolName;  // "XMPP"
  bool enabled = false;
  bool connected = false;
  bool connecting = false;
  PurplePrimitive primitive = PurplePrimitive::Unset;
  std::string message;
  bool offersInvisible = false;  // the protocol has an invisible status type
};

// One buddy (a screen name on one account's buddy list).
struct PurpleBuddyRecord {
  PurpleID id = 0;
  PurpleID account = 0;
  PurpleID contact = 0;
  std::string name;
  std::string alias;
  std::string group;
  bool online = false;
  PurplePrimitive primitive = PurplePrimitive::Offline;
  std::string message;
  bool idle = false;
  std::int64_t idleSince = 0;  // seconds since 1970, 0 unknown
  std::int32_t mediaCaps = 0;
};

// One saved status.
struct PurpleSavedStatusRecord {
  PurpleID id = 0;
  std::string title;
  PurplePrimitive primitive = PurplePrimitive::Unset;
  std::string message;
  bool transient = false;
};

}  // namespace kibpurple
