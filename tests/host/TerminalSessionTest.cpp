#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "host/TerminalSession.h"

namespace {

volatile bool keepRecursing = true;

// Uses up the stack until the process gets SIGSEGV.
int overflowTheStack(int depth) {
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  if (keepRecursing) return overflowTheStack(depth + 1) + frame[0];
  return frame[0];
}

// Everything the terminal received until the child ended (bounded: 10 s); its wait status.
std::string drainUntilExit(int master, pid_t child, int& status) {
  std::string output;
  char buffer[4096];
  bool ended = false;
  for (int turns = 0; turns < 100; ++turns) {
    pollfd fd{master, POLLIN, 0};
    if (poll(&fd, 1, 100) > 0) {
      ssize_t count = read(master, buffer, sizeof buffer);
      if (count > 0) {
        output.append(buffer, static_cast<std::size_t>(count));
        continue;
      }
    }
    if (ended) break;
    ended = waitpid(child, &status, WNOHANG) == child;
  }
  if (!ended) {
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
  }
  return output;
}

TEST(TerminalSessionTest, AStackOverflowStillGivesTheTerminalBack) {
  int master = -1, terminal = -1;
  ASSERT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  termios before{};
  ASSERT_EQ(tcgetattr(terminal, &before), 0);
  ASSERT_TRUE(before.c_lflag & ECHO);

  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    kibhost::TerminalSession session;
    if (!session.begin(terminal, terminal)) _exit(3);
    _exit(overflowTheStack(0) == 0 ? 4 : 5);
  }
  int status = 0;
  const std::string output = drainUntilExit(master, child, status);
  ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << (WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  EXPECT_EQ(WTERMSIG(status), SIGSEGV);

  EXPECT_NE(output.find("\x1b[?1049h"), std::string::npos) << "the session took the alternate screen";
  EXPECT_NE(output.find("\x1b[?25h\x1b[?1049l"), std::string::npos) << "and gave it back with the cursor";
  termios after{};
  ASSERT_EQ(tcgetattr(terminal, &after), 0);
  EXPECT_TRUE(after.c_lflag & ECHO) << "echo is on again";
  EXPECT_TRUE(after.c_lflag & ICANON);
  close(terminal);
  close(master);
}

}  // namespace
