// Dithering in one colour.

#include <new>

#include "config/vlx_shared.h"
#include "vlx_shared/halftone.h"

namespace {

class GreyLevels final : public LevelReader {
  bool Levels(const BYTE* pixels, INT count, BYTE* const* levels) override {
    return m_kernels.Grey(pixels, count, levels[0]);
  }

  const RasterKernels& m_kernels = BestKernels();
};

}  // namespace

Gdiplus::Bitmap* BitmapRasterizer::Dither(Gdiplus::Bitmap* source, eBitmapDitherer ditherer,
                                          INT ditherParam) {
  if (source == nullptr) return nullptr;
  const INT width = static_cast<INT>(source->GetWidth());
  const INT height = static_cast<INT>(source->GetHeight());
  Gdiplus::Bitmap* dithered =
      BitmapHelper::CreateBitmap(width, height, PixelFormat24bppRGB, WTEXT("Dithered"));
  try {
    // The bitmap stays 1-bit rows unless its pixels are read.
    const Dots dots(dithered, Gdiplus::ImageLockModeWrite);
    GreyLevels levels;
    Halftone(ditherer, ditherParam, width, 1).Print(source, levels, {&dots});
    return dithered;
  } catch (const std::bad_alloc&) {
    BitmapHelper::DeleteBitmap(dithered);
    return nullptr;
  }
}
