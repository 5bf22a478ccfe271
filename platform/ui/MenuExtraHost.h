#pragma once

#include "platform/ui/Menu.h"

namespace platform {

class MenuExtra;

// What a status item needs from the status bar that shows it. The status-bar
// program implements it; one host serves every extra it has loaded.
class MenuExtraHost {
 public:
  virtual ~MenuExtraHost() = default;

  // The item's length (its slot's width) changed; read it with extra.length().
  virtual void menuExtraLengthDidChange(MenuExtra& extra) = 0;
  // The item's view wants to be drawn again (once per batch of requests).
  virtual void menuExtraNeedsDisplay(MenuExtra& extra) = 0;
  // Opens the menu under the item and tracks it: the host runs the main run
  // loop in event-tracking mode until the menu closes, then returns.
  virtual void menuExtraPopUpMenu(MenuExtra& extra, const MenuPtr& menu) = 0;
  // Whether the item's menu is open now.
  virtual bool menuExtraIsMenuDown(const MenuExtra& extra) const = 0;
  // The item cached a new menu or dropped it (setMenu); a host showing the
  // menu elsewhere may want the new one.
  virtual void menuExtraMenuDidChange(MenuExtra& /*extra*/) {}
};

}  // namespace platform
