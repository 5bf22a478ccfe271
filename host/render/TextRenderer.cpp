#include "host/render/TextRenderer.h"

#include <pango/pangocairo.h>

#include "host/render/CairoHandles.h"

namespace kibrender {

struct TextRenderer::Fonts {
  GObjectHandle<PangoFontMap> fontMap{pango_cairo_font_map_new()};
  GObjectHandle<PangoContext> context{pango_font_map_create_context(fontMap.get())};
  cairo_font_options_t* options = cairo_font_options_create();

  explicit Fonts(bool hinted) {
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, hinted ? CAIRO_HINT_STYLE_SLIGHT : CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_subpixel_order(options, CAIRO_SUBPIXEL_ORDER_DEFAULT);
    pango_cairo_context_set_font_options(context.get(), options);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
  }
  ~Fonts() { cairo_font_options_destroy(options); }

  // A layout for the context's current transformation.
  GObjectHandle<PangoLayout> layout(cairo_t* cairo, const std::string& families, const std::string& text,
                                    double size) const {
    pango_cairo_update_context(cairo, context.get());
    GObjectHandle<PangoLayout> layout(pango_layout_new(context.get()));
    PangoFontDescription* font = pango_font_description_from_string(families.c_str());
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
  }
};

TextRenderer::TextRenderer(bool hinted, std::string families)
    : fonts_(std::make_unique<Fonts>(hinted)), families_(std::move(families)) {}
TextRenderer::~TextRenderer() = default;

platform::Size TextRenderer::measure(cairo_t* context, const std::string& text, double size) const {
  auto layout = fonts_->layout(context, families_, text, size);
  PangoRectangle logical;
  pango_layout_get_extents(layout.get(), nullptr, &logical);
  return {static_cast<double>(logical.width) / PANGO_SCALE, static_cast<double>(logical.height) / PANGO_SCALE};
}

void TextRenderer::draw(cairo_t* context, const std::string& text, double size, double x, double y,
                        const platform::Color& color) const {
  auto layout = fonts_->layout(context, families_, text, size);
  cairo_save(context);
  cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
  cairo_move_to(context, x, y);
  pango_cairo_show_layout(context, layout.get());
  cairo_restore(context);
}

}  // namespace kibrender
