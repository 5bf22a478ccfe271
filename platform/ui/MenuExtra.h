#pragma once

#include <memory>

#include "platform/core/Bundle.h"
#include "platform/core/Object.h"
#include "platform/ui/Canvas.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuExtraHost.h"
#include "platform/ui/View.h"

namespace platform {

// The status-item base class that a menu-bar extra derives from. It belongs to
// the bundle it was loaded from, keeps a cached menu, shows one view in its
// slot of the status bar and talks to the host (not owned) that shows it.
// Everything asked of the host before one is attached is kept and read by the
// host when it attaches (length, view, menu).
class MenuExtra : public Object {
 public:
  ~MenuExtra() override;

  const BundlePtr& bundle() const { return bundle_; }

  // The base answers the cached menu (nil when none). A subclass overrides it
  // to build the menu on demand and calls MenuExtra::menu() to read the cache.
  virtual MenuPtr menu();
  virtual void setMenu(MenuPtr menu);

  const ViewPtr& view() const { return view_; }
  // Shows the view in the slot; its display requests reach the host.
  void setView(ViewPtr view);

  double length() const { return length_; }
  // Resizes the slot; a width-sizable view follows the new length.
  void setLength(double length);

  // Whether the host has the item's menu open.
  bool isMenuDown() const;
  // Paints the bar's background behind the item's view (its bounds, or the
  // slot when there is no view), as the selection when highlighted.
  void drawMenuBackground(Canvas& canvas, bool highlighted) const;
  // Has the host open the menu under the item and track it; returns when the
  // menu has closed. The view is redrawn as the highlight comes and goes.
  void popUpMenu(const MenuPtr& menu);

  // Whether the extra draws for the newer menu bar (tinted template images).
  virtual bool convertedForNewUI() const { return false; }
  // The host is about to unload the bundle: the extra stops talking to it.
  // Subclasses run their own teardown first and then call the base.
  virtual void willUnload();

  MenuExtraHost* host() const { return host_; }
  // Attached by the host after creation; nil detaches.
  void setHost(MenuExtraHost* host) { host_ = host; }

  std::string className() const override { return "MenuExtra"; }

 protected:
  MenuExtra() = default;
  // The base initialiser: answers NO (the initialiser's nil) without a bundle.
  bool initWithBundle(const BundlePtr& bundle);

 private:
  void detachView();

  BundlePtr bundle_;
  MenuPtr menu_;
  ViewPtr view_;
  double length_ = 0;
  MenuExtraHost* host_ = nullptr;
};

using MenuExtraPtr = std::shared_ptr<MenuExtra>;

}  // namespace platform
