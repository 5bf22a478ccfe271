#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <ctime>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/core/Array.h"
#include "platform/core/Date.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Number.h"
#include "platform/core/Preferences.h"
#include "platform/core/String.h"
#include "tests/support/PlatformTest.h"
#include "tests/support/ScopedVariable.h"

using namespace platform;
using kibtest::ScopedVariable;
namespace fs = std::filesystem;

namespace {

const std::string kDomain = "com.example.prefs";

void writeFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class PreferencesTest : public kibtest::PlatformTest {
 protected:
  fs::path file() const { return Preferences::fileForDomain(kDomain); }
  // Forgets everything cached, as a fresh process would.
  void restart() { Preferences::setDirectory(tempDir / "prefs"); }
  ObjectPtr copy(const std::string& key) { return Preferences::copyAppValue(key, kDomain); }
  void set(const std::string& key, ObjectPtr value) { Preferences::setAppValue(key, std::move(value), kDomain); }
  nlohmann::json onDisk() const { return nlohmann::json::parse(readFile(file())); }
  std::vector<std::string> systemLog() const { return linesOf(Log::Channel::System); }
};

TEST_F(PreferencesTest, EveryValueTypeSurvivesSynchronizeAndANewProcess) {
  auto nested = makeDictionary({{"inner", std::make_shared<Array>(std::vector<ObjectPtr>{makeNumber(1), makeString("two")})}});
  set("string", makeString("Ambrel ☕"));
  set("integer", makeNumber(std::int64_t{1} << 40));
  set("real", makeNumber(2.5));
  set("flag", makeNumber(true));
  set("list", std::make_shared<Array>(std::vector<ObjectPtr>{makeString("Buddies"), makeNumber(false)}));
  set("dictionary", nested);

  EXPECT_FALSE(fs::exists(file())) << "nothing is written before synchronize";
  EXPECT_EQ(stringValue(copy("string")), "Ambrel ☕") << "an unsynchronized change is visible to its process";
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_EQ(onDisk()["flag"], nlohmann::json(true)) << "booleans are JSON booleans";
  EXPECT_EQ(onDisk()["dictionary"]["inner"][1], "two");

  restart();
  EXPECT_EQ(stringValue(copy("string")), "Ambrel ☕");
  auto integer = std::dynamic_pointer_cast<Number>(copy("integer"));
  ASSERT_TRUE(integer);
  EXPECT_EQ(integer->longLongValue(), std::int64_t{1} << 40);
  EXPECT_DOUBLE_EQ(std::dynamic_pointer_cast<Number>(copy("real"))->doubleValue(), 2.5);
  auto flag = std::dynamic_pointer_cast<Number>(copy("flag"));
  ASSERT_TRUE(flag);
  EXPECT_TRUE(flag->isBool() && flag->boolValue());
  auto list = std::dynamic_pointer_cast<Array>(copy("list"));
  ASSERT_TRUE(list);
  ASSERT_EQ(list->count(), 2u);
  EXPECT_TRUE(std::dynamic_pointer_cast<Number>(list->at(1))->isBool());
  EXPECT_TRUE(isEqual(copy("dictionary"), nested));

  // Answers are copies: changing one changes nothing stored.
  list->add(makeString("extra"));
  EXPECT_EQ(std::dynamic_pointer_cast<Array>(copy("list"))->count(), 2u);

  set("string", nullptr);
  EXPECT_EQ(copy("string"), nullptr) << "a pending removal hides the stored value";
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_FALSE(onDisk().contains("string"));
  EXPECT_TRUE(onDisk().contains("integer"));
  EXPECT_TRUE(systemLog().empty());
}

TEST_F(PreferencesTest, AValueWrittenByAnotherProcessIsSeenByTheNextRead) {
  set("DefaultServiceName", makeString("AIM"));
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "AIM");

  // Same size, written within the same instant: only the bytes differ.
  writeFile(file(), R"({"DefaultServiceName": "XMP"})");
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "XMP");
  writeFile(file(), R"({"DefaultServiceName": "ABC"})");
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "ABC");

  // A local change wins for its key until it is written; the other process's keys are kept.
  set("DefaultServiceName", makeString("Jabber"));
  writeFile(file(), R"({"DefaultServiceName": "AIM", "Other": 7})");
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "Jabber");
  EXPECT_EQ(integerValue(copy("Other").get()), 7);
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_EQ(onDisk(), nlohmann::json::parse(R"({"DefaultServiceName": "Jabber", "Other": 7})"));

  fs::remove(file());
  EXPECT_EQ(copy("DefaultServiceName"), nullptr) << "a deleted file reads as empty";
  EXPECT_TRUE(systemLog().empty());
}

TEST_F(PreferencesTest, ACrashBeforeTheRenameLeavesTheOldPreferencesReadable) {
  set("DefaultServiceName", makeString("AIM"));
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  const std::string written = readFile(file());

  // What a writer that died between writing its temporary file and renaming it leaves behind.
  fs::path ours = file();
  ours += ".tmp-" + std::to_string(getpid());
  fs::path someoneElses = file();
  someoneElses += ".tmp-1";
  writeFile(ours, R"({"DefaultServiceName": "Jab)");
  writeFile(someoneElses, "garbage");

  restart();
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "AIM");
  EXPECT_EQ(readFile(file()), written);

  set("DefaultServiceName", makeString("Jabber"));
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_EQ(onDisk()["DefaultServiceName"], "Jabber");
  EXPECT_FALSE(fs::exists(ours)) << "the temporary file became the preferences file";
  EXPECT_TRUE(fs::exists(someoneElses)) << "a running writer's file is left alone";
  EXPECT_TRUE(systemLog().empty());
}

TEST_F(PreferencesTest, TemporaryFilesOfWritersThatNoLongerRunAreRemoved) {
  const pid_t gone = fork();
  ASSERT_GE(gone, 0);
  if (gone == 0) _exit(0);
  ASSERT_EQ(waitpid(gone, nullptr, 0), gone);
  fs::path stale = file();
  stale += ".tmp-" + std::to_string(gone);
  fs::path unrelated = file();
  unrelated += ".tmp-notes";
  writeFile(stale, R"({"DefaultServiceName": "Jab)");
  writeFile(unrelated, "mine");
  writeFile(file(), R"({"DefaultServiceName": "AIM"})");

  restart();
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "AIM");
  EXPECT_FALSE(fs::exists(stale));
  EXPECT_TRUE(fs::exists(unrelated)) << "only names a writer makes are touched";
}

TEST_F(PreferencesTest, AnUnchangedFileIsReadOnce) {
  // An old file: its times are settled, so its identity tells writes apart.
  auto age = [&](long seconds) {
    const timespec times[2] = {{0, UTIME_OMIT}, {::time(nullptr) - seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, file().c_str(), times, 0), 0);
  };
  writeFile(file(), R"({"DefaultServiceName": "AIM", "Filler": ")" + std::string(1 << 20, 'x') + "\"}");
  age(3600);
  const auto before = Preferences::diskReadCount();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(stringValue(copy("DefaultServiceName")), "AIM");
  EXPECT_EQ(Preferences::diskReadCount() - before, 1u);

  // Rewritten in place at the same size and stamped with the same old time: its change time still tells.
  writeFile(file(), R"({"DefaultServiceName": "XMP", "Filler": ")" + std::string(1 << 20, 'x') + "\"}");
  age(3600);
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "XMP");
  EXPECT_EQ(Preferences::diskReadCount() - before, 2u);
}

TEST_F(PreferencesTest, HostileFilesAreKeptAsideNotFollowed) {
  struct Case {
    std::string name;
    std::string text;
    std::string reason;
  };
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  const std::vector<Case> cases{
      {"deep under the key", R"({"DefaultServiceName": )" + deep + "}", "nested deeper than 128 levels"},
      {"deep under another key", R"({"DefaultServiceName": "AIM", "x": )" + deep + "}",
       "nested deeper than 128 levels"},
      {"a number past a double", R"({"DefaultServiceName": 1e400})", "the number 1e400 is out of range"},
      {"too large", std::string(17 << 20, ' '), "too large (more than 16 MiB)"},
  };
  int corrupt = 0;
  for (const auto& c : cases) {
    restart();
    writeFile(file(), c.text);
    EXPECT_EQ(copy("DefaultServiceName"), nullptr) << c.name;
    fs::path aside = file();
    aside += corrupt == 0 ? std::string(".corrupt") : ".corrupt-" + std::to_string(corrupt);
    ++corrupt;
    EXPECT_EQ(fs::file_size(aside), c.text.size()) << c.name << ": nothing is lost";
    ASSERT_EQ(systemLog().size(), static_cast<std::size_t>(corrupt)) << c.name;
    EXPECT_NE(systemLog().back().find(c.reason), std::string::npos) << systemLog().back();
  }
}

TEST_F(PreferencesTest, ACorruptFileReadsAsEmptyIsKeptAsideAndReportedOnce) {
  writeFile(file(), "{\"DefaultServiceName\": ");
  fs::path aside = file();
  aside += ".corrupt";

  EXPECT_EQ(copy("DefaultServiceName"), nullptr);
  EXPECT_EQ(copy("DefaultServiceName"), nullptr);
  ASSERT_EQ(systemLog().size(), 1u);
  EXPECT_NE(systemLog()[0].find(file().string()), std::string::npos) << systemLog()[0];
  EXPECT_NE(systemLog()[0].find(aside.string()), std::string::npos) << systemLog()[0];
  EXPECT_EQ(readFile(aside), "{\"DefaultServiceName\": ");

  set("DefaultServiceName", makeString("AIM"));
  ASSERT_TRUE(Preferences::appSynchronize(kDomain));
  EXPECT_EQ(onDisk()["DefaultServiceName"], "AIM");
  EXPECT_EQ(readFile(aside), "{\"DefaultServiceName\": ") << "the kept copy survives a later write";

  // Valid JSON that is not an object is damage too; the first kept copy is not replaced.
  writeFile(file(), "[1, 2]");
  EXPECT_EQ(copy("DefaultServiceName"), nullptr);
  fs::path secondAside = file();
  secondAside += ".corrupt-1";
  EXPECT_EQ(readFile(secondAside), "[1, 2]");
  EXPECT_EQ(readFile(aside), "{\"DefaultServiceName\": ");
  EXPECT_EQ(systemLog().size(), 2u);
}

TEST_F(PreferencesTest, ALogSinkMayUseThePreferencesWhileAProblemIsReported) {
  set("Transcript", makeString("on"));
  std::vector<std::string> seen;
  Log::Sink previous;
  previous = Log::setSink([&](Log::Channel channel, const std::string& line) {
    seen.push_back(stringValue(Preferences::copyAppValue("Transcript", kDomain)));
    previous(channel, line);
  });
  writeFile(file(), "not json");
  EXPECT_EQ(copy("Missing"), nullptr);
  Log::setSink(previous);
  EXPECT_EQ(seen, std::vector<std::string>{"on"});
  EXPECT_EQ(systemLog().size(), 1u);
}

TEST_F(PreferencesTest, AFileThatCannotBeReadIsNeverWrittenOver) {
  fs::create_directories(file());  // a folder where the file should be
  fs::create_directories(file() / "keep");

  EXPECT_EQ(copy("DefaultServiceName"), nullptr);
  EXPECT_EQ(copy("DefaultServiceName"), nullptr);
  ASSERT_EQ(systemLog().size(), 1u) << "a lasting problem is reported once";
  EXPECT_NE(systemLog()[0].find(file().string()), std::string::npos);

  set("DefaultServiceName", makeString("AIM"));
  EXPECT_FALSE(Preferences::appSynchronize(kDomain));
  EXPECT_TRUE(fs::is_directory(file() / "keep"));
  EXPECT_EQ(stringValue(copy("DefaultServiceName")), "AIM") << "the change stays pending";

  fs::remove_all(file());
  EXPECT_TRUE(Preferences::appSynchronize(kDomain)) << "once the obstacle is gone the pending change is written";
  EXPECT_EQ(onDisk()["DefaultServiceName"], "AIM");
}

TEST_F(PreferencesTest, BadDomainsAndValuesAreReportedAndChangeNothing) {
  set("kept", makeString("yes"));
  set("kept", std::make_shared<Date>(0.0));
  set("kept", std::make_shared<Array>(std::vector<ObjectPtr>{makeNumber(std::nan(""))}));
  set("kept", makeString("\xC3("));
  EXPECT_EQ(stringValue(copy("kept")), "yes");
  EXPECT_EQ(systemLog().size(), 3u);

  for (const std::string& domain : {std::string(""), std::string(".."), std::string("a/b")}) {
    Preferences::setAppValue("key", makeString("value"), domain);
    EXPECT_EQ(Preferences::copyAppValue("key", domain), nullptr);
    EXPECT_FALSE(Preferences::appSynchronize(domain));
  }
  EXPECT_EQ(systemLog().size(), 12u);
  EXPECT_FALSE(fs::exists(tempDir / "a"));
  EXPECT_NE(systemLog().back().find("\"a/b\""), std::string::npos) << systemLog().back();
}

TEST_F(PreferencesTest, TheWriteObserverSeesEachRealWrite) {
  std::vector<std::pair<std::string, fs::path>> writes;
  Preferences::setWriteObserver([&](const std::string& domain, const fs::path& path) { writes.emplace_back(domain, path); });

  EXPECT_TRUE(Preferences::appSynchronize(kDomain));
  set("a", makeNumber(1));
  EXPECT_TRUE(Preferences::appSynchronize(kDomain));
  set("a", makeNumber(1));
  EXPECT_TRUE(Preferences::appSynchronize(kDomain)) << "setting the stored value again writes nothing";
  Preferences::setWriteObserver(nullptr);
  set("a", makeNumber(2));
  EXPECT_TRUE(Preferences::appSynchronize(kDomain));

  ASSERT_EQ(writes.size(), 1u);
  EXPECT_EQ(writes[0].first, kDomain);
  EXPECT_EQ(writes[0].second, file());
}

TEST_F(PreferencesTest, TheDefaultDirectoryFollowsTheEnvironment) {
  EXPECT_EQ(Preferences::directory(), tempDir / "prefs");
  Preferences::setDirectory({});
  ScopedVariable home("HOME", "/home/someone");
  ScopedVariable xdg("XDG_CONFIG_HOME", nullptr);
  ScopedVariable own("KIBBAR_CONFIG_DIR", nullptr);
  EXPECT_EQ(Preferences::directory(), fs::path("/home/someone/.config/kibbar"));
  {
    ScopedVariable relative("XDG_CONFIG_HOME", "relative/config");
    EXPECT_EQ(Preferences::directory(), fs::path("/home/someone/.config/kibbar")) << "a relative XDG path is ignored";
  }
  ScopedVariable config("XDG_CONFIG_HOME", "/xdg");
  EXPECT_EQ(Preferences::directory(), fs::path("/xdg/kibbar"));
  EXPECT_EQ(Preferences::fileForDomain("com.velmo.kibbar"), fs::path("/xdg/kibbar/com.velmo.kibbar.json"));
  ScopedVariable explicitDirectory("KIBBAR_CONFIG_DIR", "/elsewhere");
  EXPECT_EQ(Preferences::directory(), fs::path("/elsewhere"));
}

}  // namespace
