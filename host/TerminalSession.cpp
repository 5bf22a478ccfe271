#include "host/TerminalSession.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace kibhost {
namespace {

// Alternate screen, hidden cursor, mouse presses reported in SGR form.
constexpr std::string_view kEnterSequence = "\x1b[?1049h\x1b[?25l\x1b[?1000h\x1b[?1006h\x1b[2J";
constexpr std::string_view kLeaveSequence = "\x1b[?1000l\x1b[?1006l\x1b[0m\x1b[?25h\x1b[?1049l";

// What the signal and exit handlers need to give the terminal back; set while
// a session is active. Plain data, read from a signal handler.
volatile sig_atomic_t activeSession = 0;
int sessionInput = -1;
int sessionOutput = -1;
struct termios sessionSaved {};

constexpr int kFatalSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGQUIT};

void restoreTerminal() {
  if (!activeSession) return;
  activeSession = 0;
  [[maybe_unused]] auto written = ::write(sessionOutput, kLeaveSequence.data(), kLeaveSequence.size());
  tcsetattr(sessionInput, TCSAFLUSH, &sessionSaved);
}

}  // namespace

bool TerminalSession::begin(int inputFd, int outputFd) {
  if (!isatty(inputFd) || !isatty(outputFd) || tcgetattr(inputFd, &saved_) != 0) return false;
  input_ = inputFd;
  output_ = outputFd;
  static bool exitHandlerInstalled = false;
  if (!exitHandlerInstalled) {
    std::atexit(&TerminalSession::restoreAtExit);
    exitHandlerInstalled = true;
  }
  installFatalSignalHandlers();
  enter();
  return true;
}

TerminalSession::~TerminalSession() { leave(); }

void TerminalSession::enter() {
  if (active_ || input_ < 0) return;
  struct termios raw = saved_;
  raw.c_iflag &= ~static_cast<tcflag_t>(BRKINT | ICRNL | INPCK | ISTRIP | IXON);
  raw.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | IEXTEN | ISIG);
  raw.c_cflag |= CS8;
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  sessionInput = input_;
  sessionOutput = output_;
  sessionSaved = saved_;
  tcsetattr(input_, TCSAFLUSH, &raw);
  activeSession = 1;
  active_ = true;
  write(kEnterSequence);
}

void TerminalSession::leave() {
  if (!active_) return;
  active_ = false;
  restoreTerminal();
}

void TerminalSession::size(int& columns, int& rows) const {
  struct winsize size {};
  if (ioctl(output_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0) {
    columns = size.ws_col;
    rows = size.ws_row;
  } else {
    columns = 80;
    rows = 24;
  }
}

void TerminalSession::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    ssize_t written = ::write(output_, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR || errno == EAGAIN) continue;
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void TerminalSession::restoreFromSignal(int signal) {
  restoreTerminal();
  ::signal(signal, SIG_DFL);
  raise(signal);
}

void TerminalSession::restoreAtExit() { restoreTerminal(); }

void TerminalSession::installFatalSignalHandlers() {
  installAlternateSignalStack();
  for (int signal : kFatalSignals) {
    struct sigaction action {};
    action.sa_handler = &TerminalSession::restoreFromSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESETHAND | SA_ONSTACK;
    sigaction(signal, &action, nullptr);
  }
}

// A stack overflow leaves no room on the thread's own stack for the handler;
// it runs on a stack of its own.
void TerminalSession::installAlternateSignalStack() {
  alignas(16) static char memory[64 * 1024];
  stack_t stack{};
  stack.ss_sp = memory;
  stack.ss_size = sizeof memory;
  sigaltstack(&stack, nullptr);
}

}  // namespace kibhost
