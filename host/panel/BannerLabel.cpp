#include "host/panel/BannerLabel.h"

#include <cmath>
#include <map>

#include "host/TerminalScreen.h"
#include "platform/ui/Cell.h"

namespace kibhost {
namespace {

bool isTextCell(const platform::RecordingCanvas::Operation& op) {
  return op.kind == platform::RecordingCanvas::Kind::DrawCell && op.cellClass == "TextFieldCell" && !op.image;
}

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

double BannerLabel::advance() {
  return 0.6 * platform::Cell::systemFontSizeForControlSize(platform::ControlSize::Regular);
}

std::string BannerLabel::visibleText(const platform::RecordingCanvas& canvas) {
  const double step = advance();
  std::map<long, std::string> columns;
  for (const auto& op : canvas.operations()) {
    if (!isTextCell(op) || !op.clip || op.clip->isEmpty()) continue;
    const auto& clip = *op.clip;
    const auto points = TerminalScreen::codePoints(op.string);
    for (std::size_t i = 0; i < points.size(); ++i) {
      const double x = op.rect.x + step * static_cast<double>(i);
      const double centre = x + step / 2;
      if (centre < clip.x || centre >= clip.maxX()) continue;
      columns[std::lround(std::floor((x - clip.x) / step + 0.5))] = points[i];
    }
  }
  if (columns.empty()) return "";
  std::string text;
  for (long column = columns.begin()->first; column <= columns.rbegin()->first; ++column) {
    auto found = columns.find(column);
    text += found == columns.end() ? " " : found->second;
  }
  return trimmed(text);
}

std::string BannerLabel::bannerText(const platform::RecordingCanvas& canvas) {
  for (const auto& op : canvas.operations())
    if (isTextCell(op)) return op.string;
  return "";
}

std::string BannerLabel::guideFor(const std::string& bannerText) {
  const auto points = TerminalScreen::codePoints(bannerText);
  const auto widest = static_cast<std::size_t>(std::floor(kWidestClip / advance()));
  std::string guide;
  for (std::size_t i = 0; i < points.size() && i < widest; ++i) guide += points[i];
  return guide;
}

}  // namespace kibhost
