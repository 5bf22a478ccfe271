#include <gtest/gtest.h>

#include "platform/im/IMConstants.h"
#include "purple/PurpleMapping.h"

namespace {

using kibpurple::PurpleMapping;
using kibpurple::PurplePrimitive;

TEST(PurpleMappingTest, ProtocolsBecomeServices) {
  struct Case {
    const char *protocol, *protocolName, *name, *shortName;
  };
  for (const auto& c : {Case{"prpl-aim", "AIM", "AIM", "AIM"}, Case{"prpl-bonjour", "Bonjour", "SubNet", "Ambrel"},
                        Case{"prpl-jabber", "XMPP", "Jabber", "Jabber"}, Case{"prpl-irc", "IRC", "IRC", "IRC"},
                        Case{"prpl-mystery", "", "prpl-mystery", "prpl-mystery"}}) {
    auto names = PurpleMapping::serviceForProtocol(c.protocol, c.protocolName);
    EXPECT_EQ(names.name, c.name) << c.protocol;
    EXPECT_EQ(names.internalName, c.name) << c.protocol;
    EXPECT_EQ(names.shortName, c.shortName) << c.protocol;
  }
}

TEST(PurpleMappingTest, PrimitivesBecomePersonStatuses) {
  struct Case {
    int wire;
    bool online, idle;
    platform::IMPersonStatus buddy, account;
  };
  using namespace platform;
  const Case cases[] = {
      {0, true, false, kIMPersonStatusUnknown, kIMPersonStatusUnknown},
      {1, true, false, kIMPersonStatusOffline, kIMPersonStatusOffline},
      {2, true, false, kIMPersonStatusAvailable, kIMPersonStatusAvailable},
      {2, true, true, kIMPersonStatusIdle, kIMPersonStatusAvailable},
      {2, false, false, kIMPersonStatusOffline, kIMPersonStatusAvailable},
      {3, true, false, kIMPersonStatusAway, kIMPersonStatusAway},
      {4, true, false, kIMPersonStatusOffline, kIMPersonStatusAvailable},
      {5, true, true, kIMPersonStatusAway, kIMPersonStatusAway},
      {6, true, false, kIMPersonStatusAway, kIMPersonStatusAway},
      {7, true, false, kIMPersonStatusAvailable, kIMPersonStatusAvailable},
      {9, true, true, kIMPersonStatusIdle, kIMPersonStatusAvailable},
  };
  for (const auto& c : cases) {
    auto primitive = PurpleMapping::primitiveFromWire(c.wire);
    ASSERT_TRUE(primitive) << c.wire;
    EXPECT_EQ(PurpleMapping::buddyStatus(c.online, *primitive, c.idle), c.buddy) << c.wire;
    EXPECT_EQ(PurpleMapping::accountStatus(*primitive), c.account) << c.wire;
  }
  EXPECT_FALSE(PurpleMapping::primitiveFromWire(-1));
  EXPECT_FALSE(PurpleMapping::primitiveFromWire(10));
}

TEST(PurpleMappingTest, RequestsCapabilitiesAndURLs) {
  using namespace platform;
  EXPECT_EQ(PurpleMapping::primitiveForRequest(kIMPersonStatusAvailable, false), PurplePrimitive::Available);
  EXPECT_EQ(PurpleMapping::primitiveForRequest(kIMPersonStatusAway, false), PurplePrimitive::Away);
  EXPECT_EQ(PurpleMapping::primitiveForRequest(kIMPersonStatusAway, true), PurplePrimitive::Invisible);
  EXPECT_EQ(PurpleMapping::primitiveForRequest(kIMPersonStatusOffline, true), PurplePrimitive::Offline);

  kibpurple::PurpleAccountRecord account;
  EXPECT_EQ(PurpleMapping::accountCapabilities(account), kIMAccountCapabilityTextChat | kIMAccountCapabilityBuddyList);
  account.offersInvisible = true;
  EXPECT_TRUE(PurpleMapping::accountCapabilities(account) & kIMAccountCapabilityInvisibleLogin);

  EXPECT_TRUE(PurpleMapping::hasAudio(0x10) && PurpleMapping::hasVideo(0x10));
  EXPECT_TRUE(PurpleMapping::hasAudio(0x1) && !PurpleMapping::hasVideo(0x1));
  EXPECT_TRUE(!PurpleMapping::hasAudio(0x4) && PurpleMapping::hasVideo(0x4));
  EXPECT_EQ(PurpleMapping::vcCapabilitiesForUI("gnt-purple"), 0u);
}

}  // namespace
