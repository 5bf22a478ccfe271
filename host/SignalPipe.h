#pragma once

#include <csignal>
#include <vector>

namespace kibhost {

// Turns signals into bytes on a pipe that the run loop watches, so that the
// program reacts to them on its main thread and not inside a handler. The
// previous handlers come back when the pipe goes away.
class SignalPipe {
 public:
  explicit SignalPipe(std::vector<int> signals);
  ~SignalPipe();
  SignalPipe(const SignalPipe&) = delete;
  SignalPipe& operator=(const SignalPipe&) = delete;

  // The descriptor to watch; -1 when the pipe could not be made.
  int fd() const { return pipe_[0]; }
  // The signals received since the last call, in order.
  std::vector<int> take();

 private:
  static void handler(int signal);

  int pipe_[2] = {-1, -1};
  std::vector<int> signals_;
  std::vector<struct sigaction> previous_;
};

}  // namespace kibhost
