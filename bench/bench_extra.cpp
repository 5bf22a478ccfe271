// The extra at scale: building the menu over a world of 5,000 available
// people, and one frame of the banner's reveal and scroll with the drawing it
// asks for. Ratios are to the bare sort of 10,000 rows (BenchSupport.h).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "MenuExtra/StatusBannerView.h"
#include "host/SlotRenderer.h"
#include "MenuExtra/VelmoKibExtra.h"
#include "bench/BenchSupport.h"
#include "platform/core/Bundle.h"
#include "platform/core/Date.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/ui/Image.h"
#include "platform/ui/MenuExtraHost.h"
#include "platform/ui/RecordingCanvas.h"
#include "sim/ScenarioLoader.h"
#include "sim/SimWorld.h"

namespace {

using kibbench::threadCPUSeconds;

class QuietHost final : public platform::MenuExtraHost {
 public:
  void menuExtraLengthDidChange(platform::MenuExtra&) override {}
  void menuExtraNeedsDisplay(platform::MenuExtra&) override {}
  void menuExtraPopUpMenu(platform::MenuExtra&, const platform::MenuPtr&) override {}
  bool menuExtraIsMenuDown(const platform::MenuExtra&) const override { return false; }
};

// The extra's bundle over the repository's resources, in a temporary folder.
platform::BundlePtr makeBundle() {
  namespace fs = std::filesystem;
  const fs::path resources = fs::path(KIB_SOURCE_DIR) / "Resources";
  const fs::path bundle = fs::temp_directory_path() / ("kib-bench-" + std::to_string(getpid())) / "Parlo.menu";
  fs::create_directories(bundle / "Resources");
  for (const auto& entry : fs::directory_iterator(resources))
    if (!fs::exists(bundle / "Resources" / entry.path().filename()))
      fs::create_symlink(entry.path(), bundle / "Resources" / entry.path().filename());
  std::ofstream(bundle / "Info.json")
      << R"({"identifier": "com.velmo.menuextra.Parlo", "principalClass": "VelmoKibExtra"})";
  platform::Image::setSystemImageDirectories({resources.string()});
  return platform::Bundle::bundleWithPath(bundle.string());
}

// People everyone available on AIM, half of them on Jabber too.
std::string scenario(std::size_t people) {
  std::string json = R"({"services": [{"name": "AIM"}, {"name": "Jabber"}], "accounts": [)"
                     R"({"id": "aim", "service": "AIM", "login": "me", "capabilities": ["textChat", "buddyList"]},)"
                     R"({"id": "jabber", "service": "Jabber", "login": "me@j", "capabilities": ["textChat", "buddyList"]}],)"
                     R"("people": [)";
  const auto& first = kibbench::sampleFirstNames();
  const auto& last = kibbench::sampleLastNames();
  for (std::size_t i = 0; i < people; ++i) {
    if (i) json += ",";
    json += R"({"id": "p)" + std::to_string(i) + R"(", "firstName": ")" + first[i % first.size()] +
            R"(", "lastName": ")" + last[(i / first.size()) % last.size()] + R"(", "handles": [)";
    json += R"({"account": "aim", "id": "b)" + std::to_string(i) + R"("})";
    if (i % 2 == 0) json += R"(, {"account": "jabber", "id": "b)" + std::to_string(i) + R"(@j"})";
    json += "]}";
  }
  return json + "]}";
}

struct Extra {
  std::shared_ptr<sim::SimWorld> world;
  QuietHost host;
  std::shared_ptr<VelmoKibExtra> extra;

  explicit Extra(std::size_t people) {
    kibbench::virtualClock();
    world = sim::SimWorld::make(sim::ScenarioLoader::parse(scenario(people), "bench"));
    world->start();
    extra = VelmoKibExtra::initWithBundle(makeBundle());
    extra->setHost(&host);
    platform::RunLoop::main().runUntil(kibbench::virtualClock().now() + 2.0);
  }
  ~Extra() {
    extra->willUnload();
    extra.reset();
    world.reset();
    platform::RunLoop::main().reset();
  }
};

// The whole menu built anew, as on a click after the people changed.
void BM_MenuWithAvailablePeople(benchmark::State& state) {
  Extra setup(static_cast<std::size_t>(state.range(0)));
  std::vector<double> seconds;
  std::size_t items = 0;
  for (auto _ : state) {
    setup.extra->invalidateMenu();
    double start = threadCPUSeconds();
    auto menu = setup.extra->menu();
    seconds.push_back(threadCPUSeconds() - start);
    state.SetIterationTime(seconds.back());
    items = menu ? menu->numberOfItems() : 0;
  }
  state.counters["menu_items"] = static_cast<double>(items);
  kibbench::reportRatio(state, seconds, 10000);
}
BENCHMARK(BM_MenuWithAvailablePeople)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond);

// One reveal frame and one scroll tick, each with the redraw it asks for and
// the terminal's conversion of that drawing into the slot's cells.
void BM_BannerFrames(benchmark::State& state) {
  Extra setup(10);
  auto view = setup.extra->bannerView();
  view->setBannerString(platform::makeString("Leo Brandt is now available — and has a long message to scroll"));
  platform::RecordingCanvas canvas;
  auto start = platform::Date::now();
  std::vector<double> reveal, scroll;
  for (auto _ : state) {
    view->startRevealAnimation();
    double t0 = threadCPUSeconds();
    view->performSelector("_doFrameOfRevealAnimation:", start);
    view->drawRect(canvas, view->bounds());
    benchmark::DoNotOptimize(kibhost::SlotRenderer::render(canvas, view->bounds().width, {}).data());
    double t1 = threadCPUSeconds();
    canvas.clear();
    view->performSelector("_scrollTimer:", nullptr);
    view->drawRect(canvas, view->bounds());
    benchmark::DoNotOptimize(kibhost::SlotRenderer::render(canvas, view->bounds().width, {}).data());
    double t2 = threadCPUSeconds();
    reveal.push_back(t1 - t0);
    scroll.push_back(t2 - t1);
    state.SetIterationTime(t2 - t0);
    canvas.clear();
    view->stopAllAnimation();
  }
  state.counters["reveal_frame_us"] = kibbench::median(reveal) * 1e6;
  state.counters["scroll_tick_us"] = kibbench::median(scroll) * 1e6;
  kibbench::reportRatio(state, reveal, 10000);
}
BENCHMARK(BM_BannerFrames)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
