#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "host/PluginBundle.h"
#include "host/Script.h"
#include "host/StatusBarHost.h"
#include "host/Transcript.h"
#include "sim/SimWorld.h"

namespace kibhost {

// Plays a script against the host, the extra and the world. Every step is
// scheduled on the main run loop at its time in every mode, so steps that
// act on an open menu run while the host tracks it. A step that cannot be
// done (no menu open, no such item, an unknown buddy) is written to the
// transcript and to the error stream, and the script goes on.
class ScriptPlayer {
 public:
  // world: nil when a real backend plays the daemon (event steps then fail).
  ScriptPlayer(const Script& script, StatusBarHost& host, const PluginBundle& plugin, sim::SimWorld* world,
               Transcript& transcript, std::ostream& errors);

  // Plays the script to its end time (measured from now); a menu still open
  // then is closed without a choice. Answers the number of failed steps.
  int play();
  // Told the clock time the script ends at when it starts and whenever a wait-for moves it.
  void setEndTimeObserver(std::function<void(double)> observer) { endTimeObserver_ = std::move(observer); }

 private:
  void scheduleStep(std::size_t index);
  void run(const ScriptStep& step);
  void fail(const ScriptStep& step, const std::string& message);
  StatusBarHost::OpenMenu* requireMenu(const ScriptStep& step);
  void choose(const ScriptStep& step);
  void chooseIndex(const ScriptStep& step);
  void pressKey(const ScriptStep& step);
  void post(const ScriptStep& step);
  void selfTest(const ScriptStep& step);
  // wait-for: checks the menu now and then until the title shows (or
  // leaves), at most the step's duration; the later steps move by the time it took.
  void waitFor(std::size_t index, double began);
  bool menuShows(const std::string& title);

  const Script& script_;
  StatusBarHost& host_;
  const PluginBundle& plugin_;
  sim::SimWorld* world_;
  Transcript& transcript_;
  std::ostream& errors_;
  double start_ = 0;
  double delay_ = 0;      // time taken by wait-for steps so far
  bool waiting_ = false;  // a wait-for step is waiting
  int failures_ = 0;
  std::function<void(double)> endTimeObserver_;
};

}  // namespace kibhost
