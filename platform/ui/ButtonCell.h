#pragma once

#include <memory>

#include "platform/ui/Cell.h"

namespace platform {

// Where a button cell puts its image relative to its title (the platform's values).
enum class CellImagePosition : int {
  NoImage = 0,
  ImageOnly = 1,
  ImageLeft = 2,
  ImageRight = 3,
  ImageBelow = 4,
  ImageAbove = 5,
  ImageOverlaps = 6
};

// What a button cell changes while it is highlighted (masks, the platform's values).
inline constexpr unsigned kNoCellMask = 0;
inline constexpr unsigned kContentsCellMask = 1;
inline constexpr unsigned kPushInCellMask = 2;
inline constexpr unsigned kChangeGrayCellMask = 4;
inline constexpr unsigned kChangeBackgroundCellMask = 8;

// The fraction of its opacity at which a disabled cell draws its image (when
// it dims it); every frontend that draws images dims them by this.
inline constexpr double kDimmedImageFraction = 0.5;

// A cell that shows an image and/or a title, like a button.
class ButtonCell final : public Cell {
 public:
  bool isBordered() const { return bordered_; }
  void setBordered(bool bordered) { bordered_ = bordered; }
  CellImagePosition imagePosition() const { return imagePosition_; }
  void setImagePosition(CellImagePosition position) { imagePosition_ = position; }
  unsigned highlightsBy() const { return highlightsBy_; }
  void setHighlightsBy(unsigned mask) { highlightsBy_ = mask; }
  // A disabled cell draws its image dimmed when this is set.
  bool imageDimsWhenDisabled() const { return imageDimsWhenDisabled_; }
  void setImageDimsWhenDisabled(bool dims) { imageDimsWhenDisabled_ = dims; }

  std::string className() const override { return "ButtonCell"; }

 protected:
  // Image only: the image's size; title only: the text's; otherwise side by
  // side (left, right, overlapping) or stacked (above, below). A border adds 6.
  Size naturalSize() const override;

 private:
  bool bordered_ = true;
  CellImagePosition imagePosition_ = CellImagePosition::NoImage;
  unsigned highlightsBy_ = kPushInCellMask | kChangeGrayCellMask;
  bool imageDimsWhenDisabled_ = true;
};

using ButtonCellPtr = std::shared_ptr<ButtonCell>;

}  // namespace platform
