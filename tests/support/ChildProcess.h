#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace kibtest {

// A program a test starts and ends itself, by its PID: the destructor sends
// SIGTERM, waits a bounded time and then sends SIGKILL. Standard output can be
// captured through a pipe for programs that print what the test needs
// (an address, a ready line).
class ChildProcess {
 public:
  struct Options {
    std::vector<std::string> environment;  // extra NAME=VALUE entries
    bool captureOutput = false;
    std::string workingDirectory;
  };

  ChildProcess(const std::vector<std::string>& argv, const Options& options);
  explicit ChildProcess(const std::vector<std::string>& argv) : ChildProcess(argv, Options{}) {}
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool isRunning();
  // Reads one line of captured output, waiting at most the timeout; false at the end or on time-out.
  bool readLine(std::string& line, std::chrono::milliseconds timeout);
  // SIGTERM, then SIGKILL after the grace time; answers the exit status (−1 when killed or unknown).
  int stop(std::chrono::milliseconds grace = std::chrono::milliseconds(3000));

 private:
  pid_t pid_ = -1;
  int output_ = -1;
  std::string buffered_;
  int status_ = -1;
};

// A private message bus for one test: `dbus-daemon --session` on its own
// socket, ended by PID when the object goes.
class PrivateBus {
 public:
  PrivateBus();
  const std::string& address() const { return address_; }
  pid_t pid() const { return daemon_.pid(); }
  bool isRunning() { return daemon_.isRunning(); }
  void stop() { daemon_.stop(); }

 private:
  ChildProcess daemon_;
  std::string address_;
};

}  // namespace kibtest
