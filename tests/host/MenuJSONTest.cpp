#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <sstream>

#include "host/MenuJSON.h"
#include "host/Transcript.h"
#include "tests/support/PlatformTest.h"

namespace {

using kibhost::MenuJSON;
using kibhost::Transcript;

// The description's one-line form as it was first written, with regular expressions.
std::string literalOneLine(const std::string& description) {
  static const std::regex address(R"(:? ?0x[0-9a-fA-F]+)");
  static const std::regex whitespace(R"(\s+)");
  auto text = std::regex_replace(description, address, "");
  text = std::regex_replace(text, whitespace, " ");
  const auto begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

class Described : public platform::Object {
 public:
  explicit Described(std::string text) : text_(std::move(text)) {}
  std::string description() const override { return text_; }
  std::string className() const override { return "Described"; }

 private:
  std::string text_;
};

TEST(MenuJSONTest, DescriptionsLoseTheirAddressesAndLineBreaksAsTheRegularExpressionsDid) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"<KibPeopleListItem: 0x55d0c0ffee10>", "<KibPeopleListItem>"},
      {"Item: 0xABCdef12 and 0x1", "Item and"},
      {"0x 0xg :0x :: 0x12", "0x 0xg :0x :"},
      {"a:  0x12", "a:"},
      {"0x0x12", "x12"},
      {"\n\t  Group: \"(null)\"\r\n  {(\n    ann,\n    bob\n)}\v\f ", "Group: \"(null)\" {( ann, bob )}"},
      {"Renée\xc2\xa0Ångström 0Xff", "Renée\xc2\xa0Ångström 0Xff"},
      {"   ", ""},
      {"", ""},
  };
  for (const auto& [description, expected] : cases) {
    EXPECT_EQ(MenuJSON::oneLineDescription(description), expected) << description;
    EXPECT_EQ(literalOneLine(description), expected) << description;
    const Described object(description);
    EXPECT_EQ(MenuJSON::object(&object), nlohmann::ordered_json(expected));
  }
  EXPECT_EQ(MenuJSON::object(nullptr), nullptr);

  // Random texts over the characters that matter.
  const std::string alphabet = ":: 00xxXaF9g\n\t\r\v\f\xc3\xa9";
  std::mt19937 random(15);
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 24, ' ');
    for (auto& c : text) c = alphabet[random() % alphabet.size()];
    ASSERT_EQ(MenuJSON::oneLineDescription(text), literalOneLine(text)) << '"' << text << '"';
  }
}

class TranscriptTest : public kibtest::PlatformTest {};

TEST_F(TranscriptTest, AnArrayWrittenElementByElementIsTheLineTheWholeArrayMakes) {
  const std::vector<Transcript::Fields> arrays = {
      Transcript::Fields::array(),
      {{{"index", 0}, {"title", "Zoë \"Z\" \\ Ｓａｍ"}, {"represented", nullptr}},
       {{"index", 1}, {"separator", true}}},
      {"invalid \xff UTF-8", 1.5, -0.0, Transcript::Fields::object(), Transcript::Fields::array()},
  };
  for (const auto& array : arrays) {
    for (const bool observed : {false, true}) {
      std::ostringstream whole, streamed;
      Transcript wholeTranscript(whole), streamedTranscript(streamed);
      std::vector<Transcript::Fields> seen;
      if (observed)
        streamedTranscript.setLineObserver([&seen](const Transcript::Fields& line) { seen.push_back(line); });
      advance(0.25);
      wholeTranscript.write("menu", {{"items", array}});
      streamedTranscript.writeWithArray("menu", "items", array.size(),
                                        [&array](std::size_t index) { return array.at(index); });
      EXPECT_EQ(streamed.str(), whole.str()) << array.dump();
      EXPECT_EQ(streamed.str().back(), '\n');
      if (observed) {
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[0]["items"], array);
        EXPECT_EQ(seen[0]["type"], "menu");
      }
    }
  }
}

}  // namespace
