#include "tests/MenuExtra/ExtraTestSupport.h"

#include <cstdlib>
#include <fstream>

#include "platform/core/String.h"
#include "platform/im/IMDaemonController.h"
#include "platform/ui/Image.h"
#include "sim/ScenarioLoader.h"

namespace kibtest {

std::filesystem::path extraSourceDir() {
  if (const char* dir = std::getenv("KIB_TEST_SOURCE_DIR")) return dir;
  return KIB_SOURCE_DIR;  // the build compiles it in; __FILE__ may be relative to the build
}

DaemonRequestLog::DaemonRequestLog() {
  token_ = platform::IMDaemonController::sharedController()->addRequestObserver(
      [this](const platform::IMDaemonRequest& request) {
        if (!request.isQuery) commands.push_back(request.description());
      });
}

DaemonRequestLog::~DaemonRequestLog() { platform::IMDaemonController::sharedController()->removeRequestObserver(token_); }

std::string describeMenuItem(const platform::MenuItem& item, const platform::Object* extra) {
  if (item.isSeparatorItem()) return "---";
  std::string represented = "nil";
  if (auto text = platform::asString(item.representedObject()))
    represented = "\"" + text->value() + "\"";
  else if (item.representedObject())
    represented = platform::describe(item.representedObject());
  std::string image = item.image() ? item.image()->displayName() : "nil";
  std::string target = !item.target() ? "nil" : item.target() == extra ? "extra" : item.target()->className();
  return item.title() + " | " + std::to_string(item.tag()) + " | " + std::to_string(item.state()) + " | " +
         represented + " | " + image + " | " + item.action() + "->" + target + " | " +
         (item.isEnabled() ? "enabled" : "disabled");
}

std::vector<std::string> describeMenu(const platform::Menu& menu, const platform::Object* extra) {
  std::vector<std::string> lines;
  for (const auto& item : menu.itemArray()) lines.push_back(describeMenuItem(*item, extra));
  return lines;
}

void ExtraTest::SetUp() {
  PlatformTest::SetUp();
  const auto sourceResources = extraSourceDir() / "Resources";
  bundleDir_ = tempDir / "Parlo.menu";
  std::filesystem::create_directories(resourcesDir());
  for (const auto& entry : std::filesystem::directory_iterator(sourceResources))
    std::filesystem::create_symlink(entry.path(), resourcesDir() / entry.path().filename());
  std::ofstream(bundleDir_ / "Info.json")
      << R"({"identifier": "com.velmo.menuextra.Parlo", "principalClass": "VelmoKibExtra"})";
  bundle = platform::Bundle::bundleWithPath(bundleDir_.string());
  ASSERT_TRUE(bundle) << "the test bundle at " << bundleDir_;
  platform::Image::setSystemImageDirectories({sourceResources.string()});
}

void ExtraTest::TearDown() {
  if (extra) unloadExtra();
  world = nullptr;
  PlatformTest::TearDown();
}

void ExtraTest::makeDefaultWorld() { world = sim::SimWorld::makeDefault(); }

void ExtraTest::makeWorld(const std::string& scenarioJSON) {
  world = sim::SimWorld::make(sim::ScenarioLoader::parse(scenarioJSON, "test scenario"));
}

void ExtraTest::makeExtra() {
  extra = VelmoKibExtra::initWithBundle(bundle);
  ASSERT_TRUE(extra);
  extra->setHost(&host);
}

void ExtraTest::makeStartedExtra() {
  makeExtra();
  advance(1.0);
  ASSERT_TRUE(extra->finishedLoading());
}

void ExtraTest::unloadExtra() {
  extra->willUnload();
  extra = nullptr;
}

void ExtraTest::addPNGResource(const std::string& fileName, std::uint32_t width, std::uint32_t height) {
  std::string header("\x89PNG\r\n\x1a\n", 8);
  header += std::string("\0\0\0\x0d", 4) + "IHDR";
  for (std::uint32_t value : {width, height})
    for (int shift = 24; shift >= 0; shift -= 8) header += static_cast<char>((value >> shift) & 0xFF);
  header += std::string("\x08\x06\0\0\0", 5);
  std::ofstream(resourcesDir() / fileName, std::ios::binary) << header;
}

std::vector<std::string> ExtraTest::statusSection() {
  auto menu = platform::Menu::initWithTitle("");
  extra->_appendStatus(menu);
  return describeMenu(*menu, extra.get());
}

}  // namespace kibtest
