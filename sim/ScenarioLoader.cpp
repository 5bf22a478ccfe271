#include "sim/ScenarioLoader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <sstream>
#include <unordered_map>

#include "platform/core/InputFile.h"
#include "platform/core/JSONSerialization.h"
#include "platform/im/IMNameCollation.h"

namespace sim {

using nlohmann::json;
using platform::IMPersonStatus;

// Defined in the generated DefaultScenarioText.cpp.
extern const char* const kDefaultScenarioText;

namespace {

std::string typeName(const json& value) {
  switch (value.type()) {
    case json::value_t::null:
      return "null";
    case json::value_t::boolean:
      return "boolean";
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
    case json::value_t::number_float:
      return "number";
    case json::value_t::string:
      return "string";
    case json::value_t::array:
      return "array";
    case json::value_t::object:
      return "object";
    default:
      return "value";
  }
}

std::string inQuotes(const std::string& text) { return "\"" + text + "\""; }

std::string member(const std::string& path, const std::string& key) { return path + "." + key; }

std::string element(const std::string& path, std::size_t index) { return path + "[" + std::to_string(index) + "]"; }

// Checks values against the scenario format and raises ScenarioError with the
// source and the JSON path of the first problem.
class Checker {
 public:
  explicit Checker(std::string source) : source_(std::move(source)) {}

  [[noreturn]] void fail(const std::string& path, const std::string& problem) const {
    throw ScenarioError(source_ + ": " + path + ": " + problem);
  }

  [[noreturn]] void wrongType(const json& value, const std::string& path, const std::string& expected) const {
    fail(path, "expected " + expected + ", found " + typeName(value));
  }

  const json& object(const json& value, const std::string& path, std::initializer_list<const char*> allowed) const {
    if (!value.is_object()) wrongType(value, path, "an object");
    for (const auto& entry : value.items()) {
      const std::string& key = entry.key();
      if (std::none_of(allowed.begin(), allowed.end(), [&key](const char* name) { return key == name; }))
        fail(member(path, key), "unknown field");
    }
    return value;
  }

  const json& array(const json& value, const std::string& path) const {
    if (!value.is_array()) wrongType(value, path, "an array");
    return value;
  }

  const json* find(const json& object, const std::string& key) const {
    auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
  }

  std::string string(const json& value, const std::string& path) const {
    if (!value.is_string()) wrongType(value, path, "a string");
    return value.get<std::string>();
  }

  std::string string(const json& object, const std::string& key, const std::string& path, std::string fallback) const {
    const auto* value = find(object, key);
    if (!value) return fallback;
    if (!value->is_string()) wrongType(*value, member(path, key), "a string");
    return value->get<std::string>();
  }

  std::string requiredString(const json& object, const std::string& key, const std::string& path) const {
    const auto* value = find(object, key);
    if (!value) fail(member(path, key), "missing (required)");
    if (!value->is_string()) wrongType(*value, member(path, key), "a string");
    auto text = value->get<std::string>();
    if (text.empty()) fail(member(path, key), "must not be empty");
    return text;
  }

  bool boolean(const json& object, const std::string& key, const std::string& path, bool fallback) const {
    const auto* value = find(object, key);
    if (!value) return fallback;
    if (!value->is_boolean()) wrongType(*value, member(path, key), "true or false");
    return value->get<bool>();
  }

  double seconds(const json& value, const std::string& path) const {
    if (!value.is_number()) wrongType(value, path, "a number of seconds");
    double number = value.get<double>();
    if (!(number >= 0)) fail(path, "must not be negative");
    if (number > ScenarioLoader::kLongestTime)
      fail(path,
           "must be at most " + std::to_string(static_cast<long long>(ScenarioLoader::kLongestTime)) + " seconds");
    return number;
  }

  double seconds(const json& object, const std::string& key, const std::string& path, double fallback) const {
    const auto* value = find(object, key);
    return value ? seconds(*value, member(path, key)) : fallback;
  }

  std::vector<std::string> strings(const json& value, const std::string& path) const {
    std::vector<std::string> texts;
    const auto& items = array(value, path);
    for (std::size_t i = 0; i < items.size(); ++i) texts.push_back(string(items[i], element(path, i)));
    return texts;
  }

  std::vector<std::string> strings(const json& object, const std::string& key, const std::string& path) const {
    const auto* value = find(object, key);
    return value ? strings(*value, member(path, key)) : std::vector<std::string>{};
  }

  IMPersonStatus status(const json& value, const std::string& path) const {
    static const std::map<std::string, IMPersonStatus> names = {
        {"unknown", platform::kIMPersonStatusUnknown},     {"offline", platform::kIMPersonStatusOffline},
        {"idle", platform::kIMPersonStatusIdle},           {"away", platform::kIMPersonStatusAway},
        {"available", platform::kIMPersonStatusAvailable}, {"nostatus", platform::kIMPersonStatusNoStatus},
        {"no-status", platform::kIMPersonStatusNoStatus}};
    if (value.is_string()) {
      auto found = names.find(value.get<std::string>());
      if (found == names.end())
        fail(path, "unknown status " + inQuotes(value.get<std::string>()) +
                       " (use unknown, offline, idle, away, available or nostatus)");
      return found->second;
    }
    if (value.is_number_unsigned() || value.is_number_integer()) {
      auto number = value.get<std::int64_t>();
      if (number < 0 || number > 5) fail(path, "status " + std::to_string(number) + " is not between 0 and 5");
      return static_cast<IMPersonStatus>(number);
    }
    wrongType(value, path, "a status name or a number from 0 to 5");
  }

  std::uint32_t loginStatus(const json& value, const std::string& path) const {
    if (value.is_string()) {
      auto text = value.get<std::string>();
      if (text == "offline") return platform::kIMAccountLoginStatusOffline;
      if (text == "connecting") return platform::kIMAccountLoginStatusConnecting;
      if (text == "connected") return platform::kIMAccountLoginStatusConnected;
      fail(path, "unknown login status " + inQuotes(text) + " (use offline, connecting or connected)");
    }
    if (value.is_number_unsigned() || value.is_number_integer()) {
      auto number = value.get<std::int64_t>();
      if (number < 0 || number > 2) fail(path, "login status " + std::to_string(number) + " is not between 0 and 2");
      return static_cast<std::uint32_t>(number);
    }
    wrongType(value, path, "a login status name or a number from 0 to 2");
  }

  // A bit set: a number, a "0x" hex string, or an array of bit names.
  std::uint64_t bits(const json& value, const std::string& path,
                     const std::map<std::string, std::uint64_t>& names) const {
    if (value.is_number_unsigned()) return value.get<std::uint64_t>();
    if (value.is_number_integer()) {
      if (value.get<std::int64_t>() < 0) fail(path, "must not be negative");
      return static_cast<std::uint64_t>(value.get<std::int64_t>());
    }
    if (value.is_string()) {
      auto text = value.get<std::string>();
      char* end = nullptr;
      errno = 0;
      auto parsed = std::strtoull(text.c_str(), &end, 16);
      bool hex = text.size() > 2 && (text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0);
      if (!hex || errno != 0 || *end != '\0')
        fail(path, "expected a hexadecimal number like \"0x8000\", found " + inQuotes(text));
      return parsed;
    }
    if (value.is_array()) {
      std::uint64_t result = 0;
      for (std::size_t i = 0; i < value.size(); ++i) {
        auto name = string(value[i], element(path, i));
        auto found = names.find(name);
        if (found == names.end()) {
          std::string known;
          for (const auto& [n, bit] : names) known += (known.empty() ? "" : ", ") + n;
          fail(element(path, i), "unknown capability " + inQuotes(name) + " (known: " + known + ")");
        }
        result |= found->second;
      }
      return result;
    }
    wrongType(value, path, "a number, a hexadecimal string or an array of capability names");
  }

 private:
  std::string source_;
};

const std::map<std::string, std::uint64_t>& accountCapabilityNames() {
  static const std::map<std::string, std::uint64_t> names = {
      {"textChat", platform::kIMAccountCapabilityTextChat},
      {"fileTransfer", platform::kIMAccountCapabilityFileTransfer},
      {"buddyList", platform::kIMAccountCapabilityBuddyList},
      {"invisibleLogin", platform::kIMAccountCapabilityInvisibleLogin}};
  return names;
}

const std::map<std::string, std::uint64_t>& vcCapabilityNames() {
  static const std::map<std::string, std::uint64_t> names = {{"conference", platform::kIMVCCapabilityConference},
                                                             {"camera", platform::kIMVCCapabilityCamera},
                                                             {"microphone", platform::kIMVCCapabilityMicrophone},
                                                             {"multiway", platform::kIMVCCapabilityMultiway}};
  return names;
}

// Where each ID was first defined, for duplicate messages. A place is whatever
// the caller can turn into a JSON path: big files define tens of thousands of IDs,
// and only a duplicate needs its path written out.
template <class Place>
class Registry {
 public:
  // The place where key was defined before, or null when it is new.
  const Place* add(std::string key, Place place) {
    auto [found, inserted] = places_.try_emplace(std::move(key), std::move(place));
    return inserted ? nullptr : &found->second;
  }

  void reserve(std::size_t count) { places_.reserve(count); }

 private:
  std::unordered_map<std::string, Place> places_;
};

[[noreturn]] void failDuplicate(const Checker& checker, const std::string& path, const std::string& what,
                                const std::string& shown, const std::string& firstPath) {
  checker.fail(path, "duplicate " + what + " " + inQuotes(shown) + " (first at " + firstPath + ")");
}

void addUnique(const Checker& checker, Registry<std::string>& registry, const std::string& what,
               const std::string& key, const std::string& shown, const std::string& path) {
  if (const auto* first = registry.add(key, path)) failDuplicate(checker, path, what, shown, *first);
}

// Groups as names or {"name", "sortOrder"} objects; shared with the event reader.
void readGroupList(const Checker& checker, const json& value, const std::string& path, std::vector<std::string>& groups,
                   std::map<std::string, std::uint32_t>& sortOrders) {
  const auto& items = checker.array(value, path);
  for (std::size_t i = 0; i < items.size(); ++i) {
    auto itemPath = element(path, i);
    std::string name;
    if (items[i].is_string()) {
      name = items[i].get<std::string>();
    } else if (items[i].is_object()) {
      checker.object(items[i], itemPath, {"name", "sortOrder"});
      name = checker.requiredString(items[i], "name", itemPath);
      if (const auto* order = checker.find(items[i], "sortOrder")) {
        if (!order->is_number_unsigned() || order->get<std::uint64_t>() > 0xFFFFFFFFull)
          checker.wrongType(*order, member(itemPath, "sortOrder"), "a non-negative 32-bit number");
        sortOrders[name] = order->get<std::uint32_t>();
      }
    } else {
      checker.wrongType(items[i], itemPath, "a group name or an object with name and sortOrder");
    }
    if (name.empty()) checker.fail(itemPath, "group name must not be empty");
    if (std::find(groups.begin(), groups.end(), name) != groups.end())
      checker.fail(itemPath, "duplicate group " + inQuotes(name));
    groups.push_back(name);
  }
}

class ScenarioReader {
 public:
  ScenarioReader(const json& root, std::string source) : root_(root), checker_(source) {
    scenario_.source = std::move(source);
  }

  Scenario read() {
    checker_.object(
        root_, "$",
        {"description", "services", "accounts", "people", "savedMessages", "music", "daemon", "latency", "events"});
    scenario_.description = checker_.string(root_, "description", "$", "");
    readServices();
    readAccounts();
    readPeople();
    readSavedMessages();
    readMusic();
    readDaemon();
    readLatency();
    readEvents();
    return std::move(scenario_);
  }

 private:
  void readServices() {
    const auto* list = checker_.find(root_, "services");
    if (!list) return;
    Registry<std::string> names, internalNames;
    const auto& items = checker_.array(*list, "$.services");
    for (std::size_t i = 0; i < items.size(); ++i) {
      auto path = element("$.services", i);
      const auto& item =
          checker_.object(items[i], path, {"name", "internalName", "shortName", "enabled", "persistent", "status"});
      ScenarioService service;
      service.name = checker_.requiredString(item, "name", path);
      service.internalName = checker_.string(item, "internalName", path, service.name);
      service.shortName = checker_.string(item, "shortName", path, service.name);
      service.enabled = checker_.boolean(item, "enabled", path, true);
      service.persistent = checker_.boolean(item, "persistent", path, true);
      if (const auto* status = checker_.find(item, "status"))
        service.status = checker_.status(*status, member(path, "status"));
      addUnique(checker_, names, "service name", service.name, service.name, member(path, "name"));
      addUnique(checker_, internalNames, "service internal name", service.internalName, service.internalName,
                member(path, "internalName"));
      scenario_.services.push_back(std::move(service));
    }
  }

  void readAccounts() {
    const auto* list = checker_.find(root_, "accounts");
    if (!list) return;
    Registry<std::string> ids, logins;
    const auto& items = checker_.array(*list, "$.accounts");
    for (std::size_t i = 0; i < items.size(); ++i) {
      auto path = element("$.accounts", i);
      const auto& item = checker_.object(items[i], path,
                                         {"id", "service", "login", "capabilities", "active", "loginStatus", "myStatus",
                                          "myMessage", "invisible", "nowPlaying"});
      ScenarioAccount account;
      account.id = checker_.requiredString(item, "id", path);
      account.service = checker_.requiredString(item, "service", path);
      if (!scenario_.serviceNamed(account.service))
        checker_.fail(member(path, "service"), "unknown service " + inQuotes(account.service));
      account.login = checker_.requiredString(item, "login", path);
      if (const auto* caps = checker_.find(item, "capabilities"))
        account.capabilities = checker_.bits(*caps, member(path, "capabilities"), accountCapabilityNames());
      account.active = checker_.boolean(item, "active", path, true);
      if (const auto* login = checker_.find(item, "loginStatus"))
        account.loginStatus = checker_.loginStatus(*login, member(path, "loginStatus"));
      if (const auto* status = checker_.find(item, "myStatus"))
        account.myStatus = checker_.status(*status, member(path, "myStatus"));
      account.myMessage = checker_.string(item, "myMessage", path, "");
      account.invisible = checker_.boolean(item, "invisible", path, false);
      if (const auto* nowPlaying = checker_.find(item, "nowPlaying"))
        account.nowPlaying = checker_.string(*nowPlaying, member(path, "nowPlaying"));
      addUnique(checker_, ids, "account id", account.id, account.id, member(path, "id"));
      addUnique(checker_, logins, "login",
                account.service + "\n" + platform::IMNameCollation::normalizeID(account.login),
                account.login + " on " + account.service, member(path, "login"));
      scenario_.accounts.push_back(std::move(account));
    }
  }

  void readPeople() {
    const auto* list = checker_.find(root_, "people");
    if (!list) return;
    // People by index, handles by (person, handle) index.
    Registry<std::size_t> ids;
    Registry<std::pair<std::size_t, std::size_t>> handles;
    auto handlePath = [](std::size_t person, std::size_t handle) {
      return member(element(member(element("$.people", person), "handles"), handle), "id");
    };
    const auto& items = checker_.array(*list, "$.people");
    scenario_.people.reserve(items.size());
    ids.reserve(items.size());
    handles.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      auto path = element("$.people", i);
      const auto& item = checker_.object(items[i], path, {"id", "firstName", "lastName", "emails", "handles"});
      ScenarioPerson person;
      person.id = checker_.requiredString(item, "id", path);
      if (const auto* first = ids.add(person.id, i))
        failDuplicate(checker_, member(path, "id"), "person id", person.id, member(element("$.people", *first), "id"));
      person.firstName = checker_.string(item, "firstName", path, "");
      person.lastName = checker_.string(item, "lastName", path, "");
      person.emails = checker_.strings(item, "emails", path);
      if (const auto* handleList = checker_.find(item, "handles")) {
        auto handlesPath = member(path, "handles");
        const auto& entries = checker_.array(*handleList, handlesPath);
        person.handles.reserve(entries.size());
        for (std::size_t h = 0; h < entries.size(); ++h) {
          auto handle = readHandle(entries[h], element(handlesPath, h));
          if (const auto* first =
                  handles.add(handle.account + "\n" + platform::IMNameCollation::normalizeID(handle.id), {i, h}))
            failDuplicate(checker_, handlePath(i, h), "handle", handle.id + " on account " + handle.account,
                          handlePath(first->first, first->second));
          person.handles.push_back(std::move(handle));
        }
      }
      scenario_.people.push_back(std::move(person));
    }
  }

  ScenarioHandle readHandle(const json& value, const std::string& path) {
    const auto& item =
        checker_.object(value, path,
                        {"account", "id", "groups", "status", "message", "idle", "audio", "video", "conference",
                         "mobile", "emails", "otherServiceIDs", "authRequest", "nickname", "statusURL", "blocked"});
    ScenarioHandle handle;
    handle.account = checker_.requiredString(item, "account", path);
    if (!scenario_.accountWithID(handle.account))
      checker_.fail(member(path, "account"), "no account with id " + inQuotes(handle.account));
    handle.id = checker_.requiredString(item, "id", path);
    if (const auto* groups = checker_.find(item, "groups")) readGroups(*groups, member(path, "groups"), handle);
    if (const auto* status = checker_.find(item, "status"))
      handle.status = checker_.status(*status, member(path, "status"));
    handle.message = checker_.string(item, "message", path, "");
    handle.idle = checker_.seconds(item, "idle", path, 0);
    handle.audio = checker_.boolean(item, "audio", path, false);
    handle.video = checker_.boolean(item, "video", path, false);
    handle.conference = checker_.boolean(item, "conference", path, true);
    handle.mobile = checker_.string(item, "mobile", path, "");
    handle.emails = checker_.strings(item, "emails", path);
    if (const auto* others = checker_.find(item, "otherServiceIDs")) {
      auto othersPath = member(path, "otherServiceIDs");
      if (!others->is_object()) checker_.wrongType(*others, othersPath, "an object of service names to IDs");
      for (const auto& [service, id] : others->items())
        handle.otherServiceIDs[service] = checker_.string(id, member(othersPath, service));
    }
    if (const auto* auth = checker_.find(item, "authRequest")) {
      if (auth->is_boolean()) {
        handle.authRequest = auth->get<bool>() ? platform::kIMAuthRequestPending : platform::kIMAuthRequestNone;
      } else if (auth->is_number_unsigned()) {
        if (auth->get<std::uint64_t>() > 0xFFFFFFFFull)
          checker_.fail(member(path, "authRequest"), "out of range (at most 4294967295)");
        handle.authRequest = auth->get<std::uint32_t>();
      } else {
        checker_.wrongType(*auth, member(path, "authRequest"), "true, false or a non-negative number");
      }
    }
    handle.nickname = checker_.string(item, "nickname", path, "");
    handle.statusURL = checker_.string(item, "statusURL", path, "");
    handle.blocked = checker_.boolean(item, "blocked", path, false);
    return handle;
  }

  void readGroups(const json& value, const std::string& path, ScenarioHandle& handle) const {
    readGroupList(checker_, value, path, handle.groups, handle.sortOrders);
  }

 private:
  void readSavedMessages() {
    const auto* saved = checker_.find(root_, "savedMessages");
    if (!saved) return;
    checker_.object(*saved, "$.savedMessages", {"available", "away"});
    scenario_.availableMessages = checker_.strings(*saved, "available", "$.savedMessages");
    scenario_.awayMessages = checker_.strings(*saved, "away", "$.savedMessages");
  }

  void readMusic() {
    const auto* music = checker_.find(root_, "music");
    if (!music) return;
    checker_.object(*music, "$.music", {"interop", "currentTrack"});
    scenario_.music.interop = checker_.boolean(*music, "interop", "$.music", false);
    scenario_.music.currentTrack = checker_.string(*music, "currentTrack", "$.music", "");
  }

  void readDaemon() {
    const auto* daemon = checker_.find(root_, "daemon");
    if (!daemon) return;
    checker_.object(*daemon, "$.daemon", {"connected", "vcCapabilities", "nowPlayingFormat"});
    scenario_.daemon.connected = checker_.boolean(*daemon, "connected", "$.daemon", true);
    if (const auto* caps = checker_.find(*daemon, "vcCapabilities"))
      scenario_.daemon.vcCapabilities = checker_.bits(*caps, "$.daemon.vcCapabilities", vcCapabilityNames());
    if (const auto* format = checker_.find(*daemon, "nowPlayingFormat"))
      scenario_.daemon.nowPlayingFormat = checker_.string(*format, "$.daemon.nowPlayingFormat");
  }

  void readLatency() {
    const auto* latency = checker_.find(root_, "latency");
    if (!latency) return;
    checker_.object(*latency, "$.latency", {"status", "login", "screenSharingEnd"});
    auto& l = scenario_.latency;
    l.status = checker_.seconds(*latency, "status", "$.latency", l.status);
    l.login = checker_.seconds(*latency, "login", "$.latency", l.login);
    l.screenSharingEnd = checker_.seconds(*latency, "screenSharingEnd", "$.latency", l.screenSharingEnd);
  }

  void readEvents() {
    const auto* list = checker_.find(root_, "events");
    if (!list) return;
    const auto& items = checker_.array(*list, "$.events");
    for (std::size_t i = 0; i < items.size(); ++i)
      scenario_.events.push_back(
          ScenarioLoader::parseEvent(items[i], scenario_, scenario_.source, element("$.events", i)));
  }

  const json& root_;
  Checker checker_;
  Scenario scenario_;
};

bool scenarioHasHandle(const Scenario& scenario, const std::string& account, const std::string& id) {
  auto wanted = platform::IMNameCollation::normalizeID(id);
  for (const auto& person : scenario.people)
    for (const auto& handle : person.handles)
      if (handle.account == account && platform::IMNameCollation::normalizeID(handle.id) == wanted) return true;
  return false;
}

// The parser's explanation without its exception prefix and position.
std::string syntaxProblem(const json::parse_error& error) {
  std::string what = error.what();
  auto colon = what.find(": ");
  auto text = colon == std::string::npos ? what : what.substr(colon + 2);
  if (text.rfind("syntax error ", 0) == 0) text = text.substr(13);
  return "syntax error " + text;
}

json parseDocument(const std::string& text, const std::string& source) {
  using platform::JSONSerialization;
  if (auto problem = JSONSerialization::findLimitProblem(text))
    throw ScenarioError(source + ": " + JSONSerialization::placeOfOffset(text, problem->offset) + ": " +
                        problem->message);
  try {
    return json::parse(text);
  } catch (const json::parse_error& error) {
    std::size_t offset = error.byte > 0 ? error.byte - 1 : 0;
    throw ScenarioError(source + ": " + JSONSerialization::placeOfOffset(text, offset) + ": " + syntaxProblem(error));
  }
}

}  // namespace

Scenario ScenarioLoader::loadFile(const std::filesystem::path& path) {
  auto file = platform::InputFile::read(path);
  const auto source = path.string();
  if (!file.ok()) throw ScenarioError(source + ": " + file.problem());
  const auto root = parseDocument(file.text, source);
  // Only messages about the syntax need the text: a big file is not kept beside its document.
  std::string().swap(file.text);
  return ScenarioReader(root, source).read();
}

Scenario ScenarioLoader::parse(const std::string& text, const std::string& source) {
  return ScenarioReader(parseDocument(text, source), source).read();
}

const std::string& ScenarioLoader::defaultScenarioText() {
  static const std::string text = kDefaultScenarioText;
  return text;
}

Scenario ScenarioLoader::defaultScenario() { return parse(defaultScenarioText(), "built-in scenario"); }

SimEvent ScenarioLoader::parseEvent(const json& value, const Scenario& scenario, const std::string& source,
                                    const std::string& path) {
  Checker checker(source);
  const auto& item = checker.object(value, path,
                                    {"at", "type", "account", "handle", "status", "message", "idle", "groups", "audio",
                                     "video", "conference", "text", "centre", "partner"});
  SimEvent event;
  auto typeText = checker.requiredString(item, "type", path);
  auto type = SimEvent::typeNamed(typeText);
  if (!type) {
    std::string known;
    for (const auto& name : SimEvent::typeNames()) known += (known.empty() ? "" : ", ") + name;
    checker.fail(member(path, "type"), "unknown event type " + inQuotes(typeText) + " (known: " + known + ")");
  }
  event.type = *type;
  event.at = checker.seconds(item, "at", path, 0);
  auto allow = [&](std::initializer_list<const char*> fields) {
    for (const auto& entry : item.items()) {
      const std::string& key = entry.key();
      if (key == "at" || key == "type") continue;
      if (std::none_of(fields.begin(), fields.end(), [&key](const char* f) { return key == f; }))
        checker.fail(member(path, key), "not a field of a " + typeText + " event");
    }
  };
  if (SimEvent::needsAccount(event.type)) {
    event.account = checker.requiredString(item, "account", path);
    if (!scenario.accountWithID(event.account))
      checker.fail(member(path, "account"), "no account with id " + inQuotes(event.account));
  }
  if (SimEvent::needsHandle(event.type)) {
    event.handle = checker.requiredString(item, "handle", path);
    if (!scenarioHasHandle(scenario, event.account, event.handle))
      checker.fail(member(path, "handle"),
                   "no handle " + inQuotes(event.handle) + " on account " + inQuotes(event.account));
  }
  using Type = SimEvent::Type;
  switch (event.type) {
    case Type::BuddyStatus:
    case Type::BuddyOnline:
      allow({"account", "handle", "status", "message", "idle"});
      if (const auto* status = checker.find(item, "status"))
        event.status = checker.status(*status, member(path, "status"));
      if (const auto* message = checker.find(item, "message"))
        event.message = checker.string(*message, member(path, "message"));
      if (const auto* idle = checker.find(item, "idle")) event.idle = checker.seconds(*idle, member(path, "idle"));
      if (event.type == Type::BuddyStatus && !event.status && !event.message && !event.idle)
        checker.fail(path, "a buddy-status event needs status, message or idle");
      break;
    case Type::BuddyOffline:
      allow({"account", "handle"});
      break;
    case Type::BuddyGroups: {
      allow({"account", "handle", "groups"});
      const auto* groups = checker.find(item, "groups");
      if (!groups) checker.fail(member(path, "groups"), "missing (required)");
      std::vector<std::string> names;
      readGroupList(checker, *groups, member(path, "groups"), names, event.sortOrders);
      event.groups = std::move(names);
      break;
    }
    case Type::BuddyCapabilities:
      allow({"account", "handle", "audio", "video", "conference"});
      if (checker.find(item, "audio")) event.audio = checker.boolean(item, "audio", path, false);
      if (checker.find(item, "video")) event.video = checker.boolean(item, "video", path, false);
      if (checker.find(item, "conference")) event.conference = checker.boolean(item, "conference", path, false);
      break;
    case Type::AccountConnect:
    case Type::AccountDisconnect:
      allow({"account"});
      break;
    case Type::StatusText:
      allow({"text", "centre"});
      {
        const auto* text = checker.find(item, "text");
        if (!text) checker.fail(member(path, "text"), "missing (required)");
        event.text = checker.string(*text, member(path, "text"));
      }
      event.centre = checker.string(item, "centre", path, "distributed");
      if (event.centre != "distributed" && event.centre != "service" && event.centre != "both")
        checker.fail(member(path, "centre"),
                     "unknown centre " + inQuotes(event.centre) + " (use distributed, service or both)");
      break;
    case Type::ScreenSharingStart:
      allow({"partner"});
      if (const auto* partner = checker.find(item, "partner"))
        event.partner = checker.string(*partner, member(path, "partner"));
      break;
    case Type::DaemonDisconnect:
    case Type::DaemonConnect:
    case Type::ScreenSharingEnd:
    case Type::ApplicationQuit:
      allow({});
      break;
  }
  return event;
}

}  // namespace sim
