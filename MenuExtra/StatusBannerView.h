#pragma once

#include <cstdint>
#include <memory>

#include "MenuExtra/StatusBannerViewDelegate.h"
#include "platform/core/String.h"
#include "platform/core/Timer.h"
#include "platform/ui/ButtonCell.h"
#include "platform/ui/Image.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/TextFieldCell.h"
#include "platform/ui/View.h"

// The view in the extra's menu-bar slot: the status icon at the left and,
// when there is banner text, a slot that widens over one eased second
// ("reveal"), text that scrolls leftward with a copy following behind, and a
// narrowing back to the icon ("collapse"). The delegate hears when a reveal or
// collapse ends and when the scroll wraps, and decides what comes next.
//
// Reveal and collapse frames are delayed messages to the view itself and the
// scroll runs on a repeating timer, both in the default run-loop mode only, so
// they pause while the menu is tracked. Both hold the view while they are
// pending; stopAllAnimation lets it go.
class StatusBannerView final : public platform::View {
  PLATFORM_SELECTORS(StatusBannerView, platform::View)

 public:
  static std::shared_ptr<StatusBannerView> initWithFrameStatusItem(const platform::Rect& frame,
                                                                   platform::MenuExtra* statusItem);
  StatusBannerView(const platform::Rect& frame, platform::MenuExtra* statusItem);
  ~StatusBannerView() override;

  // The collapsed width of the slot: room for the icon alone.
  static float minWidth() { return 24.0f; }

  StatusBannerViewDelegate* delegate() const { return _delegate; }
  void setDelegate(StatusBannerViewDelegate* delegate) { _delegate = delegate; }
  float maxRevealWidth() const { return _maxRevealWidth; }
  // Applies to the next text; the current reveal width stays.
  void setMaxRevealWidth(float width) { _maxRevealWidth = width; }
  const platform::ImagePtr& image() const { return _imageCell->image(); }
  void setImage(platform::ImagePtr image);
  bool dimmed() const { return !_imageCell->isEnabled(); }
  // Dims the icon only; redisplay is left to the caller.
  void setDimmed(bool dimmed) { _imageCell->setEnabled(!dimmed); }
  const platform::StringPtr& bannerString() const { return _string; }
  // Measures the text and reveals, collapses or just redraws for it.
  void setBannerString(platform::StringPtr text);

  // A running reveal or collapse counts as revealed.
  bool revealed() const { return _revealed || _revealAnimating; }
  bool isCollapsed() const { return _revealed ? false : !_revealing; }

  void startRevealAnimation();
  void startCollapseAnimation();
  void stopRevealAnimation();
  void stopCollapseAnimation();
  void startBannerAnimation();
  void stopBannerAnimation();
  // Resizes the slot only when the value changes.
  void setRevealed(bool revealed);
  void sizeToFit();
  // Stops the scroll and drops every pending reveal frame.
  void stopAllAnimation();

  void mouseDown(const platform::Event& event) override;
  void drawRect(platform::Canvas& canvas, const platform::Rect& dirtyRect) override;

  std::string className() const override { return "StatusBannerView"; }

 private:
  void _startRevealTimer();
  void _stopRevealTimer();
  // The argument is the date the frame chain started.
  void _doFrameOfRevealAnimation(const platform::ObjectPtr& startDate);
  void _revealComplete();
  void _concealComplete();
  void _startScrollTimer();
  void _stopScrollTimer();
  // The "_scrollTimer:" action; the field of that name holds the timer.
  void _scrollTimerTick(const platform::ObjectPtr& timer);
  float _desiredMaxWidth() const;
  platform::Rect textClipRect() const;

  platform::ButtonCellPtr _imageCell;
  platform::TextFieldCellPtr _textCell;
  platform::StringPtr _string;
  platform::Size _stringSize;
  float _revealProgress = 0.0f;
  [[maybe_unused]] float _targetRevealWidth = 0.0f;  // reserved: nothing reads or writes it
  bool _revealAnimating = false;
  platform::TimerPtr _scrollTimer;
  float _targetValue = 0.0f;
  float _currentSlideProgress = 0.0f;
  bool _revealing = false;
  platform::MenuExtra* _statusItem = nullptr;
  float _maxCappedRevealWidth = 0.0f;
  float _maxRevealWidth = 0.0f;
  bool _revealed = false;
  std::int32_t _scrollCycles = 0;
  StatusBannerViewDelegate* _delegate = nullptr;
};

using StatusBannerViewPtr = std::shared_ptr<StatusBannerView>;
