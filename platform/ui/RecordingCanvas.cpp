#include "platform/ui/RecordingCanvas.h"

namespace platform {

std::string RecordingCanvas::Operation::description() const {
  switch (kind) {
    case Kind::SaveState:
      return "save";
    case Kind::RestoreState:
      return "restore";
    case Kind::Clip:
      return "clip " + toString(rect);
    case Kind::DrawCell: {
      std::string text = "cell " + cellClass;
      if (!string.empty()) text += " \"" + string + "\"";
      if (image) text += " image " + image->description();
      if (!enabled) text += " disabled";
      return text + " " + toString(rect);
    }
    case Kind::FillRects: {
      std::string text = "fill op " + std::to_string(static_cast<int>(operation));
      for (std::size_t i = 0; i < rects.size(); ++i)
        text += " " + toString(rects[i]) + " " + (i < colors.size() ? colors[i].toString() : "?");
      return text;
    }
    case Kind::MenuBackground:
      return std::string("menu-background ") + (highlighted ? "highlighted " : "") + toString(rect);
  }
  return "?";
}

RecordingCanvas::Operation& RecordingCanvas::record(Kind kind, const Rect& rect) {
  Operation& op = operations_.emplace_back();
  op.kind = kind;
  op.rect = rect;
  op.clip = clip_;
  return op;
}

void RecordingCanvas::saveGraphicsState() {
  savedClips_.push_back(clip_);
  record(Kind::SaveState);
}

void RecordingCanvas::restoreGraphicsState() {
  if (savedClips_.empty()) {
    ++unbalancedRestores_;
  } else {
    clip_ = savedClips_.back();
    savedClips_.pop_back();
  }
  record(Kind::RestoreState);
}

void RecordingCanvas::clipToRect(const Rect& rect) {
  clip_ = clip_ ? clip_->intersection(rect) : rect;
  record(Kind::Clip, rect);
}

void RecordingCanvas::drawCell(const Cell& cell, const Rect& frame) {
  auto& op = record(Kind::DrawCell, frame);
  op.cell = &cell;
  op.cellClass = cell.className();
  op.string = cell.stringValue();
  op.image = cell.image();
  op.enabled = cell.isEnabled();
  op.backgroundStyle = cell.backgroundStyle();
}

void RecordingCanvas::fillRectsWithColors(const std::vector<Rect>& rects, const std::vector<Color>& colors,
                                          CompositingOperation operation) {
  auto& op = record(Kind::FillRects);
  op.rects = rects;
  op.colors = colors;
  op.operation = operation;
}

void RecordingCanvas::fillMenuBackground(const Rect& rect, bool highlighted) {
  record(Kind::MenuBackground, rect).highlighted = highlighted;
}

std::vector<const RecordingCanvas::Operation*> RecordingCanvas::operationsOfKind(Kind kind) const {
  std::vector<const Operation*> found;
  for (const auto& op : operations_)
    if (op.kind == kind) found.push_back(&op);
  return found;
}

std::vector<std::string> RecordingCanvas::descriptions() const {
  std::vector<std::string> lines;
  for (const auto& op : operations_) lines.push_back(op.description());
  return lines;
}

void RecordingCanvas::clear() {
  operations_.clear();
  clip_.reset();
  savedClips_.clear();
  unbalancedRestores_ = 0;
}

}  // namespace platform
