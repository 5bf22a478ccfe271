#include "host/HeadlessRun.h"

#include "host/ScriptPlayer.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"

namespace kibhost {
namespace {

// Start-up time granted before a self-test runs (the extra finishes its start one second after creation).
constexpr double kSelfTestSettleTime = 2.0;
// After the last scheduled action: the screen-sharing test ends two seconds
// after its nominal duration, and the world answers with some latency.
constexpr double kSelfTestTail = 5.0;

}  // namespace

HeadlessRun::HeadlessRun(sim::Scenario scenario, const std::string& scenarioName, const PluginBundle& plugin,
                         std::ostream& transcriptOut, std::ostream& errors, bool daemonQueries)
    : clock_(std::make_shared<platform::VirtualClock>()),
      previousClock_(platform::Clock::setCurrent(clock_)),
      plugin_(plugin),
      errors_(errors),
      scenarioName_(scenarioName) {
  platform::RunLoop::main().reset();
  // Script events were checked against the scenario before the run; nothing here lists its people again.
  world_ = sim::SimWorld::make(std::move(scenario), sim::SimWorld::ScenarioPeople::Released);
  transcript_ = std::make_unique<Transcript>(transcriptOut);
  recorder_ = std::make_unique<TranscriptRecorder>(*transcript_, world_.get());
  recorder_->setRecordsQueries(daemonQueries);
  host_ = std::make_unique<StatusBarHost>(*recorder_);
}

HeadlessRun::HeadlessRun(const std::string& backendName, const PluginBundle& plugin, std::ostream& transcriptOut,
                         std::ostream& errors, bool daemonQueries)
    : plugin_(plugin), errors_(errors), scenarioName_(backendName) {
  transcript_ = std::make_unique<Transcript>(transcriptOut);
  recorder_ = std::make_unique<TranscriptRecorder>(*transcript_, nullptr);
  recorder_->setRecordsQueries(daemonQueries);
  host_ = std::make_unique<StatusBarHost>(*recorder_);
}

HeadlessRun::~HeadlessRun() {
  host_.reset();
  // The transcript has ended: what the extra left on the run loop goes unrecorded.
  recorder_.reset();
  if (!clock_) return;  // a real backend's sources stay with the loop until the backend goes
  platform::RunLoop::main().reset();
  world_.reset();
  platform::Clock::setCurrent(previousClock_);
}

bool HeadlessRun::start() {
  recorder_->recordStart(plugin_, scenarioName_);
  std::string error;
  if (!host_->load(plugin_, error)) {
    errors_ << "kibbar: " << error << '\n';
    return false;
  }
  if (world_) world_->start();
  return true;
}

int HeadlessRun::playScript(const Script& script) {
  const int failures = playScriptPart(script);
  finish();
  return failures ? 1 : 0;
}

int HeadlessRun::playScriptPart(const Script& script) {
  ScriptPlayer player(script, *host_, plugin_, world_.get(), *transcript_, errors_);
  // wait-for steps move the script's end, and with it the time a menu left open closes.
  player.setEndTimeObserver([this](double end) { recorder_->setMenuTrackingDeadline(end); });
  return player.play();
}

int HeadlessRun::runSelfTest(std::uint32_t test, std::ostream& testLog) {
  recorder_->setLogListener([&testLog](platform::Log::Channel channel, const std::string& line) {
    if (channel == platform::Log::Channel::Test) testLog << line << '\n' << std::flush;
  });
  auto& loop = platform::RunLoop::main();
  loop.runFor(kSelfTestSettleTime);
  if (!plugin_.hasSelfTest()) {
    errors_ << "kibbar: " << plugin_.principalClass().name << " has no self-test\n";
    finish();
    return 1;
  }
  const auto& entry = plugin_.principalClass();
  auto& extra = *host_->extra();
  double duration = entry.durationOfTest(extra, test);
  if (test == 0)
    for (std::uint32_t each = 1; each <= 4; ++each) duration += entry.durationOfTest(extra, each);
  transcript_->write("self-test", {{"test", test}, {"duration", duration}});
  entry.runSelfTestDuration(extra, test, duration);
  recorder_->setMenuTrackingDeadline(platform::Clock::current().now() + duration + kSelfTestTail);
  loop.runFor(duration + kSelfTestTail);
  finish();
  recorder_->setLogListener(nullptr);
  return 0;
}

void HeadlessRun::finish() {
  if (host_->extra()) {
    host_->unload();
    transcript_->write("unload");
  }
  transcript_->write("end");
}

}  // namespace kibhost
