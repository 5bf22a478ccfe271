#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMService.h"
#include "sim/ScenarioLoader.h"
#include "sim/SelfTestIdentities.h"
#include "sim/SimWorld.h"
#include "tests/sim/SimTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using sim::Scenario;
using sim::ScenarioError;
using sim::ScenarioLoader;

namespace {

class ScenarioLoaderTest : public kibtest::PlatformTest {
 protected:
  // The message a scenario text is refused with, or "" when it loads.
  static std::string refusal(const std::string& text) {
    try {
      ScenarioLoader::parse(text, "bad.json");
    } catch (const ScenarioError& error) {
      return error.what();
    }
    return "";
  }
};

}  // namespace

TEST_F(ScenarioLoaderTest, TheBuiltInScenarioIsTheExampleFileAndHoldsTheDefaultWorld) {
  std::ifstream file(simtest::sourceDir() / "examples" / "default-scenario.json");
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(ScenarioLoader::defaultScenarioText(), text.str());

  auto world = sim::SimWorld::makeDefault();
  std::vector<std::string> names, shortNames;
  for (const auto& service : IMService::allServices()) {
    names.push_back(service->name());
    shortNames.push_back(service->localizedShortName());
    EXPECT_TRUE(service->isEnabled());
    EXPECT_EQ(service->status(), kIMPersonStatusAvailable) << service->name();
  }
  EXPECT_EQ(names, (std::vector<std::string>{"AIM", "SubNet", "Jabber", "Vistel"}));
  EXPECT_EQ(shortNames, (std::vector<std::string>{"AIM", "Ambrel", "Jabber", "Vistel"}));
  EXPECT_EQ(IMService::subnetService()->localizedShortName(), "Ambrel");
  EXPECT_FALSE(IMService::vistelService()->isPersistent());
  EXPECT_TRUE(IMService::serviceWithName("AIM")->isPersistent());
  for (const char* id : {"aim", "ambrel", "jabber", "vistel"}) {
    ASSERT_NE(world->account(id), nullptr) << id;
    EXPECT_TRUE(world->account(id)->isConnected()) << id;
  }
  EXPECT_TRUE(world->account("aim")->hasCapability(kIMAccountCapabilityInvisibleLogin));

  std::set<IMPersonStatus> statuses;
  std::size_t buddies = 0, withMessages = 0, idle = 0, audio = 0, video = 0;
  for (const auto& person : world->scenario().people)
    for (const auto& handle : person.handles) {
      auto mirror = world->handle(handle.account, handle.id);
      ASSERT_NE(mirror, nullptr);
      ++buddies;
      statuses.insert(mirror->status());
      withMessages += !mirror->statusMessage().empty();
      idle += mirror->idleTime() > 0;
      audio += mirror->hasAudio();
      video += mirror->hasVideo();
    }
  EXPECT_GE(buddies, 12u);
  EXPECT_GE(statuses.size(), 5u);
  EXPECT_GE(withMessages, 5u);
  EXPECT_GE(idle, 2u);
  EXPECT_GE(audio, 2u);
  EXPECT_GE(video, 2u);
  EXPECT_FALSE(world->scenario().availableMessages.empty());
  EXPECT_FALSE(world->scenario().awayMessages.empty());
}

TEST_F(ScenarioLoaderTest, TheBuiltInWorldHasTheSelfTestIdentitiesAsAvailableBuddies) {
  auto world = sim::SimWorld::makeDefault();
  auto aimInfo = IMService::serviceWithName("AIM")->infoForScreenName(sim::SelfTestAIMScreenName);
  ASSERT_NE(aimInfo, nullptr);
  EXPECT_EQ(integerValue(aimInfo->objectForKey(IMPersonStatusKey).get()), 4);

  auto jabberInfo = IMService::serviceWithName("Jabber")->infoForScreenName(sim::SelfTestJabberAddress);
  ASSERT_NE(jabberInfo, nullptr);
  EXPECT_EQ(integerValue(jabberInfo->objectForKey(IMPersonStatusKey).get()), 4);

  int matches = 0;
  for (const auto& info : IMService::serviceWithName("SubNet")->infoForAllScreenNames()) {
    if (stringValue(info->objectForKey(IMPersonFirstNameKey)) == sim::SelfTestPersonFirstName &&
        stringValue(info->objectForKey(IMPersonLastNameKey)) == sim::SelfTestPersonLastName) {
      ++matches;
      EXPECT_EQ(integerValue(info->objectForKey(IMPersonStatusKey).get()), 4);
    }
  }
  EXPECT_EQ(matches, 1);
}

TEST_F(ScenarioLoaderTest, EveryExampleLoads) {
  int loaded = 0;
  for (const auto& entry : std::filesystem::directory_iterator(simtest::sourceDir() / "examples")) {
    if (entry.path().extension() != ".json") continue;
    EXPECT_NO_THROW(ScenarioLoader::loadFile(entry.path())) << entry.path();
    ++loaded;
  }
  EXPECT_GE(loaded, 2);
}

TEST_F(ScenarioLoaderTest, ReadsEveryFieldOfTheFormat) {
  auto scenario = ScenarioLoader::parse(simtest::kSmallScenario, "small.json");
  EXPECT_EQ(scenario.source, "small.json");
  ASSERT_EQ(scenario.services.size(), 2u);
  EXPECT_EQ(scenario.services[0].internalName, "AIM");
  EXPECT_EQ(scenario.services[1].shortName, "Jab");
  ASSERT_EQ(scenario.accounts.size(), 3u);
  EXPECT_EQ(scenario.accounts[0].capabilities, kIMAccountCapabilityBuddyList);
  EXPECT_EQ(scenario.accounts[1].capabilities, 0x4000008000ULL);
  EXPECT_EQ(scenario.accounts[1].myStatus, kIMPersonStatusAway);
  EXPECT_EQ(scenario.accounts[2].loginStatus, kIMAccountLoginStatusOffline);
  EXPECT_TRUE(scenario.accounts[2].invisible);
  const auto& jane = scenario.people.at(0).handles.at(0);
  EXPECT_EQ(jane.groups, (std::vector<std::string>{"Friends", "Work"}));
  EXPECT_EQ(jane.sortOrders, (std::map<std::string, std::uint32_t>{{"Work", 3}}));
  EXPECT_FALSE(jane.conference);
  EXPECT_EQ(scenario.people.at(1).handles.at(0).authRequest, kIMAuthRequestPending);
  EXPECT_EQ(scenario.daemon.vcCapabilities, 0xE0000u);
  EXPECT_EQ(scenario.latency.login, 1.0);
  ASSERT_EQ(scenario.events.size(), 3u);
  EXPECT_EQ(scenario.events[0].description(), "buddy-status aim/janedoe status=Available message=\"Back\"");
  EXPECT_EQ(scenario.events[1].at, 12);
}

TEST_F(ScenarioLoaderTest, SyntaxErrorsNameTheLineAndColumn) {
  auto message = refusal("{\n  \"services\": [\n    { \"name\": \"AIM\" }\n  ],\n  \"accounts\": [ oops ]\n}\n");
  EXPECT_EQ(message.rfind("bad.json: line 5, column 17: syntax error", 0), 0u) << message;
  message = refusal("{ \"services\": [");
  EXPECT_EQ(message.rfind("bad.json: line 1, column 16: syntax error", 0), 0u) << message;
}

TEST_F(ScenarioLoaderTest, EachKindOfBadScenarioIsRefusedWithItsPlaceAndProblem) {
  const std::string aim = R"({ "name": "AIM" })";
  const std::string account = R"({ "id": "aim", "service": "AIM", "login": "me" })";
  auto withAccounts = [&](const std::string& accounts, const std::string& rest = "") {
    return R"({ "services": [)" + aim + R"(], "accounts": [)" + accounts + "]" + rest + "}";
  };
  struct Case {
    std::string text;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"[]", "bad.json: $: expected an object, found array"},
      {R"({ "servces": [] })", "bad.json: $.servces: unknown field"},
      {R"({ "services": [{ "name": "AIM", "enabled": "yes" }] })",
       "bad.json: $.services[0].enabled: expected true or false, found string"},
      {R"({ "services": [{ "name": 7 }] })", "bad.json: $.services[0].name: expected a string, found number"},
      {R"({ "services": [{ "shortName": "x" }] })", "bad.json: $.services[0].name: missing (required)"},
      {R"({ "services": [{ "name": "AIM" }, { "name": "AIM", "internalName": "Other" }] })",
       "bad.json: $.services[1].name: duplicate service name \"AIM\" (first at $.services[0].name)"},
      {withAccounts(R"({ "id": "icq", "service": "ICQ", "login": "me" })"),
       "bad.json: $.accounts[0].service: unknown service \"ICQ\""},
      {withAccounts(account + "," + R"({ "id": "aim", "service": "AIM", "login": "other" })"),
       "bad.json: $.accounts[1].id: duplicate account id \"aim\" (first at $.accounts[0].id)"},
      {withAccounts(R"({ "id": "a", "service": "AIM", "login": "me", "capabilities": ["telepathy"] })"),
       "bad.json: $.accounts[0].capabilities[0]: unknown capability \"telepathy\" (known: buddyList, fileTransfer, "
       "invisibleLogin, textChat)"},
      {withAccounts(R"({ "id": "a", "service": "AIM", "login": "me", "loginStatus": "dozing" })"),
       "bad.json: $.accounts[0].loginStatus: unknown login status \"dozing\" (use offline, connecting or connected)"},
      {withAccounts(account, R"(, "people": [{ "id": "p", "handles": [{ "account": "jabber", "id": "x" }] }])"),
       "bad.json: $.people[0].handles[0].account: no account with id \"jabber\""},
      {withAccounts(account, R"(, "people": [{ "id": "p", "handles": [{ "account": "aim", "id": "Jane Doe" }] },)"
                             R"( { "id": "q", "handles": [{ "account": "aim", "id": "janedoe" }] }])"),
       "bad.json: $.people[1].handles[0].id: duplicate handle \"janedoe on account aim\" (first at "
       "$.people[0].handles[0].id)"},
      {withAccounts(account, R"(, "people": [{ "id": "p" }, { "id": "p" }])"),
       "bad.json: $.people[1].id: duplicate person id \"p\" (first at $.people[0].id)"},
      {withAccounts(account,
                    R"(, "people": [{ "id": "p", "handles": [{ "account": "aim", "id": "x", "status": "busy" }] }])"),
       "bad.json: $.people[0].handles[0].status: unknown status \"busy\" (use unknown, offline, idle, away, available "
       "or nostatus)"},
      {withAccounts(account,
                    R"(, "people": [{ "id": "p", "handles": [{ "account": "aim", "id": "x", "status": 9 }] }])"),
       "bad.json: $.people[0].handles[0].status: status 9 is not between 0 and 5"},
      {withAccounts(account,
                    R"(, "people": [{ "id": "p", "handles": [{ "account": "aim", "id": "x", "idle": -3 }] }])"),
       "bad.json: $.people[0].handles[0].idle: must not be negative"},
      {R"({ "daemon": { "vcCapabilities": "0xZZ" } })",
       "bad.json: $.daemon.vcCapabilities: expected a hexadecimal number like \"0x8000\", found \"0xZZ\""},
      {R"({ "events": [{ "at": 1, "type": "earthquake" }] })",
       "bad.json: $.events[0].type: unknown event type \"earthquake\" (known: buddy-status, buddy-online, "
       "buddy-offline, buddy-groups, buddy-capabilities, account-connect, account-disconnect, daemon-disconnect, "
       "daemon-connect, status-text, screen-sharing-start, screen-sharing-end, application-quit)"},
      {withAccounts(account,
                    R"(, "events": [{ "at": 1, "type": "buddy-offline", "account": "aim", "handle": "ghost" }])"),
       "bad.json: $.events[0].handle: no handle \"ghost\" on account \"aim\""},
      {R"({ "events": [{ "at": 1, "type": "daemon-connect", "text": "hi" }] })",
       "bad.json: $.events[0].text: not a field of a daemon-connect event"},
      {R"({ "events": [{ "at": "soon", "type": "daemon-connect" }] })",
       "bad.json: $.events[0].at: expected a number of seconds, found string"},
      {R"({ "events": [{ "at": 1e300, "type": "daemon-connect" }] })",
       "bad.json: $.events[0].at: must be at most 10000000 seconds"},
      {"{ \"latency\": {\n \"status\": 1e400 } }", "bad.json: line 2, column 12: the number 1e400 is out of range"},
      {R"({ "description": )" + std::string(5000, '[') + std::string(5000, ']') + "}",
       "bad.json: line 1, column 145: nested deeper than 128 levels"},
      {withAccounts(account, R"(, "people": [{ "id": "p", "handles": [{ "account": "aim", "id": "x", )"
                             R"("authRequest": 4294967296 }] }])"),
       "bad.json: $.people[0].handles[0].authRequest: out of range (at most 4294967295)"},
  };
  for (const auto& c : cases) EXPECT_EQ(refusal(c.text), c.message) << c.text;
}

TEST_F(ScenarioLoaderTest, FilesThatAreNoScenarioAreRefusedWithoutReadingThemWhole) {
  auto refusalOfFile = [](const std::filesystem::path& path) -> std::string {
    try {
      ScenarioLoader::loadFile(path);
    } catch (const ScenarioError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(refusalOfFile(tempDir), tempDir.string() + ": is a folder, not a file");
  EXPECT_EQ(refusalOfFile("/dev/zero"), "/dev/zero: is too large (more than 16 MiB)");
  EXPECT_EQ(refusalOfFile(tempDir / "none.json"),
            (tempDir / "none.json").string() + ": cannot read the file (No such file or directory)");
}

TEST_F(ScenarioLoaderTest, ARefusedFileLeavesTheRunningWorldAsItWas) {
  auto world = sim::SimWorld::makeDefault();
  auto path = tempDir / "broken.json";
  std::ofstream(path)
      << R"({ "services": [{ "name": "Solo" }], "accounts": [{ "id": "x", "service": "Nope", "login": "me" }] })";
  try {
    ScenarioLoader::loadFile(path);
    FAIL() << "the file was accepted";
  } catch (const ScenarioError& error) {
    EXPECT_EQ(std::string(error.what()), path.string() + ": $.accounts[0].service: unknown service \"Nope\"");
  }
  EXPECT_EQ(IMService::allServices().size(), 4u);
  EXPECT_EQ(IMService::serviceWithName("Solo"), nullptr);

  auto missing = tempDir / "missing.json";
  try {
    ScenarioLoader::loadFile(missing);
    FAIL() << "a missing file was accepted";
  } catch (const ScenarioError& error) {
    EXPECT_EQ(std::string(error.what()), missing.string() + ": cannot read the file (No such file or directory)");
  }
}
