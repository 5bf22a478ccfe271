#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/HostTestSupport.h"

extern char** environ;

namespace kibtest {

inline std::filesystem::path sourcePath(const std::string& relative) {
  return environmentPath("KIB_TEST_SOURCE_DIR") / relative;
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// One run of the kibbar program.
struct KibbarRun {
  int status = -1;  // the exit status, or 128 + the signal that ended it
  std::string out;
  std::string errors;

  std::vector<nlohmann::ordered_json> transcript() const {
    std::vector<nlohmann::ordered_json> lines;
    std::istringstream in(out);
    std::string line;
    while (std::getline(in, line))
      if (!line.empty()) lines.push_back(nlohmann::ordered_json::parse(line));
    return lines;
  }
};

// Runs the program built with the tests (KIBBAR) with the arguments and extra
// environment variables; standard input is /dev/null, standard output a file
// of the work folder unless another is given (/dev/full).
inline KibbarRun runKibbar(const std::vector<std::string>& arguments, const std::filesystem::path& workDir,
                           const std::map<std::string, std::string>& environment = {},
                           const std::filesystem::path& standardOutput = {}) {
  std::filesystem::create_directories(workDir);
  const auto outPath = standardOutput.empty() ? workDir / "stdout.txt" : standardOutput;
  const auto errPath = workDir / "stderr.txt";
  const std::string program = environmentPath("KIBBAR").string();

  std::vector<std::string> argvStrings{program};
  argvStrings.insert(argvStrings.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (auto& argument : argvStrings) argv.push_back(argument.data());
  argv.push_back(nullptr);

  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry; ++entry) {
    std::string text(*entry);
    auto equals = text.find('=');
    if (equals != std::string::npos) variables[text.substr(0, equals)] = text.substr(equals + 1);
  }
  for (const auto& [name, value] : environment) variables[name] = value;
  std::vector<std::string> envStrings;
  for (const auto& [name, value] : variables) envStrings.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (auto& entry : envStrings) envp.push_back(entry.data());
  envp.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t pid = 0;
  KibbarRun run;
  if (posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data()) == 0) {
    int status = 0;
    waitpid(pid, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  posix_spawn_file_actions_destroy(&actions);
  if (standardOutput.empty()) run.out = readFile(outPath);
  run.errors = readFile(errPath);
  return run;
}

}  // namespace kibtest
