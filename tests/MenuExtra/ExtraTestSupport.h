#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/Bundle.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuExtraHost.h"
#include "platform/ui/TextMeasurer.h"
#include "sim/SimWorld.h"
#include "tests/support/PlatformTest.h"

namespace kibtest {

// The repository root: from KIB_TEST_SOURCE_DIR (set by CTest), else from this file's place.
std::filesystem::path extraSourceDir();

// A status bar that records what an extra asks of it.
class RecordingMenuExtraHost final : public platform::MenuExtraHost {
 public:
  void menuExtraLengthDidChange(platform::MenuExtra& extra) override { lengths.push_back(extra.length()); }
  void menuExtraNeedsDisplay(platform::MenuExtra&) override { ++redisplays; }
  void menuExtraPopUpMenu(platform::MenuExtra&, const platform::MenuPtr& menu) override { poppedUp.push_back(menu); }
  bool menuExtraIsMenuDown(const platform::MenuExtra&) const override { return menuDown; }

  std::vector<double> lengths;
  int redisplays = 0;
  std::vector<platform::MenuPtr> poppedUp;
  bool menuDown = false;
};

// Ten points per character and 17 high, so banner widths are easy to reckon.
class TenPointMeasurer final : public platform::TextMeasurer {
 public:
  platform::Size sizeOfString(const std::string& utf8, double) const override {
    return {10.0 * static_cast<double>(utf8.size()), 17.0};
  }
};

// The daemon requests the extra makes, as text ("setMyStatus:message: 4 \"Working\"").
class DaemonRequestLog {
 public:
  // Registers on the current daemon controller (make the world first).
  DaemonRequestLog();
  ~DaemonRequestLog();
  DaemonRequestLog(const DaemonRequestLog&) = delete;
  DaemonRequestLog& operator=(const DaemonRequestLog&) = delete;

  // The commands only (queries such as isConnected are left out).
  std::vector<std::string> commands;
  void clear() { commands.clear(); }

 private:
  std::uint64_t token_;
};

// One menu item as one line: title | tag | state | represented object | image
// | action->target | enabled. A separator reads "---". The represented object
// is quoted when it is a string, "nil" when there is none; the image is its
// display name or "nil"; the target is "extra", "nil" or the target's class.
std::string describeMenuItem(const platform::MenuItem& item, const platform::Object* extra);
std::vector<std::string> describeMenu(const platform::Menu& menu, const platform::Object* extra);

// A fixture with a test bundle over the repository's resources (with the
// resources folder as the system image folder), a simulated world and an
// extra attached to a recording host. Tests make the world first, then the extra.
class ExtraTest : public PlatformTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The built-in world, or one from scenario text (docs/scenario.md).
  void makeDefaultWorld();
  void makeWorld(const std::string& scenarioJSON);
  // Creates the extra on the test bundle and attaches the host.
  void makeExtra();
  // Creates the extra and lets its deferred start-up run.
  void makeStartedExtra();
  // Unloads and releases the extra as the host does.
  void unloadExtra();

  // A file in the test bundle's resources: a PNG header of the given size.
  void addPNGResource(const std::string& fileName, std::uint32_t width, std::uint32_t height);
  std::filesystem::path resourcesDir() const { return bundleDir_ / "Resources"; }

  // The status section alone, built on a fresh menu.
  std::vector<std::string> statusSection();

  platform::BundlePtr bundle;
  std::shared_ptr<sim::SimWorld> world;
  std::shared_ptr<VelmoKibExtra> extra;
  RecordingMenuExtraHost host;

 private:
  std::filesystem::path bundleDir_;
};

}  // namespace kibtest
