#pragma once

#include <termios.h>

#include <string_view>

namespace kibhost {

// The terminal in the frontend's hands: raw input (no echo, no line editing,
// no signals from keys), the alternate screen, a hidden cursor and mouse
// reporting. The terminal is given back as it was when the session ends, when
// the program exits, and when a fatal signal (segmentation fault, abort, …)
// kills it; leave() and enter() bracket a suspension.
class TerminalSession {
 public:
  // Takes the terminal on the descriptors; false when they are not a terminal.
  bool begin(int inputFd, int outputFd);
  ~TerminalSession();

  // Gives the terminal back (idempotent).
  void leave();
  // Takes it again after leave().
  void enter();
  bool isActive() const { return active_; }

  // The terminal's size in columns and rows (80×24 when it cannot be asked).
  void size(int& columns, int& rows) const;
  // Writes everything, retrying after interruptions.
  void write(std::string_view bytes) const;

 private:
  static void restoreFromSignal(int signal);
  static void restoreAtExit();
  void installFatalSignalHandlers();
  static void installAlternateSignalStack();

  int input_ = -1;
  int output_ = -1;
  struct termios saved_ {};
  bool active_ = false;
};

}  // namespace kibhost
