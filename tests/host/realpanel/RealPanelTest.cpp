// kibbar --panel in a real panel: Xvfb, a private session bus, xfconfd and
// xfce4-panel with its status-notifier plugin; xdotool clicks, ImageMagick
// photographs. Every process is ended by its PID (ChildProcess), every wait is bounded.
#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <thread>

#include "tests/support/ChildProcess.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using json = nlohmann::json;
using Node = sdbus::Struct<std::int32_t, std::map<std::string, sdbus::Variant>, std::vector<sdbus::Variant>>;

std::string env(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// Runs a short command (bounded by timeout(1)) and answers its standard output.
std::string run(const std::string& command) {
  std::string output;
  FILE* pipe = popen(("timeout 20 " + command + " 2>/dev/null").c_str(), "r");
  if (!pipe) return output;
  std::array<char, 4096> buffer;
  std::size_t count;
  while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) output.append(buffer.data(), count);
  pclose(pipe);
  return output;
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    // Real programs in real time: a bounded poll is the only way to wait for them.
    std::this_thread::sleep_for(100ms);
  }
  return true;
}

struct Rect {
  int x = 0, y = 0, width = 0, height = 0;
};

// A gray picture of part of the screen, one byte per pixel.
struct GrayPicture {
  int width = 0, height = 0;
  std::vector<unsigned char> pixels;
  int at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
  int background() const {
    std::map<int, int> counts;
    for (auto p : pixels) ++counts[p];
    return std::max_element(counts.begin(), counts.end(), [](auto& a, auto& b) { return a.second < b.second; })->first;
  }
};

class RealPanelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* tool : {"Xvfb", "xfce4-panel", "xdotool", "import", "convert", "xwininfo", "dbus-daemon"})
      if (run(std::string("sh -c 'command -v ") + tool + "'").empty())
        GTEST_SKIP() << tool << " is not installed (scripts/setup.sh --tests installs it)";
    if (!xfconfd().has_value()) GTEST_SKIP() << "xfconfd is not installed (package xfconf)";
    work_ = fs::temp_directory_path() / ("kibbar-realpanel-" + std::to_string(getpid()));
    fs::remove_all(work_);
    for (const char* sub : {"home", "config/xfce4/xfconf/xfce-perchannel-xml", "data", "cache", "run"})
      fs::create_directories(work_ / sub);
    fs::permissions(work_ / "run", fs::perms::owner_all);
    shots_ = env("KIB_TEST_OUTPUT_DIR").empty() ? work_ : fs::path(env("KIB_TEST_OUTPUT_DIR"));
    fs::create_directories(shots_);
  }
  void TearDown() override {
    // Last started, first ended; each by its PID.
    kibbar_.reset();
    panel_.reset();
    xfconfd_.reset();
    bus_.reset();
    xvfb_.reset();
    if (!work_.empty()) fs::remove_all(work_);
  }

  static std::optional<std::string> xfconfd() {
    for (const char* path :
         {"/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd", "/usr/lib/xfce4/xfconf/xfconfd", "/usr/libexec/xfconfd"})
      if (fs::exists(path)) return path;
    return std::nullopt;
  }

  // The panel's configuration: one 32-pixel panel along the top holding the
  // status-notifier plugin, with its labels turned on.
  void writePanelConfiguration() {
    std::ofstream(work_ / "config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml")
        << R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="sntray">
      <property name="show-ayatana-labels" type="bool" value="true"/>
    </property>
  </property>
</channel>
)";
  }

  kibtest::ChildProcess::Options options() const {
    kibtest::ChildProcess::Options o;
    o.environment = {"DISPLAY=" + display_,
                     "DBUS_SESSION_BUS_ADDRESS=" + bus_->address(),
                     "HOME=" + (work_ / "home").string(),
                     "XDG_CONFIG_HOME=" + (work_ / "config").string(),
                     "XDG_DATA_HOME=" + (work_ / "data").string(),
                     "XDG_CACHE_HOME=" + (work_ / "cache").string(),
                     "XDG_RUNTIME_DIR=" + (work_ / "run").string(),
                     "NO_AT_BRIDGE=1",  // no accessibility bus for the panel to start
                     "GTK_THEME=Adwaita",
                     "KIBBAR_PANEL_THEME=light"};
    return o;
  }
  std::string x(const std::string& command) const { return run("env DISPLAY=" + display_ + " " + command); }

  bool nameHasOwner(const std::string& name) {
    bool owned = false;
    try {
      sdbus::createProxy(*connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus")
          ->callMethod("NameHasOwner")
          .onInterface("org.freedesktop.DBus")
          .withArguments(name)
          .storeResultsTo(owned);
    } catch (const sdbus::Error&) {
    }
    return owned;
  }
  std::string itemName() {
    std::vector<std::string> names;
    sdbus::createProxy(*connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus")
        ->callMethod("ListNames")
        .onInterface("org.freedesktop.DBus")
        .storeResultsTo(names);
    for (const auto& name : names)
      if (name.rfind("org.kde.StatusNotifierItem-", 0) == 0) return name;
    return "";
  }

  std::vector<json> lines(const std::string& type) const {
    std::vector<json> found;
    std::ifstream in(work_ / "transcript.jsonl");
    std::string line;
    while (std::getline(in, line)) {
      auto parsed = json::parse(line, nullptr, false);
      if (!parsed.is_discarded() && parsed.value("type", "") == type) found.push_back(parsed);
    }
    return found;
  }

  // The mapped top-level window of the plugin's process that looks like a menu (tall; it may cover the panel).
  std::optional<Rect> menuWindow() const {
    static const std::regex window(
        R"re((0x[0-9a-f]+) "wrapper-2\.0": \("wrapper-2\.0"[^)]*\)\s+(\d+)x(\d+)\+(-?\d+)\+(-?\d+))re");
    const std::string tree = x("xwininfo -root -children");
    for (std::sregex_iterator it(tree.begin(), tree.end(), window), end; it != end; ++it) {
      Rect r{std::stoi((*it)[4]), std::stoi((*it)[5]), std::stoi((*it)[2]), std::stoi((*it)[3])};
      if (r.height > 150 && x("xwininfo -id " + (*it)[1].str()).find("IsViewable") != std::string::npos) return r;
    }
    return std::nullopt;
  }

  void screenshot(const std::string& name) const { x("import -window root " + (shots_ / name).string()); }

  GrayPicture grab(const Rect& r) const {
    const auto file = work_ / "grab.png";
    x("import -window root " + file.string());
    GrayPicture picture{r.width, r.height, {}};
    const std::string raw =
        run("convert " + file.string() + " -crop " + std::to_string(r.width) + "x" + std::to_string(r.height) + "+" +
            std::to_string(r.x) + "+" + std::to_string(r.y) + " +repage -colorspace Gray -depth 8 gray:-");
    picture.pixels.assign(raw.begin(), raw.end());
    if (picture.pixels.size() != static_cast<std::size_t>(r.width * r.height)) picture.pixels.clear();
    return picture;
  }

  // The vertical centres of the menu's check boxes: the column at the menu's
  // left edge with the most box-high runs of non-background pixels.
  static std::vector<int> checkBoxRows(const GrayPicture& menu) {
    std::vector<int> best;
    if (menu.pixels.empty()) return best;
    const int background = menu.background();
    for (int column = 2; column < 32 && column < menu.width; ++column) {
      std::vector<int> centres;
      int start = -1;
      for (int y = 0; y <= menu.height; ++y) {
        const bool ink = y < menu.height && std::abs(menu.at(column, y) - background) > 25;
        if (ink && start < 0) start = y;
        if (!ink && start >= 0) {
          if (y - start >= 10 && y - start <= 20) centres.push_back((start + y) / 2);
          start = -1;
        }
      }
      if (centres.size() > best.size()) best = centres;
    }
    return best;
  }

  fs::path work_;
  fs::path shots_;
  std::string display_;
  std::unique_ptr<kibtest::ChildProcess> xvfb_;
  std::unique_ptr<kibtest::PrivateBus> bus_;
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<kibtest::ChildProcess> xfconfd_;
  std::unique_ptr<kibtest::ChildProcess> panel_;
  std::unique_ptr<kibtest::ChildProcess> kibbar_;
};

TEST_F(RealPanelTest, TheExtraInXfcePanel) {
  // The X server tells its display number when it is ready.
  xvfb_ = std::make_unique<kibtest::ChildProcess>(
      std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "800x760x24", "-nolisten", "tcp"},
      kibtest::ChildProcess::Options{{}, true, {}});
  std::string number;
  ASSERT_TRUE(xvfb_->readLine(number, 15s)) << "Xvfb did not start";
  display_ = ":" + number;
  bus_ = std::make_unique<kibtest::PrivateBus>();
  connection_ = sdbus::createSessionBusConnectionWithAddress(bus_->address());
  writePanelConfiguration();

  xfconfd_ = std::make_unique<kibtest::ChildProcess>(std::vector<std::string>{*xfconfd()}, options());
  ASSERT_TRUE(waitUntil([&] { return nameHasOwner("org.xfce.Xfconf"); }, 15s)) << "xfconfd did not start";
  panel_ =
      std::make_unique<kibtest::ChildProcess>(std::vector<std::string>{"xfce4-panel", "--disable-wm-check"}, options());
  ASSERT_TRUE(waitUntil([&] { return nameHasOwner("org.kde.StatusNotifierWatcher"); }, 30s))
      << "the panel's status-notifier plugin did not start its watcher";

  kibbar_ = std::make_unique<kibtest::ChildProcess>(
      std::vector<std::string>{env("KIBBAR"), "--panel", "--transcript", (work_ / "transcript.jsonl").string()},
      options());
  std::string item;
  ASSERT_TRUE(waitUntil([&] { return !(item = itemName()).empty(); }, 15s)) << "kibbar did not take its bus name";

  // The icon appears at the panel's left end.
  const Rect slot{0, 0, 40, 32};
  ASSERT_TRUE(waitUntil(
      [&] {
        auto picture = grab(slot);
        if (picture.pixels.empty()) return false;
        int ink = 0;
        for (auto p : picture.pixels) ink += p < 100;
        return ink > 20;
      },
      20s))
      << "no icon in the panel";
  std::this_thread::sleep_for(500ms);  // the icon drawn whole
  screenshot("panel.png");
  const auto availableIcon = grab(slot);

  // A click on the item: the extra's menu is asked for and the panel shows it.
  std::optional<Rect> menu;
  for (int attempt = 0; attempt < 3 && !menu; ++attempt) {
    x("xdotool mousemove --sync 14 16 click 1");
    waitUntil([&] { return (menu = menuWindow()).has_value() && !lines("menu").empty(); }, 8s);
  }
  ASSERT_TRUE(menu) << "the panel showed no menu; menus asked for: " << lines("menu").size() << "\n"
                    << x("xwininfo -root -children");
  ASSERT_FALSE(lines("menu").empty()) << "the extra was not asked for its menu";
  std::this_thread::sleep_for(500ms);  // let the menu finish drawing before the photograph
  screenshot("menu.png");

  // Away: the check boxes of the panel's menu, one per checkable entry, in the exported order.
  std::uint32_t revision = 0;
  Node root;
  sdbus::createProxy(*connection_, item, "/MenuBar")
      ->callMethod("GetLayout")
      .onInterface("com.canonical.dbusmenu")
      .withArguments(std::int32_t{0}, std::int32_t{-1}, std::vector<std::string>{})
      .storeResultsTo(revision, root);
  int awayBox = -1, boxes = 0;
  for (const auto& child : std::get<2>(root)) {
    auto properties = std::get<1>(child.get<Node>());
    if (properties.count("visible") && !properties.at("visible").get<bool>()) continue;
    if (!properties.count("toggle-type")) continue;
    if (properties.at("label").get<std::string>() == "Away") awayBox = boxes;
    ++boxes;
  }
  ASSERT_GE(awayBox, 0) << "no Away in the exported menu";
  const auto rows = checkBoxRows(grab(*menu));
  ASSERT_GT(static_cast<int>(rows.size()), awayBox) << rows.size() << " check boxes found, " << boxes << " expected";
  const int awayX = menu->x + 60, awayY = menu->y + rows[static_cast<std::size_t>(awayBox)];
  x("xdotool mousemove --sync " + std::to_string(awayX) + " " + std::to_string(awayY) + " click 1");

  ASSERT_TRUE(waitUntil([&] { return !lines("menu-close").empty(); }, 10s));
  EXPECT_EQ(lines("menu-close").back()["title"], "Away");
  EXPECT_TRUE(waitUntil(
      [&] {
        for (const auto& line : lines("daemon"))
          if (line["request"] == "setMyStatus:message:" && line["arguments"][0] == "3") return true;
        return false;
      },
      10s));
  EXPECT_TRUE(
      waitUntil([&] { return !lines("icon").empty() && lines("icon").back()["image"] == "MenuExtra-.pdf"; }, 10s));

  // The panel redraws the item with the away glyph.
  EXPECT_TRUE(waitUntil([&] { return grab(slot).pixels != availableIcon.pixels; }, 10s)) << "the icon did not change";
  EXPECT_TRUE(waitUntil([&] { return !menuWindow().has_value(); }, 10s)) << "the menu stayed open";
  screenshot("away.png");
  EXPECT_EQ(kibbar_->stop(), 0);
}

}  // namespace
