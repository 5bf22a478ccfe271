// The terminal frontend under a pseudo-terminal (tmux): it draws the bar and
// the world, opens the menu on Enter, closes it on Escape, quits on q and
// gives the terminal back as it found it.
#include <chrono>
#include <cstdio>
#include <thread>

#include "tests/host/e2e/E2ETest.h"

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

TEST_F(E2ETest, TheTerminalFrontendOpensTheMenuAndQuitsCleanly) {
  if (!Tmux::available()) GTEST_SKIP() << "tmux is not installed";
  // The extra's own bundle when it is built, else the host's test extra.
  const auto parlo = kibtest::environmentPath("KIB_EXTRA_BUNDLE");
  const bool real = std::filesystem::exists(parlo / "Info.json");
  const std::string bundle = real ? parlo.string() : kibtest::testBundle();
  const std::string firstItem = real ? "My Status:" : "Say Hello";

  const auto exitFile = dir / "exit.txt";
  const auto sttyFile = dir / "stty.txt";
  const std::string command = "KIBBAR_CONFIG_DIR=" + Tmux::quote((dir / "prefs").string()) + " " +
                              Tmux::quote(kibtest::environmentPath("KIBBAR").string()) + " --bundle " +
                              Tmux::quote(bundle) + "; echo $? > " + Tmux::quote(exitFile.string()) +
                              "; stty -a > " + Tmux::quote(sttyFile.string());
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

  tmux.sendKeys("q");
  ASSERT_TRUE(tmux.waitFor([&](const std::string&) { return std::filesystem::exists(sttyFile); })) << tmux.capture();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // stty's output is complete
  EXPECT_EQ(kibtest::readFile(exitFile), "0\n");
  const auto settings = kibtest::readFile(sttyFile);
  EXPECT_TRUE(contains(settings, " icanon") && !contains(settings, "-icanon")) << settings;
  EXPECT_TRUE(contains(settings, " echo ") && !contains(settings, "-echo ")) << settings;
}

}  // namespace
