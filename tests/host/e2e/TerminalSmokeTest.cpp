// The terminal frontend under a pseudo-terminal (tmux): it draws the bar and
// the world, opens the menu on Enter, closes it on Escape, quits on q and
// gives the terminal back as it found it.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "tests/host/e2e/E2ETest.h"
#include "tests/support/ChildProcess.h"

namespace {

using kibtest::E2ETest;

// A private tmux server that runs one command in a detached session.
class Tmux {
 public:
  explicit Tmux(std::string socket) : socket_(std::move(socket)) {}
  ~Tmux() { run("kill-server 2>/dev/null"); }

  static bool available() { return std::system("tmux -V > /dev/null 2>&1") == 0; }

  bool start(const std::string& command, int columns, int rows) {
    return run("new-session -d -s smoke -x " + std::to_string(columns) + " -y " + std::to_string(rows) + " " +
               quote(command)) == 0;
  }
  void sendKeys(const std::string& keys) { run("send-keys -t smoke " + keys); }
  // Bytes as the terminal would send them (mouse reports).
  void sendBytes(const std::string& bytes) { run("send-keys -t smoke -l " + quote(bytes)); }
  std::string capture() {
    std::string text;
    FILE* pipe = popen(("tmux -L " + socket_ + " capture-pane -p -t smoke 2>/dev/null").c_str(), "r");
    if (!pipe) return text;
    char buffer[4096];
    std::size_t count;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, count);
    pclose(pipe);
    return text;
  }
  // Polls the screen until it satisfies the condition or the time is up.
  template <class Condition>
  bool waitFor(Condition condition, double seconds = 10) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
      if (condition(capture())) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
  }

  static std::string quote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
  }

 private:
  int run(const std::string& arguments) { return std::system(("tmux -L " + socket_ + " " + arguments).c_str()); }

  std::string socket_;
};

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The column (in characters) where a part of the screen's first row starts, or -1.
int columnOf(const std::string& screen, const std::string& part) {
  const std::string row = screen.substr(0, screen.find('\n'));
  const auto at = row.find(part);
  if (at == std::string::npos) return -1;
  int column = 0;
  for (std::size_t i = 0; i < at; ++i)
    if ((static_cast<unsigned char>(row[i]) & 0xC0) != 0x80) ++column;
  return column;
}

// The extra's own bundle when it is built, else the host's test extra; and a title in its menu.
std::pair<std::string, std::string> bundleAndTitle() {
  const auto parlo = kibtest::environmentPath("KIB_EXTRA_BUNDLE");
  if (std::filesystem::exists(parlo / "Info.json")) return {parlo.string(), "My Status:"};
  return {kibtest::testBundle(), "Say Hello"};
}

bool sane(const std::string& settings) {
  return contains(settings, " icanon") && !contains(settings, "-icanon") && contains(settings, " echo ") &&
         !contains(settings, "-echo ");
}

TEST_F(E2ETest, TheTerminalFrontendOpensTheMenuAndQuitsCleanly) {
  if (!Tmux::available()) GTEST_SKIP() << "tmux is not installed";
  const auto [bundle, firstItem] = bundleAndTitle();

  const auto exitFile = dir / "exit.txt";
  const auto sttyFile = dir / "stty.txt";
  const std::string command = "KIBBAR_CONFIG_DIR=" + Tmux::quote((dir / "prefs").string()) + " " +
                              Tmux::quote(kibtest::environmentPath("KIBBAR").string()) + " --bundle " +
                              Tmux::quote(bundle) + "; echo $? > " + Tmux::quote(exitFile.string()) + "; stty -a > " +
                              Tmux::quote(sttyFile.string());
  Tmux tmux("kibbar-smoke-" + std::to_string(getpid()));
  ASSERT_TRUE(tmux.start("sh -c " + Tmux::quote(command), 110, 32));

  ASSERT_TRUE(tmux.waitFor([](const std::string& screen) {
    return contains(screen, " kibbar ") && contains(screen, "Simulated world") && contains(screen, "(•)");
  })) << tmux.capture();
  EXPECT_FALSE(contains(tmux.capture(), "┌"));

  tmux.sendKeys("Enter");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) {
    return contains(screen, "┌") && contains(screen, firstItem) && contains(screen, "Esc close");
  })) << tmux.capture();

  tmux.sendKeys("Escape");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) { return !contains(screen, "┌"); })) << tmux.capture();

  // Keys typed ahead of the menu reach it once it is open.
  auto closes = [](const std::string& screen) {
    int count = 0;
    for (auto at = screen.find("menu-close"); at != std::string::npos; at = screen.find("menu-close", at + 1)) ++count;
    return count;
  };
  ASSERT_EQ(closes(tmux.capture()), 1) << tmux.capture();
  tmux.sendKeys("Enter Escape");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) { return closes(screen) == 2 && !contains(screen, "┌"); }))
      << tmux.capture();

  tmux.sendKeys("q");
  ASSERT_TRUE(tmux.waitFor([&](const std::string&) { return std::filesystem::exists(sttyFile); })) << tmux.capture();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // stty's output is complete
  EXPECT_EQ(kibtest::readFile(exitFile), "0\n");
  EXPECT_TRUE(sane(kibtest::readFile(sttyFile))) << kibtest::readFile(sttyFile);
}

TEST_F(E2ETest, AClickOnTheSlotOpensTheMenuAndATerminationSignalRestoresTheTerminal) {
  if (!Tmux::available()) GTEST_SKIP() << "tmux is not installed";
  const auto [bundle, firstItem] = bundleAndTitle();
  const auto pidFile = dir / "pid.txt";
  const auto exitFile = dir / "exit.txt";
  const auto sttyFile = dir / "stty.txt";
  const std::string program = "echo $$ > " + Tmux::quote(pidFile.string()) +
                              "; exec env KIBBAR_CONFIG_DIR=" + Tmux::quote((dir / "prefs").string()) + " " +
                              Tmux::quote(kibtest::environmentPath("KIBBAR").string()) + " --bundle " +
                              Tmux::quote(bundle);
  const std::string command = "sh -c " + Tmux::quote(program) + "; echo $? > " + Tmux::quote(exitFile.string()) +
                              "; stty -a > " + Tmux::quote(sttyFile.string());
  Tmux tmux("kibbar-signal-" + std::to_string(getpid()));
  ASSERT_TRUE(tmux.start("sh -c " + Tmux::quote(command), 110, 40));
  ASSERT_TRUE(tmux.waitFor([](const std::string& screen) { return columnOf(screen, "(•)") > 0; })) << tmux.capture();

  // A left-button press on the slot, as an SGR mouse report (columns and rows from 1).
  const int column = columnOf(tmux.capture(), "(•)") + 2;
  tmux.sendBytes("\x1b[<0;" + std::to_string(column) + ";1M\x1b[<0;" + std::to_string(column) + ";1m");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) { return contains(screen, firstItem); })) << tmux.capture();

  ASSERT_TRUE(std::filesystem::exists(pidFile));
  const pid_t pid = std::stoi(kibtest::readFile(pidFile));
  ASSERT_EQ(kill(pid, SIGTERM), 0);
  ASSERT_TRUE(tmux.waitFor([&](const std::string&) { return std::filesystem::exists(sttyFile); })) << tmux.capture();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(kibtest::readFile(exitFile), "143\n") << "128 + SIGTERM, after a clean shutdown";
  EXPECT_TRUE(sane(kibtest::readFile(sttyFile))) << kibtest::readFile(sttyFile);
}

}  // namespace

// Over a libpurple client that is not running: the panel shows the client's
// side, the menu is the not-connected one, and the world keys refuse politely.
TEST_F(E2ETest, TheTerminalFrontendOverAnAbsentLibpurpleClient) {
  if (!Tmux::available() || std::system("command -v dbus-daemon > /dev/null") != 0)
    GTEST_SKIP() << "tmux or dbus-daemon is not installed";
  const auto parlo = kibtest::environmentPath("KIB_EXTRA_BUNDLE");
  if (!std::filesystem::exists(parlo / "Info.json")) GTEST_SKIP() << "the extra is not built";

  const auto exitFile = dir / "exit.txt";
  // A private session bus, ended by its PID whatever happens to the test.
  kibtest::PrivateBus bus;
  const std::string command = "KIBBAR_CONFIG_DIR=" + Tmux::quote((dir / "prefs").string()) +
                              " DBUS_SESSION_BUS_ADDRESS=" + Tmux::quote(bus.address()) + " " +
                              Tmux::quote(kibtest::environmentPath("KIBBAR").string()) + " --backend purple; echo $? > " +
                              Tmux::quote(exitFile.string());
  Tmux tmux("kibbar-purple-" + std::to_string(getpid()));
  ASSERT_TRUE(tmux.start("sh -c " + Tmux::quote(command), 110, 32));
  ASSERT_TRUE(tmux.waitFor([](const std::string& screen) {
    return contains(screen, "Messaging client · purple") && contains(screen, "(•)");
  })) << tmux.capture();

  tmux.sendKeys("Enter");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) {
    return contains(screen, "┌") && contains(screen, "No Account Enabled") && contains(screen, "Open Parlo");
  })) << tmux.capture();
  tmux.sendKeys("Escape");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) { return !contains(screen, "┌"); })) << tmux.capture();

  tmux.sendKeys("+");
  ASSERT_TRUE(tmux.waitFor([&](const std::string& screen) { return contains(screen, "change it in the client"); }))
      << tmux.capture();

  tmux.sendKeys("q");
  ASSERT_TRUE(tmux.waitFor([&](const std::string&) { return std::filesystem::exists(exitFile); })) << tmux.capture();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the status is written whole
  EXPECT_EQ(kibtest::readFile(exitFile), "0\n");
}
