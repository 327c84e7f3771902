// Dithering in two colours: black and the highlight colour.

#include <new>

#include "config/vlx_shared.h"
#include "vlx_shared/halftone.h"

namespace {

class InkLevels final : public LevelReader {
 public:
  InkLevels(Gdiplus::ARGB highlight, double tolerance) : m_mixture(highlight, tolerance) {}

 private:
  bool Levels(const BYTE* pixels, INT count, BYTE* const* levels) override {
    return m_kernels.Split(pixels, count, m_mixture, levels[0], levels[1]);
  }

  const RasterKernels& m_kernels = BestKernels();
  const ColorMixture m_mixture;
};

}  // namespace

INT BitmapHelper::SplitImage(Gdiplus::Bitmap* source, Gdiplus::ARGB highlight, double tolerance,
                             eBitmapDitherer ditherer, INT ditherParam,
                             Gdiplus::Bitmap** background, Gdiplus::Bitmap** highlightImage) {
  if (background == nullptr || highlightImage == nullptr) return 0;
  *background = nullptr;
  *highlightImage = nullptr;
  if (source == nullptr) return 0;
  const INT width = static_cast<INT>(source->GetWidth());
  const INT height = static_cast<INT>(source->GetHeight());
  const auto make = [width, height](LPCWSTR name) {
    return CreateBitmap(width, height, PixelFormat24bppRGB, name);
  };
  Gdiplus::Bitmap* black = make(WTEXT("SplitBackground"));
  Gdiplus::Bitmap* colored = make(WTEXT("SplitHighlight"));
  try {
    const Dots blackDots(black, Gdiplus::ImageLockModeWrite);
    const Dots coloredDots(colored, Gdiplus::ImageLockModeWrite);
    InkLevels levels(highlight, tolerance);
    Halftone(ditherer, ditherParam, width, 2).Print(source, levels, {&blackDots, &coloredDots});
    *background = black;
    *highlightImage = colored;
    return 1;
  } catch (const std::bad_alloc&) {
    DeleteBitmap(black);
    DeleteBitmap(colored);
    return 0;
  }
}
