#include "host/SignalPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kibhost {
namespace {

// The write end for the handler; one pipe at a time.
volatile sig_atomic_t writeEnd = -1;

}  // namespace

SignalPipe::SignalPipe(std::vector<int> signals) : signals_(std::move(signals)) {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) {
    pipe_[0] = pipe_[1] = -1;
    return;
  }
  writeEnd = pipe_[1];
  for (int signal : signals_) {
    struct sigaction action {};
    struct sigaction old {};
    action.sa_handler = &SignalPipe::handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, &old);
    previous_.push_back(old);
  }
}

SignalPipe::~SignalPipe() {
  for (std::size_t i = 0; i < previous_.size(); ++i) sigaction(signals_[i], &previous_[i], nullptr);
  writeEnd = -1;
  if (pipe_[0] >= 0) {
    close(pipe_[0]);
    close(pipe_[1]);
  }
}

void SignalPipe::handler(int signal) {
  const int fd = writeEnd;
  if (fd < 0) return;
  const int savedErrno = errno;
  const unsigned char byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] auto written = write(fd, &byte, 1);
  errno = savedErrno;
}

std::vector<int> SignalPipe::take() {
  std::vector<int> received;
  unsigned char buffer[64];
  ssize_t count;
  while ((count = read(pipe_[0], buffer, sizeof buffer)) > 0)
    for (ssize_t i = 0; i < count; ++i) received.push_back(buffer[i]);
  return received;
}

}  // namespace kibhost
