#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/ui/MessagingURL.h"

using platform::MessagingURL;

namespace {

TEST(MessagingURLTest, ReadsTheCommandAndDecodedParameters) {
  struct Case {
    std::string url;
    std::optional<std::string> command;  // nothing: not the application's URL
    std::string name;
    std::optional<std::string> value;
  };
  const Case cases[] = {
      {"Parlo:compose?service=Jabber&id=a%40b%20c&style=IM", "compose", "id", "a@b c"},
      {"PARLO:compose?service=AIM", "compose", "service", "AIM"},  // the scheme in any case
      {"parlo:openbuddylist?service=", "openbuddylist", "service", ""},
      {"Parlo:compose?service=AIM", "compose", "style", std::nullopt},
      {"Parlo:compose?id=%4", "compose", "id", "%4"},           // a broken escape stays
      {"Parlo:compose?id=%zz%41", "compose", "id", "%zzA"},     // so does a non-hex one
      {"Parlo:compose?id=%c3%A9", "compose", "id", "\xC3\xA9"},  // hex digits in either case
      {"Parlo:compose?style&id=x", "compose", "style", ""},      // a name without "="
      {"Parlo:compose?id=first&id=second", "compose", "id", "first"},
      {"Parlo:compose?identity=x", "compose", "id", std::nullopt},  // whole names only
      {"Parlo:compose", "compose", "id", std::nullopt},
      {"Parlo:", "", "id", std::nullopt},
      {"Parl", std::nullopt, "", std::nullopt},
      {"mailto:alex@example.com", std::nullopt, "", std::nullopt},
      {" Parlo:compose", std::nullopt, "", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.url);
    auto parsed = MessagingURL::parse(c.url);
    ASSERT_EQ(parsed.has_value(), c.command.has_value());
    if (!parsed) continue;
    EXPECT_EQ(parsed->command(), *c.command);
    EXPECT_EQ(parsed->parameter(c.name), c.value);
  }
}

TEST(MessagingURLTest, AnEscapedValueReadsBackAsWritten) {
  EXPECT_EQ(MessagingURL::escaped("alex smith@example.com"), "alex%20smith%40example.com");
  EXPECT_EQ(MessagingURL::escaped("A-z.0_9~"), "A-z.0_9~");
  EXPECT_EQ(MessagingURL::escaped("Ren\xC3\xA9"), "Ren%C3%A9");
  std::string everyByte;
  for (int c = 1; c < 256; ++c) everyByte += static_cast<char>(c);
  for (const std::string& value : {std::string(), std::string("a&b=c?d%41"), everyByte}) {
    auto parsed = MessagingURL::parse("Parlo:compose?id=" + MessagingURL::escaped(value) + "&style=IM");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->parameter("id"), value);
    EXPECT_EQ(parsed->parameter("style"), "IM");
  }
}

}  // namespace
