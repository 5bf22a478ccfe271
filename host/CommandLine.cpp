#include "host/CommandLine.h"

#include <cerrno>
#include <cstdlib>

namespace kibhost {
namespace {

// Splits "--name=value" into its parts.
std::pair<std::string, std::optional<std::string>> splitOption(const std::string& argument) {
  auto equals = argument.find('=');
  if (argument.rfind("--", 0) != 0 || equals == std::string::npos) return {argument, std::nullopt};
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

std::uint32_t parseTestNumber(const std::string& text) {
  errno = 0;
  char* end = nullptr;
  unsigned long long value = std::strtoull(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || errno != 0 || text[0] == '-' || value > 0xFFFFFFFFULL)
    throw UsageError("--self-test needs a test number (0 for all), not \"" + text + "\"");
  return static_cast<std::uint32_t>(value);
}

}  // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
  CommandLine line;
  bool help = false;
  bool version = false;
  bool selfTest = false;
  bool backendGiven = false;
  bool panel = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    auto [name, inlineValue] = splitOption(arguments[i]);
    auto value = [&, name = name, inlineValue = inlineValue](const char* what) -> std::string {
      if (inlineValue) {
        if (inlineValue->empty()) throw UsageError(name + " needs " + what);
        return *inlineValue;
      }
      if (i + 1 >= arguments.size() || arguments[i + 1].empty()) throw UsageError(name + " needs " + what);
      return arguments[++i];
    };
    auto once = [&, name = name](std::optional<std::string>& slot, const char* what) {
      if (slot) throw UsageError(name + " is given twice");
      slot = value(what);
    };
    if (name == "--help" || name == "-h") {
      help = true;
    } else if (name == "--version") {
      version = true;
    } else if (name == "--pictures") {
      once(line.pictures, "a folder");
    } else if (name == "--scenario") {
      once(line.scenario, "a scenario file");
    } else if (name == "--bundle") {
      once(line.bundle, "a bundle folder");
    } else if (name == "--script") {
      once(line.script, "a script file");
    } else if (name == "--transcript") {
      once(line.transcript, "a file, or - for standard output");
    } else if (name == "--self-test") {
      if (selfTest) throw UsageError("--self-test is given twice");
      selfTest = true;
      line.selfTest = parseTestNumber(value("a test number"));
    } else if (name == "--backend") {
      if (backendGiven) throw UsageError("--backend is given twice");
      backendGiven = true;
      line.backend = value("sim or purple");
      if (line.backend != "sim" && line.backend != "purple")
        throw UsageError("--backend needs sim or purple, not \"" + line.backend + "\"");
    } else if (name == "--panel") {
      panel = true;
    } else if (name == "--no-queries") {
      line.daemonQueries = false;
    } else if (name.rfind("-", 0) == 0 && name.size() > 1) {
      throw UsageError("unknown option " + name + " (kibbar --help lists the options)");
    } else {
      throw UsageError("unexpected argument \"" + arguments[i] + "\" (kibbar --help lists the options)");
    }
  }
  if (help) {
    line.mode = Mode::Help;
    return line;
  }
  if (version) {
    line.mode = Mode::Version;
    return line;
  }
  if (line.backend == "purple" && line.scenario)
    throw UsageError("--scenario is for the simulated world, not --backend purple");
  if (selfTest && line.script) throw UsageError("--script and --self-test cannot be used together");
  if (panel && (selfTest || line.script)) throw UsageError("--panel cannot be used with --script or --self-test");
  if (panel)
    line.mode = Mode::Panel;
  else if (selfTest)
    line.mode = Mode::SelfTest;
  else if (line.script)
    line.mode = Mode::Script;
  if ((line.mode == Mode::Terminal || line.mode == Mode::Panel) && line.pictures)
    throw UsageError("--pictures draws a headless run; give --script FILE or --self-test N");
  if (line.mode == Mode::Terminal && line.transcript && *line.transcript == "-")
    throw UsageError("--transcript - writes to standard output, which the terminal frontend uses; give a file");
  return line;
}

std::string CommandLine::usage() {
  return R"(Usage: kibbar [--backend sim|purple] [--scenario FILE] [--bundle DIR] [--transcript FILE]
       kibbar [--backend sim|purple] [--scenario FILE] [--bundle DIR] --script FILE [--transcript FILE|-]
              [--no-queries] [--pictures DIR]
       kibbar [--scenario FILE] [--bundle DIR] --self-test N [--transcript FILE|-] [--pictures DIR]
       kibbar [--scenario FILE] [--bundle DIR] --panel [--transcript FILE|-]
       kibbar --version

The status-bar program. It loads a menu-bar extra from its bundle and shows it
on a simulated messaging world.

Without --script or --self-test it runs the terminal frontend on the real
clock: a menu bar with the extra's slot, its menu on a click or Enter, and a
panel with the simulated world and keys that change it.

  --scenario FILE     the simulated world (docs/scenario.md); the built-in scenario without
  --bundle DIR        the extra's bundle; build/bundles/Parlo.menuextra without
  --script FILE       play a script of timed actions headless, on a virtual clock (docs/script.md)
  --transcript FILE   write everything observable as JSON lines ("-": standard output, the
                      default with --script)
  --backend NAME      the messaging daemon: sim (the simulated world, the default) or purple
                      (a running Pidgin or Finch on the session bus; docs/purple.md)
  --no-queries        leave the daemon's queries (isConnected, ...) out of the transcript
  --panel             show the extra in the desktop's panel as a StatusNotifierItem with its
                      menu over com.canonical.dbusmenu, on the real clock (docs/panel.md)
  --self-test N       run the extra's self-test N (0 for all) headless and print its test log
  --pictures DIR      with --script or --self-test: draw the slot at each change and every menu
                      that pops up as numbered PNGs in DIR, at 1x and 2x, light and dark
  --version           the program's name and version
  --help              this text

Exit status: 0 done, 1 a script step or the self-test could not be carried out
or a picture could not be written, 2 a bad command line, scenario, script or bundle
(or, with --panel or --backend purple, no session bus).
)";
}

}  // namespace kibhost
