#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace kibtest {
namespace {

using Clock = std::chrono::steady_clock;

std::vector<char*> pointersTo(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (auto& s : strings) pointers.push_back(s.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const Options& options) {
  if (argv.empty()) throw std::invalid_argument("ChildProcess: no program");
  int pipeFds[2] = {-1, -1};
  if (options.captureOutput && pipe2(pipeFds, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  auto arguments = argv;
  auto environment = options.environment;
  auto argPointers = pointersTo(arguments);
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error(std::string("fork failed: ") + std::strerror(errno));
  if (pid_ == 0) {
    // Its own process group, so a terminal's signals meant for the test do not reach it.
    setpgid(0, 0);
    if (options.captureOutput) dup2(pipeFds[1], STDOUT_FILENO);
    int null = open("/dev/null", O_RDONLY);
    if (null >= 0) dup2(null, STDIN_FILENO);
    if (!options.workingDirectory.empty() && chdir(options.workingDirectory.c_str()) != 0) _exit(126);
    for (auto& entry : environment) putenv(entry.data());
    execvp(argPointers[0], argPointers.data());
    _exit(127);
  }
  if (options.captureOutput) {
    close(pipeFds[1]);
    output_ = pipeFds[0];
  }
}

ChildProcess::~ChildProcess() {
  stop();
  if (output_ >= 0) close(output_);
}

bool ChildProcess::isRunning() {
  if (pid_ <= 0) return false;
  int status = 0;
  pid_t done = waitpid(pid_, &status, WNOHANG);
  if (done == 0) return true;
  status_ = done == pid_ && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  pid_ = -1;
  return false;
}

bool ChildProcess::readLine(std::string& line, std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  while (true) {
    if (auto newline = buffered_.find('\n'); newline != std::string::npos) {
      line = buffered_.substr(0, newline);
      buffered_.erase(0, newline + 1);
      return true;
    }
    if (output_ < 0) return false;
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    pollfd fd{output_, POLLIN, 0};
    if (poll(&fd, 1, static_cast<int>(left)) <= 0) continue;
    char chunk[512];
    ssize_t n = read(output_, chunk, sizeof chunk);
    if (n <= 0) return false;
    buffered_.append(chunk, static_cast<std::size_t>(n));
  }
}

int ChildProcess::stop(std::chrono::milliseconds grace) {
  if (pid_ <= 0) return status_;
  kill(pid_, SIGTERM);
  const auto deadline = Clock::now() + grace;
  while (isRunning()) {
    if (Clock::now() >= deadline) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
      pid_ = -1;
      status_ = -1;
      break;
    }
    // Real processes end in real time; this bounded poll is the only way to wait for them.
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return status_;
}

PrivateBus::PrivateBus()
    : daemon_({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"}, {{}, true, {}}) {
  if (!daemon_.readLine(address_, std::chrono::seconds(10)) || address_.empty())
    throw std::runtime_error("dbus-daemon did not print its address");
}

}  // namespace kibtest
