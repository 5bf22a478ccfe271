#include <gtest/gtest.h>

#include "platform/core/Array.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Format.h"
#include "platform/core/Number.h"
#include "platform/core/String.h"

using namespace platform;

TEST(Format, EachSpecifier) {
  EXPECT_EQ(format("%@ and %@", makeString("Alex"), ObjectPtr()), "Alex and (null)");
  EXPECT_EQ(format("%d %i", -3, 7), "-3 7");
  EXPECT_EQ(format("%d", 4294967297LL), "1") << "%d narrows to 32 bits";
  EXPECT_EQ(format("%ld %lu", -4294967297LL, 4294967297ULL), "-4294967297 4294967297");
  EXPECT_EQ(format("%u", -1), "4294967295");
  EXPECT_EQ(format("%x", 255), "ff");
  EXPECT_EQ(format("%f", 0.0), "0.000000");
  EXPECT_EQ(format("RealDuration: %f", 1.5), "RealDuration: 1.500000");
  EXPECT_EQ(format("%.2f", 3.14159), "3.14");
  EXPECT_EQ(format("%s!", "hi"), "hi!");
  EXPECT_EQ(format("100%%"), "100%");
  EXPECT_EQ(format("%5d|%-3s|", 42, "a"), "   42|a  |");
  EXPECT_EQ(format("(%@", makeNumber(3)), "(3");
  EXPECT_EQ(format("missing %d %@"), "missing 0 (null)");
  EXPECT_EQ(format("%q odd"), "%q odd") << "an unknown specifier is copied";
}

TEST(Format, CollectionsDescribeThemselves) {
  std::vector<std::shared_ptr<String>> names{makeString("a"), makeString("b")};
  EXPECT_EQ(format("%@", names), "(\n    a,\n    b\n)");
  EXPECT_EQ(format("%@", std::make_shared<Array>()), "(\n)");
  auto dictionary = makeDictionary({{"k", makeNumber(true)}});
  EXPECT_EQ(format("%@", dictionary), "{\n    k = 1;\n}");
}

TEST(Objects, EqualityIsByContentForValuesAndByIdentityOtherwise) {
  EXPECT_TRUE(isEqual(makeString("x"), makeString("x")));
  EXPECT_FALSE(isEqual(makeString("x"), ObjectPtr()));
  EXPECT_TRUE(isEqual(ObjectPtr(), ObjectPtr()));
  EXPECT_TRUE(isEqual(makeNumber(1), makeNumber(1.0)));
  EXPECT_EQ(makeNumber(-7)->intValue(), -7);
  EXPECT_EQ(integerValue(makeString("12").get()), 12);
  auto a = std::make_shared<Array>(std::vector<ObjectPtr>{makeString("x")});
  auto b = std::make_shared<Array>(std::vector<ObjectPtr>{makeString("x")});
  EXPECT_TRUE(a->isEqual(b.get()));
  EXPECT_TRUE(a->containsObject(makeString("x").get()));
  EXPECT_EQ(makeString("s")->className(), "String");
  EXPECT_EQ(stringValue(makeNumber(3)), "");
}
