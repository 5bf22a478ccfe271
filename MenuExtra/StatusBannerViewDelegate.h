#pragma once

#include <cstdint>

class StatusBannerView;

// Told by the banner view when a reveal or collapse has finished and each time
// the scrolling text wraps; decides what the view does next. Not owned by the view.
class StatusBannerViewDelegate {
 public:
  virtual ~StatusBannerViewDelegate() = default;

  // revealed: true after a widening, false after a narrowing.
  virtual void statusBannerViewFinishedRevealAnimation(StatusBannerView& view, bool revealed) = 0;
  // cycles: the cycles completed since the scroll started (1 on the first wrap).
  virtual void statusBannerViewBannerFinishedScrollCycle(StatusBannerView& view, std::int32_t cycles) = 0;
};
