#include "host/ScriptParser.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>

#include "platform/core/InputFile.h"
#include "platform/core/JSONSerialization.h"
#include "platform/ui/KeyModifiers.h"
#include "sim/ScenarioError.h"
#include "sim/ScenarioLoader.h"

namespace kibhost {
namespace {

const char* const kCommands =
    "wait, at, click, choose, choose-index, key, dismiss, event, post, self-test, unload, wait-for, wait-for-no, note";

// How long wait-for waits when the line does not say.
constexpr double kDefaultWaitForLimit = 10.0;

// Problems found on a line; the parser adds the file and line.
struct LineError {
  std::string message;
};

// Splits one line into words and quoted strings ("…" with JSON escapes); a #
// outside a string starts a comment.
class LineLexer {
 public:
  explicit LineLexer(const std::string& line) : line_(line) {}

  bool atEnd() {
    skipSpaces();
    return pos_ >= line_.size() || line_[pos_] == '#';
  }

  // The next word or string; nullopt at the end of the line.
  std::optional<std::string> next() {
    if (atEnd()) return std::nullopt;
    if (line_[pos_] == '"') return quoted();
    std::size_t start = pos_;
    while (pos_ < line_.size() && !std::isspace(static_cast<unsigned char>(line_[pos_]))) ++pos_;
    return line_.substr(start, pos_ - start);
  }

  bool nextIsObject() {
    skipSpaces();
    return pos_ < line_.size() && line_[pos_] == '{';
  }

  // The rest of the line as it stands (JSON arguments take no comment).
  std::string rest() {
    skipSpaces();
    std::string text = line_.substr(pos_);
    pos_ = line_.size();
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    return text;
  }

  // The line without its comment and surrounding spaces, for transcripts.
  static std::string withoutComment(const std::string& line) {
    LineLexer lexer(line);
    std::size_t end = line.size();
    try {
      end = 0;
      while (lexer.next()) end = lexer.pos_;
    } catch (const LineError&) {
      end = line.size();
    }
    return trimmed(line.substr(0, end));
  }

  static std::string trimmed(const std::string& text) {
    auto begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return "";
    auto end = text.find_last_not_of(" \t");
    return text.substr(begin, end - begin + 1);
  }

 private:
  void skipSpaces() {
    while (pos_ < line_.size() && std::isspace(static_cast<unsigned char>(line_[pos_]))) ++pos_;
  }

  std::string quoted() {
    std::size_t start = pos_++;
    while (pos_ < line_.size() && line_[pos_] != '"') pos_ += line_[pos_] == '\\' ? 2 : 1;
    if (pos_ >= line_.size()) throw LineError{"unterminated string"};
    ++pos_;
    auto value = nlohmann::json::parse(line_.substr(start, pos_ - start), nullptr, false);
    if (value.is_discarded() || !value.is_string()) throw LineError{"bad string " + line_.substr(start, pos_ - start)};
    return value.get<std::string>();
  }

  const std::string& line_;
  std::size_t pos_ = 0;
};

double parseSeconds(const std::optional<std::string>& word, const std::string& what) {
  if (!word) throw LineError{what + ": expected a number of seconds"};
  errno = 0;
  char* end = nullptr;
  double value = std::strtod(word->c_str(), &end);
  if (word->empty() || *end != '\0' || errno != 0 || !std::isfinite(value) || value < 0)
    throw LineError{what + ": expected a number of seconds, found \"" + *word + "\""};
  if (value > sim::ScenarioLoader::kLongestTime)
    throw LineError{what + ": " + *word + " seconds is too long (at most 10000000)"};
  return value;
}

std::int64_t parseCount(const std::optional<std::string>& word, const std::string& what) {
  if (!word) throw LineError{what + ": expected a whole number"};
  errno = 0;
  char* end = nullptr;
  long long value = std::strtoll(word->c_str(), &end, 10);
  if (word->empty() || *end != '\0' || errno != 0 || value < 0)
    throw LineError{what + ": expected a whole number, found \"" + *word + "\""};
  return value;
}

std::uint64_t modifierNamed(const std::string& word) {
  static const std::map<std::string, std::uint64_t> masks{
      {"shift", platform::kShiftKeyMask},   {"control", platform::kControlKeyMask},
      {"ctrl", platform::kControlKeyMask},  {"option", platform::kAlternateKeyMask},
      {"alt", platform::kAlternateKeyMask}, {"command", platform::kCommandKeyMask},
      {"cmd", platform::kCommandKeyMask}};
  auto found = masks.find(word);
  if (found == masks.end())
    throw LineError{"unexpected \"" + word + "\" (modifiers are shift, control, option and command)"};
  return found->second;
}

std::optional<std::uint64_t> parseModifiers(LineLexer& lexer) {
  std::optional<std::uint64_t> mask;
  while (auto word = lexer.next()) mask = mask.value_or(0) | modifierNamed(*word);
  return mask;
}

std::string parseKey(const std::string& word) {
  static const std::map<std::string, std::string> named{{"escape", "\033"}, {"esc", "\033"}, {"return", "\r"},
                                                        {"enter", "\r"},    {"tab", "\t"},   {"space", " "},
                                                        {"delete", "\x7f"}};
  if (auto found = named.find(word); found != named.end()) return found->second;
  // One character (a UTF-8 sequence of one code point).
  std::size_t codePoints = 0;
  for (unsigned char c : word)
    if ((c & 0xC0) != 0x80) ++codePoints;
  if (codePoints != 1)
    throw LineError{"key: expected one character or escape, return, tab, space or delete, found \"" + word + "\""};
  return word;
}

void expectEnd(LineLexer& lexer, const std::string& command) {
  if (auto extra = lexer.next()) throw LineError{"unexpected \"" + *extra + "\" after " + command};
}

nlohmann::json parseObjectJSON(const std::string& text, const std::string& what) {
  using platform::JSONSerialization;
  if (auto problem = JSONSerialization::findLimitProblem(text))
    throw LineError{what + ": " + JSONSerialization::placeOfOffset(text, problem->offset) + ": " + problem->message};
  auto value = JSONSerialization::parse(text, nullptr);
  if (!value) throw LineError{what + ": not valid JSON: " + text};
  if (!value->is_object()) throw LineError{what + ": expected a JSON object, found " + text};
  return std::move(*value);
}

// The script's time after moving on to a later time.
double laterTime(double time, const std::string& what) {
  if (time > sim::ScenarioLoader::kLongestTime) {
    throw LineError{what + ": the script's time would go past " +
                    std::to_string(static_cast<long long>(sim::ScenarioLoader::kLongestTime)) + " seconds"};
  }
  return time;
}

class StepReader {
 public:
  StepReader(const sim::Scenario& scenario, std::string where) : scenario_(scenario), where_(std::move(where)) {}

  // Reads one non-empty line into the step; wait and at only move the time.
  std::optional<ScriptStep> read(const std::string& line, double& time) {
    LineLexer lexer(line);
    auto command = lexer.next();
    if (!command) return std::nullopt;
    ScriptStep step;
    step.time = time;
    if (*command == "wait") {
      time = laterTime(time + parseSeconds(lexer.next(), "wait"), "wait");
      expectEnd(lexer, "wait");
      return std::nullopt;
    }
    if (*command == "at") {
      double at = parseSeconds(lexer.next(), "at");
      if (at < time) {
        std::ostringstream message;
        message << "at " << at << " is earlier than the script's time " << time;
        throw LineError{message.str()};
      }
      time = laterTime(at, "at");
      expectEnd(lexer, "at");
      return std::nullopt;
    }
    readCommand(*command, lexer, step);
    const bool takesJSON = step.kind == ScriptStep::Kind::Event || step.kind == ScriptStep::Kind::Post;
    step.command = takesJSON ? LineLexer::trimmed(line) : LineLexer::withoutComment(line);
    return step;
  }

 private:
  void readCommand(const std::string& command, LineLexer& lexer, ScriptStep& step) {
    using Kind = ScriptStep::Kind;
    if (command == "click") {
      step.kind = Kind::Click;
      step.modifiers = parseModifiers(lexer);
    } else if (command == "choose") {
      step.kind = Kind::Choose;
      auto title = lexer.next();
      if (!title) throw LineError{"choose: expected the title of a menu item"};
      step.title = *title;
      step.modifiers = parseModifiers(lexer);
    } else if (command == "choose-index") {
      step.kind = Kind::ChooseIndex;
      step.index = parseCount(lexer.next(), "choose-index");
      expectEnd(lexer, "choose-index");
    } else if (command == "key") {
      step.kind = Kind::Key;
      auto key = lexer.next();
      if (!key) throw LineError{"key: expected a key"};
      step.key = parseKey(*key);
      step.modifiers = parseModifiers(lexer).value_or(0);
    } else if (command == "dismiss") {
      step.kind = Kind::Dismiss;
      expectEnd(lexer, "dismiss");
    } else if (command == "event") {
      step.kind = Kind::Event;
      step.event = readEvent(lexer.rest());
    } else if (command == "post") {
      step.kind = Kind::Post;
      readPost(lexer, step);
    } else if (command == "self-test") {
      step.kind = Kind::SelfTest;
      auto test = parseCount(lexer.next(), "self-test");
      if (test > 0xFFFFFFFFLL) throw LineError{"self-test: test number too large"};
      step.test = static_cast<std::uint32_t>(test);
      if (auto duration = lexer.next()) step.duration = parseSeconds(duration, "self-test duration");
      expectEnd(lexer, "self-test");
    } else if (command == "wait-for" || command == "wait-for-no") {
      step.kind = Kind::WaitFor;
      step.absent = command == "wait-for-no";
      auto title = lexer.next();
      if (!title) throw LineError{command + ": expected the title of a menu item"};
      step.title = *title;
      step.duration = kDefaultWaitForLimit;
      if (auto limit = lexer.next()) step.duration = parseSeconds(limit, command);
      expectEnd(lexer, command);
    } else if (command == "note") {
      step.kind = Kind::Note;
      auto text = lexer.next();
      if (!text) throw LineError{"note: expected a text"};
      step.title = *text;
      expectEnd(lexer, "note");
    } else if (command == "unload") {
      step.kind = Kind::Unload;
      expectEnd(lexer, "unload");
    } else {
      throw LineError{"unknown command \"" + command + "\" (commands: " + kCommands + ")"};
    }
  }

  sim::SimEvent readEvent(const std::string& text) {
    if (text.empty()) throw LineError{"event: expected a JSON event such as {\"type\": \"buddy-offline\", …}"};
    auto json = parseObjectJSON(text, "event");
    if (json.contains("at"))
      throw LineError{"event: leave out \"at\"; the event happens at the script's time (use wait or at)"};
    try {
      return sim::ScenarioLoader::parseEvent(json, scenario_, where_ + ": event", "$");
    } catch (const sim::ScenarioError& error) {
      throw LineError{std::string(error.what()).substr(where_.size() + 2)};
    }
  }

  void readPost(LineLexer& lexer, ScriptStep& step) {
    auto centre = lexer.next();
    static const char* const centres = "distributed, default, service or workspace";
    if (!centre) throw LineError{std::string("post: expected a centre: ") + centres};
    if (*centre != "distributed" && *centre != "default" && *centre != "service" && *centre != "workspace")
      throw LineError{"post: unknown centre \"" + *centre + "\" (centres: " + centres + ")"};
    step.centre = *centre;
    auto name = lexer.next();
    if (!name) throw LineError{"post: expected a notification name"};
    step.name = *name;
    if (lexer.nextIsObject()) {
      step.userInfo = parseObjectJSON(lexer.rest(), "post user info");
      return;
    }
    if (auto object = lexer.next(); object && *object != "nil" && *object != "null") step.object = *object;
    if (lexer.nextIsObject())
      step.userInfo = parseObjectJSON(lexer.rest(), "post user info");
    else
      expectEnd(lexer, "post");
  }

  const sim::Scenario& scenario_;
  std::string where_;
};

}  // namespace

Script ScriptParser::parse(const std::string& text, const std::string& source, const sim::Scenario& scenario) {
  Script script;
  script.source = source;
  std::istringstream in(text);
  std::string line;
  double time = 0;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::string where = source + ":" + std::to_string(number);
    try {
      StepReader reader(scenario, where);
      if (auto step = reader.read(line, time)) {
        step->line = number;
        script.steps.push_back(std::move(*step));
      }
    } catch (const LineError& error) {
      throw ScriptError(where + ": " + error.message);
    }
  }
  script.endTime = time;
  return script;
}

Script ScriptParser::loadFile(const std::filesystem::path& path, const sim::Scenario& scenario) {
  auto file = platform::InputFile::read(path);
  if (!file.ok()) throw ScriptError(path.string() + ": " + file.problem());
  return parse(file.text, path.string(), scenario);
}

}  // namespace kibhost
