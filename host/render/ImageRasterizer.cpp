#include "host/render/ImageRasterizer.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <poppler.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "host/render/CairoHandles.h"
#include "platform/ui/ButtonCell.h"

namespace kibrender {
namespace {

std::string takeMessage(GError* error, const char* fallback) {
  std::string message = error && error->message ? error->message : fallback;
  if (error) g_error_free(error);
  return message;
}

bool startsLikePDF(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  char head[5] = {};
  file.read(head, sizeof head);
  return file.gcount() == 5 && std::string(head, 5) == "%PDF-";
}

// A pixbuf's straight RGB(A) rows as a premultiplied ARGB32 surface.
SurfaceHandle surfaceFromPixbuf(GdkPixbuf* pixbuf) {
  const int width = gdk_pixbuf_get_width(pixbuf);
  const int height = gdk_pixbuf_get_height(pixbuf);
  const int channels = gdk_pixbuf_get_n_channels(pixbuf);
  const int rowstride = gdk_pixbuf_get_rowstride(pixbuf);
  const guchar* rows = gdk_pixbuf_read_pixels(pixbuf);
  Pixmap converted(width, height);
  if (converted.isEmpty() || gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 || channels < 3) return nullptr;
  for (int y = 0; y < height; ++y) {
    const guchar* in = rows + static_cast<std::size_t>(y) * static_cast<std::size_t>(rowstride);
    for (int x = 0; x < width; ++x, in += channels) {
      const std::uint32_t alpha = channels == 4 ? in[3] : 255;
      auto premultiplied = [alpha](std::uint32_t value) { return (value * alpha + 127) / 255; };
      converted.pixels()[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
          alpha << 24 | premultiplied(in[0]) << 16 | premultiplied(in[1]) << 8 | premultiplied(in[2]);
    }
  }
  SurfaceHandle surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  auto target = surfaceDrawingInto(converted);
  ContextHandle context(cairo_create(surface.get()));
  cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
  cairo_set_source_surface(context.get(), target.get(), 0, 0);
  cairo_paint(context.get());
  return surface;
}

}  // namespace

// One decoded file: a PDF's first page, or a raster image as a surface.
class ImageRasterizer::Source {
 public:
  static std::shared_ptr<Source> load(const std::string& path, std::string& error) {
    auto source = std::make_shared<Source>();
    if (startsLikePDF(path) ? source->loadPDF(path, error) : source->loadRaster(path, error)) return source;
    return nullptr;
  }

  // Draws the image fitted into width × height, centred.
  void draw(cairo_t* context, int width, int height) const {
    const double scale = std::min(width / naturalWidth_, height / naturalHeight_);
    cairo_save(context);
    cairo_translate(context, (width - naturalWidth_ * scale) / 2, (height - naturalHeight_ * scale) / 2);
    cairo_scale(context, scale, scale);
    if (page_) {
      poppler_page_render(page_.get(), context);
    } else {
      // Padding keeps the edge pixels opaque where the image is; the clip ends it there.
      cairo_rectangle(context, 0, 0, naturalWidth_, naturalHeight_);
      cairo_clip(context);
      cairo_set_source_surface(context, raster_.get(), 0, 0);
      cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_GOOD);
      cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
      cairo_paint(context);
    }
    cairo_restore(context);
  }

 private:
  bool loadPDF(const std::string& path, std::string& error) {
    GError* failure = nullptr;
    gchar* uri = g_filename_to_uri(std::filesystem::absolute(path).c_str(), nullptr, &failure);
    if (!uri) {
      error = takeMessage(failure, "not a usable file name");
      return false;
    }
    document_.reset(poppler_document_new_from_file(uri, nullptr, &failure));
    g_free(uri);
    if (!document_) {
      error = "not a readable PDF (" + takeMessage(failure, "unknown error") + ")";
      return false;
    }
    if (poppler_document_get_n_pages(document_.get()) < 1) {
      error = "a PDF without pages";
      return false;
    }
    page_.reset(poppler_document_get_page(document_.get(), 0));
    if (page_) poppler_page_get_size(page_.get(), &naturalWidth_, &naturalHeight_);
    return checkNaturalSize(error);
  }

  bool loadRaster(const std::string& path, std::string& error) {
    GError* failure = nullptr;
    GObjectHandle<GdkPixbuf> pixbuf(gdk_pixbuf_new_from_file(path.c_str(), &failure));
    if (!pixbuf) {
      error = "not a readable image (" + takeMessage(failure, "unknown error") + ")";
      return false;
    }
    raster_ = surfaceFromPixbuf(pixbuf.get());
    if (!raster_) {
      error = "an image format that cannot be drawn";
      return false;
    }
    naturalWidth_ = gdk_pixbuf_get_width(pixbuf.get());
    naturalHeight_ = gdk_pixbuf_get_height(pixbuf.get());
    return checkNaturalSize(error);
  }

  bool checkNaturalSize(std::string& error) const {
    if (naturalWidth_ > 0 && naturalHeight_ > 0) return true;
    error = "an image without a size";
    return false;
  }

  GObjectHandle<PopplerDocument> document_;
  GObjectHandle<PopplerPage> page_;
  SurfaceHandle raster_;
  double naturalWidth_ = 0;
  double naturalHeight_ = 0;
};

ImageRasterizer::ImageRasterizer() = default;
ImageRasterizer::~ImageRasterizer() = default;

void ImageRasterizer::forgetDecodedFiles() { sources_.clear(); }

std::shared_ptr<ImageRasterizer::Source> ImageRasterizer::sourceFor(const std::string& path, std::string& error) {
  if (auto found = sources_.find(path); found != sources_.end()) return found->second;
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) {
    error = "no such file";
    return nullptr;
  }
  if (!std::filesystem::is_regular_file(path, ignored)) {
    error = "not a file";
    return nullptr;
  }
  auto source = Source::load(path, error);
  if (source) sources_[path] = source;
  return source;
}

Pixmap ImageRasterizer::renderSquare(const platform::Image& image, int size, const RasterOptions& options,
                                     std::string* error) {
  return render(image, size, size, options, error);
}

Pixmap ImageRasterizer::render(const platform::Image& image, int width, int height, const RasterOptions& options,
                               std::string* error) {
  std::string reason;
  auto fail = [&](const std::string& why) {
    if (error) *error = (image.filePath().empty() ? std::string("blank image") : image.filePath()) + ": " + why;
    return Pixmap();
  };
  if (width < 1 || height < 1 || width > kMaximumSide || height > kMaximumSide)
    return fail("cannot draw at " + std::to_string(width) + " × " + std::to_string(height) + " pixels");
  // A blank image draws nothing.
  if (image.filePath().empty()) return Pixmap(width, height);
  auto source = sourceFor(image.filePath(), reason);
  if (!source) return fail(reason);

  Pixmap drawn(width, height);
  {
    auto surface = surfaceDrawingInto(drawn);
    ContextHandle context(cairo_create(surface.get()));
    source->draw(context.get(), width, height);
  }
  const double opacity = options.dimmed ? platform::kDimmedImageFraction : 1.0;
  if (!image.isTemplate() && opacity == 1.0) return drawn;

  Pixmap result(width, height);
  auto glyph = surfaceDrawingInto(drawn);
  auto surface = surfaceDrawingInto(result);
  ContextHandle context(cairo_create(surface.get()));
  if (image.isTemplate()) {
    const auto& tint = options.tint;
    cairo_set_source_rgba(context.get(), tint.red, tint.green, tint.blue, tint.alpha * opacity);
    cairo_mask_surface(context.get(), glyph.get(), 0, 0);
  } else {
    cairo_set_source_surface(context.get(), glyph.get(), 0, 0);
    cairo_paint_with_alpha(context.get(), opacity);
  }
  cairo_surface_flush(surface.get());
  return result;
}

}  // namespace kibrender
