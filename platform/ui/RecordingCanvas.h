#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ui/Canvas.h"
#include "platform/ui/Cell.h"
#include "platform/ui/Image.h"

namespace platform {

// A canvas that records every operation in order, with its arguments and the
// clip in effect, for tests and transcripts.
class RecordingCanvas final : public Canvas {
 public:
  enum class Kind { SaveState, RestoreState, Clip, DrawCell, FillRects, MenuBackground };

  struct Operation {
    Kind kind = Kind::SaveState;
    // The clip, cell frame or background rectangle.
    Rect rect;
    // The clip in effect when the operation ran (after it, for a clip); nullopt: unclipped.
    std::optional<Rect> clip;
    // Cell draws: which cell and what it showed.
    const Cell* cell = nullptr;
    std::string cellClass;
    std::string string;
    ImagePtr image;
    bool enabled = true;
    BackgroundStyle backgroundStyle = BackgroundStyle::Light;
    // Fills.
    std::vector<Rect> rects;
    std::vector<Color> colors;
    CompositingOperation operation = CompositingOperation::SourceOver;
    // Menu background.
    bool highlighted = false;

    // One line: "save", "restore", "clip {{…}}", "cell TextFieldCell \"text\" {{…}}",
    // "cell ButtonCell image MenuExtra.pdf disabled {{…}}", "fill op 8 {{…}} rgba(…) …",
    // "menu-background highlighted {{…}}".
    std::string description() const;
  };

  void saveGraphicsState() override;
  void restoreGraphicsState() override;
  void clipToRect(const Rect& rect) override;
  void drawCell(const Cell& cell, const Rect& frame) override;
  void fillRectsWithColors(const std::vector<Rect>& rects, const std::vector<Color>& colors,
                           CompositingOperation operation) override;
  void fillMenuBackground(const Rect& rect, bool highlighted) override;

  const std::vector<Operation>& operations() const { return operations_; }
  std::vector<const Operation*> operationsOfKind(Kind kind) const;
  std::vector<std::string> descriptions() const;
  // The clip in effect now.
  const std::optional<Rect>& currentClip() const { return clip_; }
  // Restores without a matching save (they are recorded and otherwise ignored).
  int unbalancedRestores() const { return unbalancedRestores_; }
  void clear();

 private:
  Operation& record(Kind kind, const Rect& rect = {});

  std::vector<Operation> operations_;
  std::optional<Rect> clip_;
  std::vector<std::optional<Rect>> savedClips_;
  int unbalancedRestores_ = 0;
};

}  // namespace platform
