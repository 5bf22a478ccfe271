#include <gtest/gtest.h>

#include "platform/im/IMPersonStatus.h"

using namespace platform;

TEST(IMPersonStatusTest, OnlineMeansIdleAwayOrAvailable) {
  EXPECT_FALSE(IMPersonStatusIsOnline(kIMPersonStatusUnknown));
  EXPECT_FALSE(IMPersonStatusIsOnline(kIMPersonStatusOffline));
  EXPECT_TRUE(IMPersonStatusIsOnline(kIMPersonStatusIdle));
  EXPECT_TRUE(IMPersonStatusIsOnline(kIMPersonStatusAway));
  EXPECT_TRUE(IMPersonStatusIsOnline(kIMPersonStatusAvailable));
  EXPECT_FALSE(IMPersonStatusIsOnline(kIMPersonStatusNoStatus));
  EXPECT_FALSE(IMPersonStatusIsOnline(17));
}

TEST(IMPersonStatusTest, ComparisonFollowsAvailabilityOrder) {
  // Most available first.
  const IMPersonStatus order[] = {kIMPersonStatusAvailable, kIMPersonStatusAway,    kIMPersonStatusIdle,
                                  kIMPersonStatusNoStatus,  kIMPersonStatusOffline, kIMPersonStatusUnknown};
  for (std::size_t i = 0; i < 6; ++i)
    for (std::size_t j = 0; j < 6; ++j) {
      int expected = i < j ? 1 : i > j ? -1 : 0;
      EXPECT_EQ(IMComparePersonStatus(order[i], order[j]), expected) << order[i] << " vs " << order[j];
    }
  EXPECT_EQ(IMComparePersonStatus(42, kIMPersonStatusUnknown), 0);
  EXPECT_EQ(IMComparePersonStatus(42, kIMPersonStatusOffline), -1);
}
