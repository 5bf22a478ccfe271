#include "platform/core/StringsTable.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

using namespace platform;

namespace {

using Entries = std::map<std::string, std::string>;

Entries parsed(const std::string& text) {
  std::string error;
  auto entries = StringsTable::parse(text, &error);
  EXPECT_TRUE(entries) << error;
  return entries.value_or(Entries{});
}

std::string failure(const std::string& text) {
  std::string error;
  auto entries = StringsTable::parse(text, &error);
  EXPECT_FALSE(entries) << text;
  return error;
}

TEST(StringsTableTest, ReadsEntriesCommentsAndEscapes) {
  Entries entries = parsed(
      "// Menu titles\n"
      "/* a block\n   comment */ \"Quote \\\"me\\\"\" = \"Tab\\tand\\nnew line\\r\";\n"
      "\"Show Buddy List\\\\U2026\" = \"Show Buddy List\\U2026\";\n"
      "\"caf\\u00e9\" = \"smile \\UD83D\\UDE00, back\\\\slash, it\\'s\";\n"
      "Unquoted_key.1 = value-2;\n"
      "\"Same\";\n"
      "\"Twice\" = \"first\"; \"Twice\" = \"second\";\n");
  EXPECT_EQ(entries, (Entries{{"Quote \"me\"", "Tab\tand\nnew line\r"},
                              {"Show Buddy List\\U2026", "Show Buddy List\u2026"},
                              {"caf\u00e9", "smile \U0001F600, back\\slash, it's"},
                              {"Unquoted_key.1", "value-2"},
                              {"Same", "Same"},
                              {"Twice", "second"}}));
  EXPECT_EQ(parsed(""), Entries{});
  EXPECT_EQ(parsed("  /* only a comment */ // and another"), Entries{});
}

TEST(StringsTableTest, ReadsUTF16AndDropsAByteOrderMark) {
  EXPECT_EQ(parsed("\xEF\xBB\xBF\"a\" = \"b\";"), (Entries{{"a", "b"}}));
  const char bytes[] = "\xFF\xFE\"\0a\0\"\0=\0\"\0\xE9\0\"\0;\0";
  const std::string utf16le(bytes, sizeof bytes - 1);
  EXPECT_EQ(parsed(utf16le), (Entries{{"a", "\u00e9"}}));
}

TEST(StringsTableTest, MalformedTextNamesTheLine) {
  EXPECT_EQ(failure("\"a\" = \"b\";\n\"c\" = \"d\"\n\"e\" = \"f\";"), "line 3: expected \";\" after the entry for \"c\"");
  EXPECT_EQ(failure("\"a\" = \"b\";\n\n\"c\" = \"unterminated;\n"), "line 3: unterminated string");
  EXPECT_EQ(failure("\"a\" = \"b\\q\";"), "line 1: unknown escape \"\\q\"");
  EXPECT_EQ(failure("\"a\" = \"\\U12\";"), "line 1: \\U escape needs four hexadecimal digits");
  EXPECT_EQ(failure("\"a\" = \"\\UD83D\";"), "line 1: \\U escape with a high surrogate not followed by a low one");
  EXPECT_EQ(failure("\"a\" = \"\\UDE00\";"), "line 1: \\U escape with a lone low surrogate");
  EXPECT_EQ(failure("\"a\" = \"b\";\n/* never closed"), "line 2: unterminated comment");
  EXPECT_EQ(failure("\"a\" = ;"), "line 1: expected a value after \"=\"");
  EXPECT_EQ(failure("\"a\" ="), "line 1: expected a value after \"=\" before the end of the file");
  EXPECT_EQ(failure("= \"b\";"), "line 1: expected a key");
  EXPECT_EQ(failure("\"a\" = \"b\";\n\"c\" = \"\xC3(\";"), "line 2: malformed UTF-8");
}

TEST(StringsTableTest, LoadNamesTheFileInItsErrors) {
  auto folder = std::filesystem::temp_directory_path() / ("kib-strings-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  auto path = (folder / "Broken.strings").string();
  std::ofstream(path) << "\"a\" = \"b\"";

  std::string error;
  EXPECT_FALSE(StringsTable::load(path, &error));
  EXPECT_EQ(error, path + ", line 1: expected \";\" after the entry for \"a\"");
  EXPECT_FALSE(StringsTable::load((folder / "Missing.strings").string(), &error));
  EXPECT_NE(error.find("Missing.strings"), std::string::npos) << error;

  std::ofstream(path) << "\"a\" = \"b\";";
  auto entries = StringsTable::load(path, &error);
  ASSERT_TRUE(entries);
  EXPECT_EQ(entries->at("a"), "b");
  std::filesystem::remove_all(folder);
}

}  // namespace
