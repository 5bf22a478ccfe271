#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "bus/BusConnection.h"
#include "host/PluginBundle.h"
#include "host/SignalPipe.h"
#include "host/StatusBarHost.h"
#include "host/Transcript.h"
#include "host/TranscriptRecorder.h"
#include "host/panel/DBusMenuAdaptor.h"
#include "host/panel/DBusMenuLayout.h"
#include "host/panel/LabelThrottle.h"
#include "host/panel/PanelIcons.h"
#include "host/panel/StatusNotifierItemAdaptor.h"
#include "host/panel/WatcherRegistration.h"
#include "sim/Scenario.h"
#include "sim/SimWorld.h"

namespace kibhost {

// The desktop-panel frontend on the real clock: the extra as a
// StatusNotifierItem on the session bus with its menu exported over
// com.canonical.dbusmenu. It only forwards: the slot's drawing becomes the
// item's icon, label and tooltip; a panel opening the menu becomes a click on
// the slot (the extra's menu, tracked in event-tracking mode until the panel
// closes it); a clicked entry becomes the chosen item, run after the menu has
// closed. Everything runs on the main run loop; at rest nothing wakes it.
class PanelFrontend final : public StatusBarHostDelegate,
                            public StatusNotifierItemAdaptor::Delegate,
                            public DBusMenuAdaptor::Delegate {
 public:
  // A menu left open without the panel's "closed" is closed after this long.
  static constexpr double kMenuTimeout = 30.0;
  // Label changes are sent at most this often.
  static constexpr double kLabelInterval = 0.1;

  // No scenario: a real backend is the messaging daemon, and there is no simulated world.
  PanelFrontend(std::optional<sim::Scenario> scenario, std::string scenarioName, const PluginBundle& plugin,
                std::ostream* transcriptFile, std::unique_ptr<PanelIcons> icons);
  ~PanelFrontend() override;
  PanelFrontend(const PanelFrontend&) = delete;
  PanelFrontend& operator=(const PanelFrontend&) = delete;

  // Runs until SIGTERM or SIGINT (0), or answers 2 without a session bus, 1 when the bus goes away.
  int run(std::ostream& errors);

  void slotDidDisplay(const platform::RecordingCanvas& canvas) override;
  void slotLengthDidChange(double length) override;
  void menuDidOpen(const platform::MenuPtr& menu) override;
  void menuDidClose(std::int64_t chosenIndex) override;
  void cachedMenuDidChange() override;
  double menuTrackingDeadline() override { return openedAt_ + kMenuTimeout; }

  void statusItemActivated(std::int32_t x, std::int32_t y) override;
  void dbusMenuWillOpen() override;
  void dbusMenuItemClicked(std::int32_t id) override;
  void dbusMenuDidClose() override;

 private:
  struct Choice {
    platform::MenuPtr menu;
    std::int64_t index = -1;
  };

  bool startExtra(std::ostream& errors);
  void exportBus();
  void requestOpen();
  void openMenu();
  DBusMenuLayout::Changes exportMenu(const platform::MenuPtr& menu);
  void scheduleMenuRefresh();
  void refreshMenu();
  static void choose(const Choice& choice);
  void readSignals();
  void quit(int status);
  void observeScreenSharing();
  void updateIcon(const platform::RecordingCanvas& canvas);
  void labelSent(const std::string& label);
  const std::vector<PanelIcons::Pixmap>& pixmapsFor(const platform::ImagePtr& image, bool dimmed);
  std::string localized(const std::string& key) const;
  void publish();

  std::optional<sim::Scenario> scenario_;
  std::string scenarioName_;
  const PluginBundle& plugin_;
  std::ostream* transcriptFile_;
  std::ostream nullStream_{nullptr};
  std::unique_ptr<PanelIcons> icons_;

  std::unique_ptr<kibbus::BusConnection> bus_;
  std::string busName_;
  std::unique_ptr<SignalPipe> signals_;
  std::shared_ptr<sim::SimWorld> world_;
  std::unique_ptr<Transcript> transcript_;
  std::unique_ptr<TranscriptRecorder> recorder_;
  std::unique_ptr<StatusBarHost> host_;
  DBusMenuLayout layout_;
  std::unique_ptr<StatusNotifierItemAdaptor> item_;
  std::unique_ptr<DBusMenuAdaptor> menu_;
  std::unique_ptr<WatcherRegistration> watcher_;
  std::unique_ptr<LabelThrottle> label_;
  std::vector<platform::ObjectPtr> observers_;

  StatusNotifierItemAdaptor::State state_;
  std::map<std::string, std::vector<PanelIcons::Pixmap>> pixmapCache_;
  std::string iconKey_;
  std::string bannerText_;
  bool sharing_ = false;
  bool openScheduled_ = false;
  bool refreshScheduled_ = false;
  bool refreshing_ = false;
  double openedAt_ = 0;
  Choice pendingChoice_;
  bool quit_ = false;
  int status_ = 0;
  std::shared_ptr<PanelFrontend*> self_;
};

}  // namespace kibhost
