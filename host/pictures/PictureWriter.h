#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "host/HeadlessRun.h"
#include "host/Program.h"
#include "host/SlotPicture.h"
#include "host/render/ImageRasterizer.h"
#include "host/render/PictureStyle.h"
#include "host/render/Pixmap.h"
#include "host/render/TextRenderer.h"

namespace kibpictures {

// Writes a headless run as pictures into a folder: the slot each time what it
// shows changes (icon, dimming, banner text, the highlight) and when its text
// starts to scroll (the slot fully revealed), and every menu that pops up as
// it pops up. Each picture is numbered in the order it happened and drawn four
// times: NNNN-slot.png (1x, light), NNNN-slot@2x.png, NNNN-slot-dark.png and
// NNNN-slot-dark@2x.png (menus: NNNN-menu…). The transcript gets a "picture"
// line naming the 1x light file.
class PictureWriter final : public kibhost::HeadlessObserver {
 public:
  // Creates the folder if needed; null (reason on errors) when it cannot.
  static std::unique_ptr<kibhost::HeadlessObserver> make(const std::string& folder, kibhost::HeadlessRun& run,
                                                         std::ostream& errors);

  PictureWriter(std::filesystem::path folder, kibhost::HeadlessRun& run, std::ostream& errors);

  void slotLengthDidChange(double length) override { length_ = length; }
  void slotDidDisplay(const platform::RecordingCanvas& canvas) override;
  void menuDidOpen(const platform::MenuPtr& menu) override;
  bool succeeded() const override { return succeeded_; }

  // How many pictures were taken.
  int count() const { return count_; }

 private:
  void take(const std::string& kind, const std::function<kibrender::Pixmap(const kibrender::PictureStyle&)>& draw);

  std::filesystem::path folder_;
  kibhost::HeadlessRun& run_;
  std::ostream& errors_;
  kibrender::ImageRasterizer rasterizer_;
  kibrender::TextRenderer text_;
  double length_ = 0;
  std::optional<kibhost::SlotPicture> slot_;
  bool scrolling_ = false;
  int count_ = 0;
  bool succeeded_ = true;
};

}  // namespace kibpictures
