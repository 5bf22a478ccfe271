#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kibhost {

// A command line that cannot be run; the message is one line without the program's name.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The program's options (kibbar --help).
struct CommandLine {
  enum class Mode { Terminal, Script, SelfTest, Panel, Help, Version };

  Mode mode = Mode::Terminal;
  std::optional<std::string> scenario;    // --scenario FILE; the built-in scenario without
  std::optional<std::string> bundle;      // --bundle DIR; the extra's bundle next to the program without
  std::optional<std::string> script;      // --script FILE
  std::optional<std::string> transcript;  // --transcript FILE, "-" for standard output
  std::uint32_t selfTest = 0;             // --self-test N
  bool daemonQueries = true;              // --no-queries leaves daemon queries out of transcripts
  std::optional<std::string> pictures;    // --pictures DIR: PNGs of the slot and the menus of a headless run
  std::string backend = "sim";            // --backend sim|purple: the simulated world or a libpurple client

  static CommandLine parse(const std::vector<std::string>& arguments);
  static std::string usage();
};

}  // namespace kibhost
