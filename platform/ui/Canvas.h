#pragma once

#include <vector>

#include "platform/ui/Color.h"
#include "platform/ui/Geometry.h"

namespace platform {

class Cell;

// Compositing operations (the platform's values).
enum class CompositingOperation : int {
  Clear = 0,
  Copy = 1,
  SourceOver = 2,
  SourceIn = 3,
  SourceOut = 4,
  SourceAtop = 5,
  DestinationOver = 6,
  DestinationIn = 7,
  DestinationOut = 8,  // erases the destination by the source's alpha
  DestinationAtop = 9,
  XOR = 10,
  PlusDarker = 11,
  Highlight = 12,
  PlusLighter = 13
};

// Where views draw: a graphics state stack with a clip, cells, rectangle fills
// and the menu background. Frontends render it; tests record it.
class Canvas {
 public:
  virtual ~Canvas() = default;

  virtual void saveGraphicsState() = 0;
  virtual void restoreGraphicsState() = 0;
  // Narrows the current clip to the rectangle (until the state is restored).
  virtual void clipToRect(const Rect& rect) = 0;
  virtual void drawCell(const Cell& cell, const Rect& frame) = 0;
  // Fills rects[i] with colors[i] under the operation; the lists are paired.
  virtual void fillRectsWithColors(const std::vector<Rect>& rects, const std::vector<Color>& colors,
                                   CompositingOperation operation) = 0;
  // Paints the menu bar's background behind a status item, as the selection when highlighted.
  virtual void fillMenuBackground(const Rect& rect, bool highlighted) = 0;
};

}  // namespace platform
