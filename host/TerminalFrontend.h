#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/KeyDecoder.h"
#include "host/PluginBundle.h"
#include "host/SignalPipe.h"
#include "host/StatusBarHost.h"
#include "host/TerminalMenu.h"
#include "host/TerminalScreen.h"
#include "host/TerminalSession.h"
#include "host/Transcript.h"
#include "host/TranscriptRecorder.h"
#include "host/WorldPanel.h"
#include "platform/core/Timer.h"
#include "sim/Scenario.h"
#include "sim/SimWorld.h"

namespace kibhost {

// The interactive frontend on the real clock: a menu bar with the extra's
// slot at the right (icon, banner text, width following the extra's length),
// its menu under the slot on a click or Enter, and a panel with the simulated
// world and keys that change it. Input, signals and redraws all arrive through
// the main run loop; the terminal is given back on every way out.
class TerminalFrontend final : public StatusBarHostDelegate {
 public:
  // transcriptFile: where to write a transcript of the session, or nil. No
  // scenario: a real backend is the messaging daemon, and there is no world to change.
  TerminalFrontend(std::optional<sim::Scenario> scenario, std::string scenarioName, const PluginBundle& plugin,
                   std::ostream* transcriptFile);
  ~TerminalFrontend() override;

  // Runs until the user quits or a signal ends the program; answers the exit status.
  int run(std::ostream& errors);
  // A line for the panel's list of what happened (a real client's doings).
  void noteActivity(const std::string& line);

  void slotLengthDidChange(double length) override;
  void slotDidDisplay(const platform::RecordingCanvas& canvas) override;
  void menuDidOpen(const platform::MenuPtr& menu) override;
  void menuDidClose(std::int64_t chosenIndex) override;

 private:
  void readInput();
  void handlePendingKeys();
  void readSignals();
  void handle(const KeyEvent& key);
  void handleMenuKey(const KeyEvent& key);
  void handlePromptKey(const KeyEvent& key);
  void clickSlot(std::uint64_t modifierFlags);
  void applyEvent(const sim::SimEvent& event);
  void toggleScreenSharing();
  void requestQuit();
  void suspend();
  void requestRedraw();
  void redraw();
  void drawBar();
  void drawFooter();
  void noteTranscriptLine(const Transcript::Fields& line);

  std::optional<sim::Scenario> scenario_;
  std::string scenarioName_;
  const PluginBundle& plugin_;
  std::ostream* transcriptFile_;
  std::ostream nullStream_{nullptr};

  TerminalSession session_;
  std::unique_ptr<SignalPipe> signals_;
  KeyDecoder decoder_;
  std::deque<KeyEvent> pendingKeys_;
  std::shared_ptr<sim::SimWorld> world_;
  std::unique_ptr<Transcript> transcript_;
  std::unique_ptr<TranscriptRecorder> recorder_;
  std::unique_ptr<StatusBarHost> host_;
  std::unique_ptr<WorldPanel> panel_;
  std::vector<std::string> pendingActivity_;  // heard before the panel exists
  std::unique_ptr<TerminalMenu> menu_;
  platform::TimerPtr clockTimer_;

  TerminalScreen screen_;
  TerminalScreen shown_;
  std::vector<TerminalScreen::Cell> slotCells_;
  int slotColumn_ = 0;
  std::optional<std::string> prompt_;  // the status text being typed
  bool quit_ = false;
  int quitSignal_ = 0;  // the signal that ended the program, 0 for the user
  bool redrawScheduled_ = false;
  std::shared_ptr<TerminalFrontend*> self_;
};

}  // namespace kibhost
