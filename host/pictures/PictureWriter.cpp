#include "host/pictures/PictureWriter.h"

#include <cstdio>
#include <system_error>

#include "host/render/MenuPainter.h"
#include "host/render/SlotPainter.h"

namespace kibpictures {
namespace {

using kibrender::PanelTheme;
using kibrender::PictureStyle;

struct Variant {
  PictureStyle style;
  const char* suffix;
};

const Variant kVariants[] = {
    {{1.0, PanelTheme::Light}, ""},
    {{2.0, PanelTheme::Light}, "@2x"},
    {{1.0, PanelTheme::Dark}, "-dark"},
    {{2.0, PanelTheme::Dark}, "-dark@2x"},
};

}  // namespace

std::unique_ptr<kibhost::HeadlessObserver> PictureWriter::make(const std::string& folder, kibhost::HeadlessRun& run,
                                                               std::ostream& errors) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error || !std::filesystem::is_directory(folder)) {
    errors << "kibbar: " << folder << ": cannot make the pictures folder ("
           << (error ? error.message() : "not a folder") << ")\n";
    return nullptr;
  }
  return std::make_unique<PictureWriter>(folder, run, errors);
}

PictureWriter::PictureWriter(std::filesystem::path folder, kibhost::HeadlessRun& run, std::ostream& errors)
    : folder_(std::move(folder)), run_(run), errors_(errors) {}

void PictureWriter::slotDidDisplay(const platform::RecordingCanvas& canvas) {
  const auto picture = kibhost::SlotPicture::fromCanvas(canvas);
  bool changed = !slot_ || picture.image != slot_->image || picture.dimmed != slot_->dimmed ||
                 picture.highlighted != slot_->highlighted || picture.text != slot_->text;
  if (changed) {
    scrolling_ = false;
  } else if (picture.text && picture.textX < slot_->textX && !scrolling_) {
    // The text has begun to scroll: the slot is at its revealed width.
    scrolling_ = true;
    changed = true;
  }
  slot_ = picture;
  if (!changed) return;
  const double length = length_ > 0 ? length_ : run_.host().length();
  take("slot", [&](const PictureStyle& style) {
    return kibrender::SlotPainter(rasterizer_, text_, style).paint(canvas, length);
  });
}

void PictureWriter::menuDidOpen(const platform::MenuPtr& menu) {
  const auto* open = run_.host().openMenu();
  const auto rows = kibrender::MenuRow::rowsOf(menu, open ? open->modifierFlags : 0);
  take("menu",
       [&](const PictureStyle& style) { return kibrender::MenuPainter(rasterizer_, text_, style).paint(rows); });
}

void PictureWriter::take(const std::string& kind,
                         const std::function<kibrender::Pixmap(const kibrender::PictureStyle&)>& draw) {
  char number[16];
  std::snprintf(number, sizeof number, "%04d", ++count_);
  const std::string base = std::string(number) + "-" + kind;
  for (const auto& variant : kVariants) {
    const auto path = folder_ / (base + variant.suffix + ".png");
    std::string error;
    if (!draw(variant.style).writePNG(path.string(), error)) {
      if (succeeded_) errors_ << "kibbar: " << error << '\n';
      succeeded_ = false;
    }
  }
  run_.transcript().write("picture", {{"of", kind}, {"file", base + ".png"}});
}

}  // namespace kibpictures
