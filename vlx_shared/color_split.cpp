// Splitting a page into what is printed in black and what is printed in the highlight colour.

#include <algorithm>
#include <new>

#include "config/vlx_shared.h"
#include "vlx_shared/halftone.h"
#include "vlx_shared/pixels.h"

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
    return CreateBitmap(width, height, Gdiplus::PixelFormat24bppRGB, name);
  };
  Gdiplus::Bitmap* black = make(WTEXT("SplitBackground"));
  Gdiplus::Bitmap* colored = make(WTEXT("SplitHighlight"));
  try {
    PageReader from(source);
    const Pixels blackDots(black, Gdiplus::PixelFormat1bppIndexed, Gdiplus::ImageLockModeWrite);
    const Pixels coloredDots(colored, Gdiplus::PixelFormat1bppIndexed, Gdiplus::ImageLockModeWrite);
    if (!blackDots.IsValid() || !coloredDots.IsValid()) throw std::bad_alloc();
    const RasterKernels& kernels = BestKernels();
    const ColorMixture mixture(highlight, tolerance);
    Halftone halftone(ditherer, ditherParam, width, 2);
    for (INT top = 0; top < height; top += kStripRows) {
      const INT rows = std::min(kStripRows, height - top);
      bool grey = false;
      for (INT y = 0; y < rows; ++y) {
        grey |= kernels.Split(from.Row(top + y), width, mixture, halftone.Row(0, y),
                              halftone.Row(1, y));
      }
      halftone.Dither(rows, grey);
      for (INT y = 0; y < rows; ++y) {
        kernels.PackLevels(halftone.Row(0, y), width, blackDots.Row(top + y));
        kernels.PackLevels(halftone.Row(1, y), width, coloredDots.Row(top + y));
      }
    }
    *background = black;
    *highlightImage = colored;
    return 1;
  } catch (const std::bad_alloc&) {
    DeleteBitmap(black);
    DeleteBitmap(colored);
    return 0;
  }
}
