#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

#include "host/PluginBundle.h"
#include "host/Script.h"
#include "host/StatusBarHost.h"
#include "host/Transcript.h"
#include "host/TranscriptRecorder.h"
#include "platform/core/VirtualClock.h"
#include "sim/Scenario.h"
#include "sim/SimWorld.h"

namespace kibhost {

// The headless frontend: the world, the host and the extra under a virtual
// clock, with everything observable written to a transcript. Time moves only
// as the run loop runs.
class HeadlessRun {
 public:
  // Installs a virtual clock, builds the world and hooks the transcript in;
  // the extra is created by start().
  HeadlessRun(sim::Scenario scenario, const std::string& scenarioName, const PluginBundle& plugin,
              std::ostream& transcriptOut, std::ostream& errors, bool daemonQueries);
  // Over a real backend already installed as the daemon controller's: the
  // real clock, no simulated world; "wait" then means real seconds.
  HeadlessRun(const std::string& backendName, const PluginBundle& plugin, std::ostream& transcriptOut,
              std::ostream& errors, bool daemonQueries);
  ~HeadlessRun();
  HeadlessRun(const HeadlessRun&) = delete;
  HeadlessRun& operator=(const HeadlessRun&) = delete;

  // Creates the extra and starts the world; false (reason on the error stream) when the class refuses.
  bool start();
  // Plays the script to its end and unloads the extra; answers the exit status
  // (0, or 1 when a step could not be done).
  int playScript(const Script& script);
  // Plays one script after another on the same extra (a long run made of
  // parts); answers the number of steps that could not be done. finish() ends the run.
  int playScriptPart(const Script& script);
  void finish();
  // Lets the extra start up, runs self-test n (0: all) through the bundle's
  // entry points until its actions are done, unloads the extra and answers the
  // exit status. Test-log lines go to testLog as they are written.
  int runSelfTest(std::uint32_t test, std::ostream& testLog);

  StatusBarHost& host() { return *host_; }
  TranscriptRecorder& recorder() { return *recorder_; }
  Transcript& transcript() { return *transcript_; }
  // The simulated world; nil over a real backend.
  sim::SimWorld* world() { return world_.get(); }

 private:
  std::shared_ptr<platform::VirtualClock> clock_;
  std::shared_ptr<platform::Clock> previousClock_;
  const PluginBundle& plugin_;
  std::ostream& errors_;
  std::string scenarioName_;
  std::shared_ptr<sim::SimWorld> world_;
  std::unique_ptr<Transcript> transcript_;
  std::unique_ptr<TranscriptRecorder> recorder_;
  std::unique_ptr<StatusBarHost> host_;
};

}  // namespace kibhost
