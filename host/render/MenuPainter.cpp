#include "host/render/MenuPainter.h"

#include <algorithm>
#include <cmath>

#include "host/render/CairoHandles.h"
#include "platform/ui/KeyEquivalentText.h"
#include "platform/ui/MenuItem.h"
#include "platform/ui/MenuTracking.h"

namespace kibrender {
namespace {

constexpr double kCornerRadius = 6;
constexpr double kMaximumImageSide = 16;

void setColor(cairo_t* context, const platform::Color& color) {
  cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
}

void roundedRectangle(cairo_t* context, double x, double y, double width, double height, double radius) {
  cairo_new_sub_path(context);
  cairo_arc(context, x + width - radius, y + radius, radius, -M_PI / 2, 0);
  cairo_arc(context, x + width - radius, y + height - radius, radius, 0, M_PI / 2);
  cairo_arc(context, x + radius, y + height - radius, radius, M_PI / 2, M_PI);
  cairo_arc(context, x + radius, y + radius, radius, M_PI, 3 * M_PI / 2);
  cairo_close_path(context);
}

double rowHeight(const MenuRow& row) { return row.separator ? MenuPainter::kSeparatorHeight : MenuPainter::kRowHeight; }

}  // namespace

std::vector<MenuRow> MenuRow::rowsOf(const platform::MenuPtr& menu, std::uint64_t modifierFlags) {
  std::vector<MenuRow> rows;
  if (!menu) return rows;
  platform::MenuTracking tracking(menu);
  for (const auto& shown : tracking.visibleRows(modifierFlags)) {
    const auto& item = *shown.item;
    MenuRow row;
    row.separator = item.isSeparatorItem();
    if (!row.separator) {
      row.title = item.title();
      row.state = item.state();
      row.enabled = shown.enabled;
      row.image = item.image();
      row.indentationLevel = item.indentationLevel();
      row.keyEquivalent = platform::keyEquivalentText(item.keyEquivalent(), item.keyEquivalentModifierMask());
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

MenuPainter::MenuPainter(ImageRasterizer& rasterizer, const TextRenderer& text, PictureStyle style)
    : rasterizer_(rasterizer), text_(text), style_(style), palette_(Palette::forTheme(style.theme)) {}

double MenuPainter::imageWidth(const MenuRow& row) const {
  if (!row.image || row.separator) return 0;
  const auto size = row.image->size();
  if (!(size.width > 0) || !(size.height > 0)) return 0;
  return std::min(kMaximumImageSide, size.width * std::min(1.0, kMaximumImageSide / size.height));
}

PixelRect MenuPainter::pixels(double x, double y, double width, double height) const {
  const double s = style_.scale;
  const int left = static_cast<int>(std::floor(x * s)), top = static_cast<int>(std::floor(y * s));
  return {left, top, static_cast<int>(std::ceil((x + width) * s)) - left,
          static_cast<int>(std::ceil((y + height) * s)) - top};
}

MenuPainter::Columns MenuPainter::measureColumns(cairo_t* context, const std::vector<MenuRow>& rows) const {
  Columns columns;
  for (const auto& row : rows) columns.imageWidth = std::max(columns.imageWidth, imageWidth(row));
  columns.titleX = kImageX + (columns.imageWidth > 0 ? columns.imageWidth + kImageGap : 0);
  double widest = 0, widestKey = 0;
  bool submenus = false;
  for (const auto& row : rows) {
    if (row.separator) continue;
    const double indent = static_cast<double>(row.indentationLevel) * kIndentation;
    widest = std::max(widest, indent + text_.measure(context, row.title, kFontSize).width);
    if (!row.keyEquivalent.empty())
      widestKey = std::max(widestKey, text_.measure(context, row.keyEquivalent, kFontSize).width);
    submenus = submenus || row.hasSubmenu;
  }
  double right = columns.titleX + widest;
  if (widestKey > 0) right += kKeyGap + widestKey;
  if (submenus) right += kKeyGap + kArrowWidth;
  columns.width = std::ceil(std::max(kMinimumWidth, right + kRightMargin));
  return columns;
}

Pixmap MenuPainter::paint(const std::vector<MenuRow>& rows) {
  placements_.assign(rows.size(), {});
  double height = 2 * kVerticalPadding;
  for (const auto& row : rows) height += rowHeight(row);

  // Measuring needs a context with the final scale, before the pixmap's size is known.
  Pixmap probe(1, 1);
  auto probeSurface = surfaceDrawingInto(probe);
  ContextHandle measuring(cairo_create(probeSurface.get()));
  cairo_scale(measuring.get(), style_.scale, style_.scale);
  const Columns columns = measureColumns(measuring.get(), rows);

  Pixmap picture(static_cast<int>(std::ceil(columns.width * style_.scale)),
                 static_cast<int>(std::ceil(height * style_.scale)));
  if (picture.isEmpty()) return picture;
  auto surface = surfaceDrawingInto(picture);
  ContextHandle context(cairo_create(surface.get()));
  cairo_t* cr = context.get();
  cairo_scale(cr, style_.scale, style_.scale);

  roundedRectangle(cr, 0.5, 0.5, columns.width - 1, height - 1, kCornerRadius);
  setColor(cr, palette_.menu);
  cairo_fill_preserve(cr);
  cairo_set_line_width(cr, 1);
  setColor(cr, palette_.border);
  cairo_stroke(cr);

  double top = kVerticalPadding;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    drawRow(cr, rows[i], columns, top, placements_[i]);
    top += rowHeight(rows[i]);
  }
  cairo_surface_flush(surface.get());
  return picture;
}

void MenuPainter::drawRow(cairo_t* cr, const MenuRow& row, const Columns& columns, double top,
                          MenuRowPlacement& placement) {
  placement.row = pixels(1, top, columns.width - 2, rowHeight(row));
  if (row.separator) {
    const double y = top + kSeparatorHeight / 2;
    cairo_rectangle(cr, 1, y - 0.5, columns.width - 2, 1);
    setColor(cr, palette_.separator);
    cairo_fill(cr);
    return;
  }
  const bool highlighted = row.highlighted && row.enabled;
  if (highlighted) {
    cairo_rectangle(cr, 1, top, columns.width - 2, kRowHeight);
    setColor(cr, palette_.highlight);
    cairo_fill(cr);
  }
  const platform::Color ink = highlighted   ? palette_.highlightedText
                              : row.enabled ? palette_.text
                                            : palette_.disabledText;

  if (row.state != platform::kOffState) {
    drawMark(cr, row.state, top, ink);
    placement.mark = pixels(kMarkX, top + (kRowHeight - kMarkSize) / 2, kMarkSize, kMarkSize);
  }
  if (const double width = imageWidth(row); width > 0) {
    const auto natural = row.image->size();
    const double height = std::min(kMaximumImageSide, natural.height * width / natural.width);
    const double x = kImageX + (columns.imageWidth - width) / 2, y = top + (kRowHeight - height) / 2;
    const PixelRect box = pixels(x, y, width, height);
    const RasterOptions options{ink, !row.enabled};
    const Pixmap image = rasterizer_.render(*row.image, box.width, box.height, options);
    if (!image.isEmpty()) {
      Pixmap copy = image;
      auto source = surfaceDrawingInto(copy);
      cairo_save(cr);
      cairo_identity_matrix(cr);
      cairo_set_source_surface(cr, source.get(), box.x, box.y);
      cairo_paint(cr);
      cairo_restore(cr);
      placement.image = box;
    }
  }
  const double titleX = columns.titleX + static_cast<double>(row.indentationLevel) * kIndentation;
  const auto titleSize = text_.measure(cr, row.title, kFontSize);
  const double textTop = top + (kRowHeight - titleSize.height) / 2;
  text_.draw(cr, row.title, kFontSize, titleX, textTop, ink);
  placement.title = pixels(titleX, textTop, titleSize.width, titleSize.height);

  double right = columns.width - kRightMargin;
  if (row.hasSubmenu) {
    drawArrow(cr, right, top, ink);
    placement.arrow = pixels(right - kArrowWidth, top + (kRowHeight - kArrowWidth) / 2, kArrowWidth, kArrowWidth);
  }
  if (!row.keyEquivalent.empty()) {
    const auto keySize = text_.measure(cr, row.keyEquivalent, kFontSize);
    const double keyX = right - keySize.width;
    text_.draw(cr, row.keyEquivalent, kFontSize, keyX, top + (kRowHeight - keySize.height) / 2, ink);
    placement.key = pixels(keyX, top + (kRowHeight - keySize.height) / 2, keySize.width, keySize.height);
  }
}

void MenuPainter::drawMark(cairo_t* cr, int state, double top, const platform::Color& color) const {
  const double x = kMarkX, y = top + (kRowHeight - kMarkSize) / 2, s = kMarkSize;
  cairo_save(cr);
  setColor(cr, color);
  cairo_set_line_width(cr, 1.8);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  if (state == platform::kOnState) {
    cairo_move_to(cr, x + 0.12 * s, y + 0.55 * s);
    cairo_line_to(cr, x + 0.40 * s, y + 0.82 * s);
    cairo_line_to(cr, x + 0.88 * s, y + 0.18 * s);
  } else {
    cairo_move_to(cr, x + 0.2 * s, y + 0.5 * s);
    cairo_line_to(cr, x + 0.8 * s, y + 0.5 * s);
  }
  cairo_stroke(cr);
  cairo_restore(cr);
}

void MenuPainter::drawArrow(cairo_t* cr, double right, double top, const platform::Color& color) const {
  const double y = top + kRowHeight / 2;
  cairo_move_to(cr, right - kArrowWidth, y - kArrowWidth / 2);
  cairo_line_to(cr, right, y);
  cairo_line_to(cr, right - kArrowWidth, y + kArrowWidth / 2);
  cairo_close_path(cr);
  setColor(cr, color);
  cairo_fill(cr);
}

}  // namespace kibrender
