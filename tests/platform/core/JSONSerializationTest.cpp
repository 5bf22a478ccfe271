#include <gtest/gtest.h>

#include "platform/core/JSONSerialization.h"

using platform::JSONSerialization;

namespace {

std::string nested(int depth, const std::string& inner = "0") {
  return std::string(static_cast<std::size_t>(depth), '[') + inner + std::string(static_cast<std::size_t>(depth), ']');
}

TEST(JSONSerializationTest, EveryReaderSharesTheNestingAndNumberLimits) {
  struct Case {
    std::string text;
    std::string error;  // "" when the text is accepted
  };
  const std::vector<Case> cases{
      {nested(128), ""},
      {nested(129), "line 1, column 129: nested deeper than 128 levels"},
      {"{\"a\":\n  " + nested(200) + "}", "line 2, column 130: nested deeper than 128 levels"},
      {R"({"deep": ")" + std::string(500, '[') + R"("})", ""},  // brackets in a string are text
      {R"(["\"[[[", 1])", ""},
      {"[1e308, -1e308, 1e-400, 123456789012345678901234567890]", ""},
      {"{\"at\": 1e400}", "line 1, column 8: the number 1e400 is out of range"},
      {"[-1E+999]", "line 1, column 2: the number -1E+999 is out of range"},
      {"[" + std::string(400, '9') + "]", "line 1, column 2: the number " + std::string(400, '9') + " is out of range"},
      {"[1, 2",
       "parse error at line 1, column 6: syntax error while parsing array - unexpected end of input; expected "
       "']'"},
  };
  for (const auto& c : cases) {
    std::string error;
    auto parsed = JSONSerialization::parse(c.text, &error);
    EXPECT_EQ(parsed.has_value(), c.error.empty()) << c.text.substr(0, 60);
    EXPECT_EQ(error, c.error) << c.text.substr(0, 60);
  }
}

TEST(JSONSerializationTest, ADeepValueWithinTheLimitConvertsBothWays) {
  auto json = JSONSerialization::parse(nested(127, R"({"k": "v"})"), nullptr);  // 128 levels with the object
  ASSERT_TRUE(json);
  std::string error;
  auto back = JSONSerialization::JSONWithObject(JSONSerialization::objectWithJSON(*json), &error);
  ASSERT_TRUE(back) << error;
  EXPECT_EQ(*back, *json);
}

}  // namespace
