#include "platform/ui/MenuExtra.h"

#include "platform/ui/StatusBar.h"

namespace platform {

MenuExtra::~MenuExtra() { detachView(); }

bool MenuExtra::initWithBundle(const BundlePtr& bundle) {
  if (!bundle) return false;
  bundle_ = bundle;
  return true;
}

MenuPtr MenuExtra::menu() { return menu_; }

void MenuExtra::setMenu(MenuPtr menu) {
  menu_ = std::move(menu);
  if (host_) host_->menuExtraMenuDidChange(*this);
}

void MenuExtra::setView(ViewPtr view) {
  if (view == view_) return;
  detachView();
  view_ = std::move(view);
  if (!view_) return;
  view_->setNeedsDisplayHandler([this](View&) {
    if (host_) host_->menuExtraNeedsDisplay(*this);
  });
  view_->setNeedsDisplay(true);
}

void MenuExtra::setLength(double length) {
  length_ = length;
  if (view_ && (view_->autoresizingMask() & kViewWidthSizable))
    view_->setFrameSize({length, view_->frame().height});
  if (host_) host_->menuExtraLengthDidChange(*this);
}

bool MenuExtra::isMenuDown() const { return host_ && host_->menuExtraIsMenuDown(*this); }

void MenuExtra::drawMenuBackground(Canvas& canvas, bool highlighted) const {
  Rect area = view_ ? view_->bounds() : Rect{0, 0, length_, StatusBar::thickness()};
  canvas.fillMenuBackground(area, highlighted);
}

void MenuExtra::popUpMenu(const MenuPtr& menu) {
  if (!host_ || !menu) return;
  [[maybe_unused]] auto self = weak_from_this().lock();  // a menu action may release the extra's owner
  if (view_) view_->setNeedsDisplay(true);
  host_->menuExtraPopUpMenu(*this, menu);
  if (view_) view_->setNeedsDisplay(true);
}

void MenuExtra::willUnload() { host_ = nullptr; }

void MenuExtra::detachView() {
  if (view_) view_->setNeedsDisplayHandler(nullptr);
}

}  // namespace platform
