#include "platform/core/TextServices.h"

#include <gtest/gtest.h>

#include "tests/support/ScopedVariable.h"

using namespace platform;

namespace {

using Parts = std::vector<std::string>;
constexpr unsigned kSearch = 385;

TEST(TextServicesTest, SearchIgnoresCaseDiacriticsAndWidth) {
  EXPECT_EQ(kSearch, kCaseInsensitiveSearch | kDiacriticInsensitiveSearch | kWidthInsensitiveSearch);
  EXPECT_TRUE(TextServices::contains("Renée", "e", kSearch));
  EXPECT_TRUE(TextServices::contains("Renée", "ENEE", kSearch));
  EXPECT_TRUE(TextServices::contains("Rene\u0301", "rene", kSearch)) << "decomposed accent";
  EXPECT_TRUE(TextServices::contains("Ａｌｅｘ", "alex", kSearch));
  EXPECT_TRUE(TextServices::contains("alex", "Ａｌｅｘ", kSearch));
  EXPECT_TRUE(TextServices::contains("alex", "ALEX", kSearch));
  EXPECT_TRUE(TextServices::contains("Straße", "STRASSE", kSearch));
  EXPECT_TRUE(TextServices::contains("Zoë Ångström", "zoe angs", kSearch));
  EXPECT_FALSE(TextServices::contains("Renée", "x", kSearch));
  EXPECT_FALSE(TextServices::contains("Renée", "", kSearch)) << "an empty needle never occurs";
  EXPECT_FALSE(TextServices::contains("", "", kSearch));
}

TEST(TextServicesTest, EachSearchOptionActsOnItsOwn) {
  const unsigned caseAndWidth = kCaseInsensitiveSearch | kWidthInsensitiveSearch;
  EXPECT_FALSE(TextServices::contains("\u00e9", "e", caseAndWidth)) << "precomposed é keeps its accent";
  EXPECT_FALSE(TextServices::contains("e\u0301", "e", caseAndWidth)) << "and so does a decomposed one";
  EXPECT_TRUE(TextServices::contains("\u00e9", "e\u0301", 0)) << "canonically equivalent forms match";
  EXPECT_TRUE(TextServices::contains("\u00e9", "e", kDiacriticInsensitiveSearch));
  EXPECT_FALSE(TextServices::contains("\u00c9", "e", kDiacriticInsensitiveSearch)) << "case still counts";

  EXPECT_TRUE(TextServices::contains("ALEX", "alex", kCaseInsensitiveSearch));
  EXPECT_FALSE(TextServices::contains("Ａｌｅｘ", "alex", kCaseInsensitiveSearch));
  EXPECT_TRUE(TextServices::contains("Ａｌｅｘ", "lex", kWidthInsensitiveSearch));
  EXPECT_FALSE(TextServices::contains("Ａｌｅｘ", "LEX", kWidthInsensitiveSearch));
  EXPECT_FALSE(TextServices::contains("ALEX", "alex", 0));
  EXPECT_TRUE(TextServices::contains("ALEX", "alex", kCaseInsensitiveSearch | 2 | 8)) << "other bits are ignored";
}

TEST(TextServicesTest, FoldedTextCanBeSearchedAgainAndAgain) {
  EXPECT_EQ(TextServices::fold("Renée", kSearch), "renee");
  EXPECT_EQ(TextServices::fold("Ａｌｅｘ", kSearch), "alex");
  EXPECT_EQ(TextServices::fold("Mixed Case 42", kSearch), "mixed case 42");
  EXPECT_EQ(TextServices::fold("Mixed", 0), "Mixed");
  EXPECT_EQ(TextServices::fold("\u00c5", kCaseInsensitiveSearch), "\u00e5");
  const std::string haystack = TextServices::fold("Jürgen Ｍüller", kSearch);
  EXPECT_TRUE(TextServices::containsFolded(haystack, TextServices::fold("MULLER", kSearch)));
  EXPECT_FALSE(TextServices::containsFolded(haystack, TextServices::fold("Mueller", kSearch)));
  EXPECT_FALSE(TextServices::containsFolded(haystack, ""));
}

TEST(TextServicesTest, SplitKeepsEmptyPartsAndTrimRemovesSpaceAndNewlines) {
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace("john smith"), (Parts{"john", "smith"}));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace("a  b"), (Parts{"a", "", "b"}));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace(""), (Parts{""}));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace(" a "), (Parts{"", "a", ""}));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace("a\tb\u00a0c\u3000d"), (Parts{"a", "b", "c", "d"}));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace("a\nb"), (Parts{"a\nb"})) << "newlines do not split";

  EXPECT_EQ(TextServices::trimWhitespace("  \t hi  there\n\r\n "), "hi  there");
  EXPECT_EQ(TextServices::trimWhitespace("\u3000\u2028Zoë\u00a0"), "Zoë");
  EXPECT_EQ(TextServices::trimWhitespace(" \n\t "), "");
  EXPECT_EQ(TextServices::trimWhitespace("plain"), "plain");

  EXPECT_EQ(TextServices::replaceNewlinesWithSpaces("a\r\nb\nc\rd\u2028e\u2029f\u0085g"), "a b c d e f g");
  EXPECT_EQ(TextServices::replaceNewlinesWithSpaces("\n\n"), "  ");
  EXPECT_EQ(TextServices::replaceNewlinesWithSpaces("Ünïcode stays"), "Ünïcode stays");
}

TEST(TextServicesTest, MalformedUTF8IsDetectedAndNeverStopsAnOperation) {
  EXPECT_TRUE(TextServices::isValidUTF8("Zoë ☕ \U0001F600"));
  EXPECT_FALSE(TextServices::isValidUTF8("\xC3("));
  EXPECT_FALSE(TextServices::isValidUTF8("ab\xE2\x98"));
  EXPECT_EQ(TextServices::componentsSeparatedByWhitespace("\xC3 x"), (Parts{"\xC3", "x"}));
  EXPECT_EQ(TextServices::fold("\xC3X\u00e9", kSearch), "\uFFFDxe");
}

TEST(TextServicesTest, ComparisonsOrderAsTheirNamesSay) {
  kibtest::ScopedVariable all("LC_ALL", "en_US.UTF-8");
  EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("avocado", "Banana"), -1);
  EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("ALEX", "alex"), 0);
  EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("éclair", "Zebra"), -1) << "é sorts with e";
  EXPECT_NE(TextServices::localizedCaseInsensitiveCompare("é", "e"), 0) << "accents count";
  EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("Zebra", "avocado"), 1);

  EXPECT_EQ(TextServices::caseInsensitiveCompare("ABC", "abd"), -1);
  EXPECT_EQ(TextServices::caseInsensitiveCompare("abc", "ABC"), 0);
  EXPECT_EQ(TextServices::caseInsensitiveCompare("abcd", "ABC"), 1);
  EXPECT_EQ(TextServices::caseInsensitiveCompare("Straße", "STRASSE"), 0);
  EXPECT_EQ(TextServices::caseInsensitiveCompare("éclair", "Zebra"), 1) << "by code point, é is after z";

  EXPECT_EQ(TextServices::compare("B", "a"), -1);
  EXPECT_EQ(TextServices::compare("a", "a"), 0);
  EXPECT_EQ(TextServices::compare("é", "z"), 1);
  EXPECT_EQ(TextServices::compare("a", ""), 1);
}

TEST(TextServicesTest, LocalizedComparisonFollowsTheLanguage) {
  {
    kibtest::ScopedVariable all("LC_ALL", "en_US.UTF-8");
    EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("ö", "z"), -1);
  }
  kibtest::ScopedVariable all("LC_ALL", "sv_SE.UTF-8");
  EXPECT_EQ(TextServices::localizedCaseInsensitiveCompare("ö", "z"), 1) << "Swedish puts ö after z";
}

}  // namespace
