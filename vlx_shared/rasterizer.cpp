// Greys of a page become dots.

#include <algorithm>
#include <new>

#include "config/vlx_shared.h"
#include "vlx_shared/halftone.h"
#include "vlx_shared/pixels.h"

Gdiplus::Bitmap* BitmapRasterizer::Dither(Gdiplus::Bitmap* source, eBitmapDitherer ditherer,
                                          INT ditherParam) {
  if (source == nullptr) return nullptr;
  const INT width = static_cast<INT>(source->GetWidth());
  const INT height = static_cast<INT>(source->GetHeight());
  Gdiplus::Bitmap* dithered =
      BitmapHelper::CreateBitmap(width, height, Gdiplus::PixelFormat24bppRGB, WTEXT("Dithered"));
  try {
    PageReader from(source);
    // Dots are kept as such until somebody wants to see pixels.
    const Pixels to(dithered, Gdiplus::PixelFormat1bppIndexed, Gdiplus::ImageLockModeWrite);
    if (!to.IsValid()) throw std::bad_alloc();
    const RasterKernels& kernels = BestKernels();
    Halftone halftone(ditherer, ditherParam, width, 1);
    for (INT top = 0; top < height; top += kStripRows) {
      const INT rows = std::min(kStripRows, height - top);
      bool grey = false;
      for (INT y = 0; y < rows; ++y) {
        grey |= kernels.Grey(from.Row(top + y), width, halftone.Row(0, y));
      }
      halftone.Dither(rows, grey);
      for (INT y = 0; y < rows; ++y) kernels.PackLevels(halftone.Row(0, y), width, to.Row(top + y));
    }
    return dithered;
  } catch (const std::bad_alloc&) {
    BitmapHelper::DeleteBitmap(dithered);
    return nullptr;
  }
}
