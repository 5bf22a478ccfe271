#include <gtest/gtest.h>

#include <random>

#include "platform/im/IMNameCollation.h"

using platform::IMNameCollation;

namespace {

TEST(IMNameCollationTest, NormalizedIDsFoldCaseAndDropSpacesWhateverTheirScript) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Big Bird", "bigbird"},  {" ME.Home ", "me.home"},       {"", ""},
      {"Zoë Ångström", "zoëångström"}, {"STRASSE ß", "strassess"}, {"ＳＡＭ", "ｓａｍ"},
      {"tab\there", "tab\there"}, {std::string("nul\0X", 5), std::string("nul\0x", 5)},
  };
  for (const auto& [id, normalized] : cases) EXPECT_EQ(IMNameCollation::normalizeID(id), normalized) << id;

  // An ASCII ID folds as it does with a non-ASCII letter beside it (which takes the full Unicode path).
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string id(random() % 12, ' ');
    for (auto& c : id) c = static_cast<char>(random() % 0x80);
    ASSERT_EQ(IMNameCollation::normalizeID(id) + "é", IMNameCollation::normalizeID(id + "é")) << id;
  }
}

}  // namespace
