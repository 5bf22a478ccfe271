#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "host/PluginBundle.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/MenuExtraHost.h"
#include "platform/ui/MenuTracking.h"
#include "platform/ui/RecordingCanvas.h"

namespace kibhost {

// What a frontend hears from the status bar.
class StatusBarHostDelegate {
 public:
  virtual ~StatusBarHostDelegate() = default;
  virtual void slotLengthDidChange(double /*length*/) {}
  // The slot's view was drawn (once per run-loop turn in which it asked to be).
  virtual void slotDidDisplay(const platform::RecordingCanvas& /*canvas*/) {}
  virtual void menuDidOpen(const platform::MenuPtr& /*menu*/) {}
  // The menu closed; the chosen item's action (index −1: none) runs right after.
  virtual void menuDidClose(std::int64_t /*chosenIndex*/) {}
  // The extra cached a new menu or dropped its cached one.
  virtual void cachedMenuDidChange() {}
  // The latest clock time a menu may stay open; the host closes it then.
  // Headless runs end there; an interactive frontend waits for the user.
  virtual double menuTrackingDeadline() { return std::numeric_limits<double>::infinity(); }
};

// The status bar's side of one loaded extra: it creates the extra from its
// bundle's principal class, attaches itself as the extra's host, draws the
// slot's view when it asks, opens the menu on a click and tracks it by running
// the main run loop in event-tracking mode until the frontend closes it, then
// performs the chosen item; on unload it sends willUnload and releases the extra.
class StatusBarHost final : public platform::MenuExtraHost {
 public:
  struct OpenMenu {
    platform::MenuTracking tracking;
    std::uint64_t modifierFlags = 0;  // held while the menu is open (alternate rows)
    bool closing = false;
    std::int64_t chosenIndex = -1;
  };

  explicit StatusBarHost(StatusBarHostDelegate& delegate);
  ~StatusBarHost() override;
  StatusBarHost(const StatusBarHost&) = delete;
  StatusBarHost& operator=(const StatusBarHost&) = delete;

  // Creates the extra with the bundle's principal class and attaches to it;
  // false, with the reason, when the class refuses the bundle.
  bool load(const PluginBundle& bundle, std::string& error);
  const platform::MenuExtraPtr& extra() const { return extra_; }

  // A click on the slot: the extra's view gets the mouse-down (and pops up the
  // extra's menu); without a view the host asks for the menu and pops it up.
  // Returns when the menu has closed and the chosen item has run.
  void click(std::uint64_t modifierFlags = 0);
  // The menu being tracked, nil when none is open.
  OpenMenu* openMenu() { return openMenu_.get(); }
  // Ends the tracking: the menu closes and the item at the index (−1: none) is chosen.
  void closeMenu(std::int64_t chosenIndex);

  // willUnload, then the extra is released. The menu must be closed.
  void unload();

  // Draws the view now, whatever it asked for.
  void displayNow();
  double length() const { return extra_ ? extra_->length() : 0; }

  void menuExtraLengthDidChange(platform::MenuExtra& extra) override;
  void menuExtraNeedsDisplay(platform::MenuExtra& extra) override;
  void menuExtraPopUpMenu(platform::MenuExtra& extra, const platform::MenuPtr& menu) override;
  bool menuExtraIsMenuDown(const platform::MenuExtra& extra) const override;
  void menuExtraMenuDidChange(platform::MenuExtra& extra) override;

 private:
  void scheduleDisplay();

  StatusBarHostDelegate& delegate_;
  platform::MenuExtraPtr extra_;
  std::unique_ptr<OpenMenu> openMenu_;
  std::uint64_t clickModifiers_ = 0;
  bool displayScheduled_ = false;
  // Display passes scheduled on the run loop check that the host still exists.
  std::shared_ptr<StatusBarHost*> self_;
};

}  // namespace kibhost
