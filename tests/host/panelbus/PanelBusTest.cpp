// kibbar --panel on a private session bus, talked to by a test watcher and
// panel host written with the same D-Bus library.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "tests/host/panelbus/PanelBusPeer.h"
#include "tests/support/ChildProcess.h"

namespace {

using namespace std::chrono_literals;
using json = nlohmann::json;
using kibtest::PanelBusPeer;
using Node = PanelBusPeer::Node;
using Properties = std::map<std::string, sdbus::Variant>;
using Pixmaps = std::vector<sdbus::Struct<std::int32_t, std::int32_t, std::vector<std::uint8_t>>>;

const char* const kMenu = PanelBusPeer::kMenuInterface;
const char* const kItem = PanelBusPeer::kItemInterface;
const std::string kBannerText = "Zurück um 5 ☕";

std::string env(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string text(const Properties& properties, const std::string& name) {
  auto found = properties.find(name);
  return found == properties.end() ? "" : found->second.get<std::string>();
}

std::vector<Node> childrenOf(const Node& node) {
  std::vector<Node> children;
  for (const auto& child : std::get<2>(node)) children.push_back(child.get<Node>());
  return children;
}

std::string doubledUnderscores(const std::string& title) {
  std::string label;
  for (char c : title) label += c == '_' ? std::string("__") : std::string(1, c);
  return label;
}

class PanelBusTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() / ("kibbar-panel-" + std::to_string(getpid()) + "-" +
                                                     ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_ / "home");
    bus_ = std::make_unique<kibtest::PrivateBus>();
    peer_ = std::make_unique<PanelBusPeer>(bus_->address());
  }
  void TearDown() override {
    kibbar_.reset();
    peer_.reset();
    bus_.reset();
    std::filesystem::remove_all(dir_);
  }

  void startKibbar(const std::string& busAddress) {
    startKibbar(busAddress, {"--scenario", env("KIB_TEST_SOURCE_DIR") + "/tests/host/panelbus/panel-evening.json"});
  }
  void startKibbar(const std::string& busAddress, const std::vector<std::string>& arguments) {
    kibtest::ChildProcess::Options options;
    options.environment = {"DBUS_SESSION_BUS_ADDRESS=" + busAddress, "HOME=" + (dir_ / "home").string(),
                           "XDG_CONFIG_HOME=" + (dir_ / "home/.config").string(), "KIBBAR_PANEL_THEME=light"};
    std::vector<std::string> command{"/bin/sh", "-c", "exec \"$0\" \"$@\" 2>\"$KIB_ERRORS\"", env("KIBBAR"), "--panel",
                                     "--transcript", (dir_ / "transcript.jsonl").string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    // Standard error goes to a file the test reads.
    kibbar_ = std::make_unique<kibtest::ChildProcess>(
        command,
        [&] {
          options.environment.push_back("KIB_ERRORS=" + (dir_ / "errors.txt").string());
          return options;
        }());
  }

  std::vector<json> transcript() const {
    std::vector<json> lines;
    std::ifstream in(dir_ / "transcript.jsonl");
    std::string line;
    while (std::getline(in, line)) {
      auto parsed = json::parse(line, nullptr, false);
      if (!parsed.is_discarded()) lines.push_back(parsed);
    }
    return lines;
  }
  std::string errors() const {
    std::ifstream in(dir_ / "errors.txt");
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // The lines of a type after the first `skip` of them.
  std::vector<json> lines(const std::string& type) const {
    std::vector<json> found;
    for (auto& line : transcript())
      if (line.value("type", "") == type) found.push_back(line);
    return found;
  }
  bool waitForLines(const std::string& type, std::size_t count, std::chrono::milliseconds limit = 10s) {
    return peer_->waitFor([&] { return lines(type).size() >= count; }, limit);
  }
  bool waitForSignal(const std::string& member, std::size_t from, const std::string& argument = "",
                     std::chrono::milliseconds limit = 10s) {
    return peer_->waitFor(
        [&] {
          for (std::size_t i = from; i < peer_->signals.size(); ++i)
            if (peer_->signals[i].member == member &&
                (argument.empty() ||
                 (!peer_->signals[i].arguments.empty() && peer_->signals[i].arguments[0] == argument)))
              return true;
          return false;
        },
        limit);
  }

  // Registration: the item's bus name, followed.
  std::string waitForRegistration(std::size_t count = 1) {
    if (!peer_->waitFor([&] { return peer_->registrations.size() >= count; }, 15s)) return "";
    return peer_->registrations.back();
  }

  bool aboutToShowRoot() {
    bool needUpdate = false;
    peer_->menu()
        .callMethod("AboutToShow")
        .onInterface(kMenu)
        .withArguments(std::int32_t{0})
        .storeResultsTo(needUpdate);
    return needUpdate;
  }
  Node layout() {
    std::uint32_t revision = 0;
    Node root;
    peer_->menu()
        .callMethod("GetLayout")
        .onInterface(kMenu)
        .withArguments(std::int32_t{0}, std::int32_t{-1}, std::vector<std::string>{})
        .storeResultsTo(revision, root);
    return root;
  }
  std::uint32_t layoutRevision() {
    std::uint32_t revision = 0;
    Node root;
    peer_->menu()
        .callMethod("GetLayout")
        .onInterface(kMenu)
        .withArguments(std::int32_t{0}, std::int32_t{0}, std::vector<std::string>{})
        .storeResultsTo(revision, root);
    return revision;
  }
  void event(std::int32_t id, const std::string& name) {
    peer_->menu().callMethod("Event").onInterface(kMenu).withArguments(id, name, sdbus::Variant(std::int32_t{0}),
                                                                       std::uint32_t{0});
  }
  // Opens the menu as a panel does; answers the extra's menu (from the transcript) and the exported layout.
  std::pair<json, Node> openMenu() {
    const auto menus = lines("menu").size();
    aboutToShowRoot();  // the menu was exported before: no update needed, unless it changed
    event(0, "opened");
    EXPECT_TRUE(waitForLines("menu", menus + 1));
    return {lines("menu").back()["items"], layout()};
  }
  // The entry (at any depth) whose label is the text.
  static std::optional<Node> entryLabelled(const Node& node, const std::string& label) {
    for (const auto& child : childrenOf(node)) {
      if (text(std::get<1>(child), "label") == label) return child;
      if (auto inner = entryLabelled(child, label)) return inner;
    }
    return std::nullopt;
  }

  // Every item of the extra's menu against its exported entry; answers the kinds seen.
  std::set<std::string> expectLayoutMatchesMenu(const Node& root, const json& items) {
    std::set<std::string> kinds;
    const auto entries = childrenOf(root);
    std::size_t next = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const auto& item = items[i];
      const bool isSeparator = item.value("separator", false);
      if (!isSeparator && item.value("alternate", false) && i > 0) continue;  // in the row's submenu
      SCOPED_TRACE("menu item " + std::to_string(i) + " " + item.value("title", "-"));
      if (next >= entries.size()) {
        ADD_FAILURE() << "no entry left";
        break;
      }
      const Node& entry = entries[next++];
      const auto& properties = std::get<1>(entry);
      if (isSeparator) {
        EXPECT_EQ(text(properties, "type"), "separator");
        kinds.insert("separator");
        continue;
      }
      const bool hasAlternates = i + 1 < items.size() && items[i + 1].value("alternate", false);
      if (!hasAlternates) {
        expectEntryMatchesItem(entry, item, kinds);
        continue;
      }
      EXPECT_EQ(text(properties, "children-display"), "submenu");
      EXPECT_EQ(text(properties, "label"), doubledUnderscores(item["title"]));
      const auto choices = childrenOf(entry);
      EXPECT_EQ(choices.size(), 2u);
      if (choices.size() != 2) continue;
      expectEntryMatchesItem(choices[0], item, kinds);
      EXPECT_EQ(text(std::get<1>(choices[1]), "label"), "Text chat");
      EXPECT_EQ(std::get<1>(choices[1]).count("enabled"), 0u);
      kinds.insert("person");
    }
    EXPECT_EQ(next, entries.size()) << "entries the menu does not have";
    return kinds;
  }
  void expectEntryMatchesItem(const Node& entry, const json& item, std::set<std::string>& kinds) {
    const auto& properties = std::get<1>(entry);
    EXPECT_EQ(text(properties, "label"), doubledUnderscores(item["title"]));
    kinds.insert("label");
    if (item["enabled"].get<bool>()) {
      EXPECT_EQ(properties.count("enabled"), 0u);
    } else {
      ASSERT_EQ(properties.count("enabled"), 1u);
      EXPECT_FALSE(properties.at("enabled").get<bool>());
      kinds.insert("disabled");
    }
    const int state = item["state"];
    if (state != 0) {
      EXPECT_EQ(text(properties, "toggle-type"), "checkmark");
      ASSERT_EQ(properties.count("toggle-state"), 1u);
      EXPECT_EQ(properties.at("toggle-state").get<std::int32_t>(), state);
      kinds.insert(state == 1 ? "check" : "dash");
    }
    // The extra's blank spacer image has nothing to draw.
    const bool hasImage =
        item["image"].is_string() && !item["image"].get<std::string>().empty() && item["image"] != "Empty Image";
    EXPECT_EQ(properties.count("icon-data"), hasImage ? 1u : 0u);
    if (hasImage && properties.count("icon-data")) {
      auto png = properties.at("icon-data").get<std::vector<std::uint8_t>>();
      ASSERT_GT(png.size(), 8u);
      EXPECT_EQ(std::string(png.begin() + 1, png.begin() + 4), "PNG");
      kinds.insert("icon");
    }
    const std::string key = item["key"];
    EXPECT_EQ(properties.count("shortcut"), key.empty() ? 0u : 1u);
    if (!key.empty() && properties.count("shortcut")) {
      auto shortcut = properties.at("shortcut").get<std::vector<std::vector<std::string>>>();
      ASSERT_EQ(shortcut.size(), 1u);
      if (key == "\033" && item["modifiers"] == 0x40000) {
        EXPECT_EQ(shortcut[0], (std::vector<std::string>{"Control", "Escape"}));
      }
      kinds.insert("shortcut");
    }
  }

  Pixmaps iconPixmap() { return peer_->itemProperty<Pixmaps>("IconPixmap"); }

  std::filesystem::path dir_;
  std::unique_ptr<kibtest::PrivateBus> bus_;
  std::unique_ptr<PanelBusPeer> peer_;
  std::unique_ptr<kibtest::ChildProcess> kibbar_;
};

// Everything a panel sees over one evening, in order: registration and every
// property, screen sharing, the menu item by item, the banner as labels, bad
// arguments, a dash in the menu, Away chosen, rest, the watcher coming back, SIGTERM.
TEST_F(PanelBusTest, APanelSeesTheExtraOverOneEvening) {
  peer_->ownWatcher();
  startKibbar(bus_->address());
  const std::string service = waitForRegistration();
  ASSERT_EQ(service.rfind("org.kde.StatusNotifierItem-", 0), 0u) << service << errors();
  peer_->follow(service);

  // Every property.
  EXPECT_EQ(peer_->itemProperty<std::string>("Id"), "com.velmo.menuextra.Parlo");
  EXPECT_EQ(peer_->itemProperty<std::string>("Category"), "Communications");
  EXPECT_EQ(peer_->itemProperty<std::string>("Title"), "Parlo");
  EXPECT_TRUE(peer_->itemProperty<bool>("ItemIsMenu"));
  EXPECT_EQ(peer_->itemProperty<sdbus::ObjectPath>("Menu"), "/MenuBar");
  EXPECT_EQ(peer_->itemProperty<std::string>("XAyatanaLabel"), "");
  const auto first = iconPixmap();
  ASSERT_EQ(first.size(), 5u);
  std::vector<int> sizes;
  for (const auto& pixmap : first) {
    sizes.push_back(std::get<0>(pixmap));
    EXPECT_EQ(std::get<0>(pixmap), std::get<1>(pixmap));
    ASSERT_EQ(std::get<2>(pixmap).size(), static_cast<std::size_t>(std::get<0>(pixmap) * std::get<1>(pixmap) * 4));
    bool drawn = false;
    for (std::size_t i = 0; i < std::get<2>(pixmap).size(); i += 4) drawn = drawn || std::get<2>(pixmap)[i] != 0;
    EXPECT_TRUE(drawn) << "a fully transparent icon at " << std::get<0>(pixmap);
  }
  EXPECT_EQ(sizes, (std::vector<int>{16, 22, 24, 32, 48}));
  const auto attention = peer_->itemProperty<Pixmaps>("AttentionIconPixmap");
  ASSERT_EQ(attention.size(), 5u);
  EXPECT_NE(attention, first);
  EXPECT_EQ(peer_->menu().getProperty("Version").onInterface(kMenu).get<std::uint32_t>(), 3u);

  // Screen sharing starts at 1 s: attention, and the icon blinks to the sharing glyph.
  {
    SCOPED_TRACE("screen sharing");
    ASSERT_TRUE(peer_->waitFor([&] { return peer_->itemProperty<std::string>("Status") == "NeedsAttention"; }, 10s));
    EXPECT_TRUE(waitForSignal("NewStatus", 0, "NeedsAttention"));
    EXPECT_TRUE(peer_->waitFor([&] { return iconPixmap() == attention; }, 8s)) << "the blink never showed";
    EXPECT_EQ(
        std::get<2>(peer_->itemProperty<sdbus::Struct<std::string, Pixmaps, std::string, std::string>>("ToolTip")),
        "My Status: Available");
  }

  // The menu while sharing: every kind of item but the dash.
  std::set<std::string> kinds;
  {
    SCOPED_TRACE("first menu");
    auto [items, root] = openMenu();
    kinds = expectLayoutMatchesMenu(root, items);
    auto end = entryLabelled(root, "End Screen Sharing");
    ASSERT_TRUE(end);
    const auto signals = peer_->signals.size();
    event(std::get<0>(*end), "clicked");
    ASSERT_TRUE(waitForLines("menu-close", 1));
    EXPECT_EQ(lines("menu-close").back()["title"], "End Screen Sharing");
    EXPECT_TRUE(waitForSignal("NewStatus", signals, "Active")) << "the application ended sharing, the item calms down";
    EXPECT_EQ(peer_->itemProperty<std::string>("Status"), "Active");
  }
  for (const char* kind : {"label", "disabled", "separator", "check", "icon", "shortcut", "person"})
    EXPECT_TRUE(kinds.count(kind)) << "no " << kind << " in the first menu";

  // The status text: labels as the banner reveals, scrolls and collapses.
  {
    SCOPED_TRACE("banner");
    std::vector<std::string> labels;
    std::string toolTipWhileShown;
    ASSERT_TRUE(peer_->waitFor(
        [&] {
          labels.clear();
          for (const auto& signal : peer_->signals)
            if (signal.member == "XAyatanaNewLabel") labels.push_back(signal.arguments[0]);
          if (!labels.empty() && !labels.back().empty() && toolTipWhileShown.empty())
            toolTipWhileShown = std::get<3>(
                peer_->itemProperty<sdbus::Struct<std::string, Pixmaps, std::string, std::string>>("ToolTip"));
          return labels.size() > 2 && labels.back().empty();
        },
        40s))
        << labels.size() << " labels";
    bool prefix = false, whole = false, scrolled = false;
    for (const auto& label : labels) {
      if (label.empty()) continue;
      if (kBannerText.rfind(label, 0) == 0 && label != kBannerText) prefix = true;
      if (label == kBannerText) whole = true;
      if (kBannerText.rfind(label, 0) != 0) scrolled = true;
    }
    EXPECT_TRUE(prefix) << "no label while revealing";
    EXPECT_TRUE(whole) << "the whole text never showed";
    EXPECT_TRUE(scrolled) << "no label while scrolling";
    for (const auto& signal : peer_->signals)
      if (signal.member == "XAyatanaNewLabel" && !signal.arguments[0].empty()) {
        EXPECT_EQ(signal.arguments[1], kBannerText) << "the guide of " << signal.arguments[0];
      }
    EXPECT_EQ(toolTipWhileShown, kBannerText);
    EXPECT_EQ(peer_->itemProperty<std::string>("XAyatanaLabel"), "");
  }

  // Bad arguments: errors, and nothing happens.
  {
    SCOPED_TRACE("bad arguments");
    // What a call could cause: a menu opening or closing, a daemon request, a URL, a notification.
    auto effects = [&] {
      std::size_t count = 0;
      for (const char* type : {"menu", "menu-close", "daemon", "url", "distributed", "highlight"})
        count += lines(type).size();
      return count;
    };
    const auto before = effects();
    auto expectError = [&](const std::string& what, const std::function<void()>& call, const std::string& error) {
      try {
        call();
        ADD_FAILURE() << what << ": no error";
      } catch (const sdbus::Error& e) {
        EXPECT_EQ(e.getName(), error) << what << ": " << e.getMessage();
      }
    };
    const std::string unknownId = "com.canonical.dbusmenu.Error.UnknownId";
    const std::string invalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";
    expectError(
        "GetLayout of an unknown id",
        [&] {
          peer_->menu()
              .callMethod("GetLayout")
              .onInterface(kMenu)
              .withArguments(std::int32_t{4242}, std::int32_t{-1}, std::vector<std::string>{});
        },
        unknownId);
    expectError(
        "Event on an unknown id", [&] { event(4242, "clicked"); }, unknownId);
    expectError(
        "an unknown event", [&] { event(0, "exploded"); }, invalidArgs);
    expectError(
        "AboutToShow of an unknown id",
        [&] { peer_->menu().callMethod("AboutToShow").onInterface(kMenu).withArguments(std::int32_t{-7}); }, unknownId);
    expectError(
        "GetProperty of an unknown name",
        [&] {
          peer_->menu()
              .callMethod("GetProperty")
              .onInterface(kMenu)
              .withArguments(std::int32_t{0}, std::string("bogus"));
        },
        invalidArgs);
    expectError(
        "GetGroupProperties with an unknown id",
        [&] {
          peer_->menu()
              .callMethod("GetGroupProperties")
              .onInterface(kMenu)
              .withArguments(std::vector<std::int32_t>{0, 4242}, std::vector<std::string>{});
        },
        unknownId);
    expectError(
        "EventGroup of unknown ids only",
        [&] {
          std::vector<sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>> events;
          events.emplace_back(4242, "clicked", sdbus::Variant(std::int32_t{0}), 0u);
          peer_->menu().callMethod("EventGroup").onInterface(kMenu).withArguments(events);
        },
        unknownId);
    expectError(
        "Event with a string id",
        [&] {
          auto call = peer_->menu().createMethodCall(kMenu, "Event");
          call << std::string("12") << std::string("clicked") << sdbus::Variant(std::int32_t{0}) << std::uint32_t{0};
          peer_->menu().callMethod(call);
        },
        invalidArgs);
    expectError(
        "Event without its arguments",
        [&] {
          auto call = peer_->menu().createMethodCall(kMenu, "Event");
          call << std::int32_t{0};
          peer_->menu().callMethod(call);
        },
        invalidArgs);
    expectError(
        "Scroll sideways",
        [&] {
          peer_->item().callMethod("Scroll").onInterface(kItem).withArguments(std::int32_t{1}, std::string("sideways"));
        },
        invalidArgs);
    peer_->pump(300ms);
    EXPECT_EQ(effects(), before) << "a bad call had an effect";
    EXPECT_TRUE(peer_->waitFor([&] { return kibbar_->isRunning(); }, 10ms));
  }

  // The menu is open when an account drops (at 22 s): the extra drops its menu, and the panel
  // gets the new one, with a dash on the Offline item and on the current choice.
  {
    SCOPED_TRACE("menu rebuilt while shown");
    for (const auto& line : lines("event"))
      ASSERT_EQ(line["event"].get<std::string>().find("disconnect"), std::string::npos) << "too late: " << line;
    const auto before = openMenu();
    const auto revision = layoutRevision();
    const auto layoutSignals = peer_->signals.size();
    const auto menus = lines("menu").size();
    ASSERT_TRUE(peer_->waitFor(
        [&] {
          for (const auto& line : lines("event"))
            if (line["event"].get<std::string>().find("disconnect") != std::string::npos) return true;
          return false;
        },
        25s));
    ASSERT_TRUE(waitForSignal("LayoutUpdated", layoutSignals));
    ASSERT_TRUE(waitForLines("menu", menus + 1)) << "the rebuilt menu is the open one now";
    EXPECT_GT(layoutRevision(), revision);
    auto items = lines("menu").back()["items"];
    auto root = layout();
    EXPECT_NE(items, before.first);
    auto second = expectLayoutMatchesMenu(root, items);
    EXPECT_TRUE(second.count("dash"));

    // Away, clicked: the daemon request, then the away glyph.
    auto away = entryLabelled(root, "Away");
    ASSERT_TRUE(away);
    const auto icon = iconPixmap();
    const auto signals = peer_->signals.size();
    const auto closes = lines("menu-close").size();
    event(std::get<0>(*away), "clicked");
    ASSERT_TRUE(waitForLines("menu-close", closes + 1));
    EXPECT_EQ(lines("menu-close").back()["title"], "Away");
    EXPECT_TRUE(peer_->waitFor(
        [&] {
          for (const auto& line : lines("daemon"))
            if (line["request"] == "setMyStatus:message:" && line["arguments"].dump().find('3') != std::string::npos)
              return true;
          return false;
        },
        5s))
        << "no setMyStatus:message: 3";
    EXPECT_TRUE(waitForSignal("NewIcon", signals));
    EXPECT_TRUE(peer_->waitFor([&] { return iconPixmap() != icon; }, 5s));
    EXPECT_TRUE(peer_->waitFor(
        [&] {
          return std::get<2>(peer_->itemProperty<sdbus::Struct<std::string, Pixmaps, std::string, std::string>>(
                     "ToolTip")) == "My Status: Away";
        },
        5s));
  }

  // At rest: one thread, and no wake-ups at all.
  {
    SCOPED_TRACE("rest");
    auto switches = [&] {
      std::ifstream status("/proc/" + std::to_string(kibbar_->pid()) + "/status");
      std::string line;
      long total = 0;
      while (std::getline(status, line))
        if (line.find("ctxt_switches:") != std::string::npos) total += std::stol(line.substr(line.find(':') + 1));
      return total;
    };
    peer_->pump(4500ms);  // the last transitions (2 s and 4 s after a change) end
    const long before = switches();
    const auto signalsBefore = peer_->signals.size();
    std::this_thread::sleep_for(2s);  // the bus stays quiet: nothing reaches the program
    EXPECT_EQ(switches() - before, 0) << "wake-ups at rest";
    peer_->pump(100ms);
    EXPECT_EQ(peer_->signals.size(), signalsBefore) << "signals at rest: " << peer_->signals.back().member;
    std::size_t threads = 0;
    for ([[maybe_unused]] const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(kibbar_->pid()) + "/task"))
      ++threads;
    EXPECT_EQ(threads, 1u);
  }

  // The watcher goes away and comes back: the item registers again.
  peer_->releaseWatcher();
  peer_->pump(200ms);
  peer_->ownWatcher();
  EXPECT_EQ(waitForRegistration(2), service);

  // SIGTERM: willUnload, the name released, exit 0.
  EXPECT_EQ(kibbar_->stop(), 0);
  auto all = transcript();
  ASSERT_GE(all.size(), 2u);
  EXPECT_EQ(all[all.size() - 2]["type"], "unload");
  EXPECT_EQ(all.back()["type"], "end");
  bool owned = true;
  sdbus::createProxy(peer_->connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus")
      ->callMethod("NameHasOwner")
      .onInterface("org.freedesktop.DBus")
      .withArguments(service)
      .storeResultsTo(owned);
  EXPECT_FALSE(owned);
  EXPECT_EQ(errors(), "");
}

TEST_F(PanelBusTest, WithoutAWatcherTheItemSaysSoAndRegistersWhenOneAppears) {
  startKibbar(bus_->address());
  ASSERT_TRUE(peer_->waitFor([&] { return !errors().empty(); }, 10s));
  EXPECT_EQ(errors(),
            "kibbar: no StatusNotifierWatcher on the session bus yet; the item registers when a panel starts one\n");
  peer_->ownWatcher();
  EXPECT_EQ(waitForRegistration().rfind("org.kde.StatusNotifierItem-", 0), 0u);
  EXPECT_EQ(kibbar_->stop(), 0);
}

// Over a libpurple client that has not started, the panel shows the not-connected menu.
TEST_F(PanelBusTest, OverAnAbsentLibpurpleClientThePanelShowsTheNotConnectedMenu) {
  peer_->ownWatcher();
  startKibbar(bus_->address(), {"--backend", "purple"});
  const std::string service = waitForRegistration();
  ASSERT_EQ(service.rfind("org.kde.StatusNotifierItem-", 0), 0u) << service << errors();
  peer_->follow(service);
  const auto [items, root] = openMenu();
  EXPECT_EQ(items.size(), 2u) << items.dump();
  const auto notice = entryLabelled(root, "No Account Enabled");
  ASSERT_TRUE(notice.has_value());
  const auto& properties = std::get<1>(*notice);
  ASSERT_EQ(properties.count("enabled"), 1u);
  EXPECT_FALSE(properties.at("enabled").get<bool>()) << "the notice is shown disabled";
  EXPECT_TRUE(entryLabelled(root, "Open Parlo…").has_value());
  EXPECT_FALSE(entryLabelled(root, "Away").has_value());
  event(0, "closed");
  EXPECT_EQ(kibbar_->stop(), 0);
  EXPECT_EQ(lines("start").at(0)["scenario"], "purple");
}

TEST_F(PanelBusTest, WithoutASessionBusOneLineAndExitStatusTwo) {
  startKibbar("unix:path=" + (dir_ / "no-bus-here").string());
  ASSERT_TRUE(peer_->waitFor([&] { return !kibbar_->isRunning(); }, 15s));
  EXPECT_EQ(kibbar_->stop(), 2);
  const auto text = errors();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
  EXPECT_EQ(text.rfind("kibbar: ", 0), 0u) << text;
}

}  // namespace
