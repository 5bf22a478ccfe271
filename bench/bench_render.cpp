// Rendering icons and menus: what a panel pays when the icon changes (five
// sizes of the status glyph), with the decoded file kept and read again each
// time, and a whole menu picture.
#include <benchmark/benchmark.h>

#include "host/render/ImageRasterizer.h"
#include "host/render/MenuPainter.h"

namespace {

const int kIconSizes[] = {16, 22, 24, 32, 48};

platform::ImagePtr glyph() {
  auto image = platform::Image::initByReferencingFile(std::string(KIB_SOURCE_DIR) + "/Resources/MenuExtra.pdf");
  image->setTemplate(true);
  return image;
}

void IconAtFiveSizesDecodedOnce(benchmark::State& state) {
  kibrender::ImageRasterizer rasterizer;
  auto image = glyph();
  for (auto _ : state)
    for (int size : kIconSizes) benchmark::DoNotOptimize(rasterizer.renderSquare(*image, size, {}));
}
BENCHMARK(IconAtFiveSizesDecodedOnce);

// The baseline: the PDF parsed again for every icon change.
void IconAtFiveSizesDecodedEachTime(benchmark::State& state) {
  kibrender::ImageRasterizer rasterizer;
  auto image = glyph();
  for (auto _ : state) {
    rasterizer.forgetDecodedFiles();
    for (int size : kIconSizes) benchmark::DoNotOptimize(rasterizer.renderSquare(*image, size, {}));
  }
}
BENCHMARK(IconAtFiveSizesDecodedEachTime);

void MenuOfThirtyRowsAt2x(benchmark::State& state) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  std::vector<kibrender::MenuRow> rows(30);
  auto dot = platform::Image::initByReferencingFile(std::string(KIB_SOURCE_DIR) + "/Resources/status-available.png");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].title = "Person number " + std::to_string(i);
    rows[i].image = dot;
    rows[i].separator = i % 7 == 6;
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(kibrender::MenuPainter(rasterizer, text, {2.0, kibrender::PanelTheme::Light}).paint(rows));
}
BENCHMARK(MenuOfThirtyRowsAt2x);

}  // namespace
