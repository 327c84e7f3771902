// Splitting a page into what is printed in black and what is printed in the highlight colour.

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "config/vlx_shared.h"
#include "vlx_shared/pixels.h"
#include "vlx_shared/rasterizer.h"

namespace {

constexpr double kLargestSquaredDistance = 3.0 * 255.0 * 255.0;

// Whether a pixel belongs to the highlight. Black and white never do; the highlight colour itself
// always does, whatever the tolerance.
class HighlightTest {
 public:
  HighlightTest(Gdiplus::ARGB color, double tolerance)
      : m_red(color >> 16 & 0xFF), m_green(color >> 8 & 0xFF), m_blue(color & 0xFF) {
    const double reach = tolerance > 0.0 ? std::min(tolerance, 1.0) : 0.0;  // also for a NaN
    m_reach = static_cast<INT>(std::floor(reach * reach * kLargestSquaredDistance));
  }
  bool operator()(const BYTE* pixel) const {
    if (pixel[0] == pixel[1] && pixel[1] == pixel[2] && (pixel[0] == 0 || pixel[0] == 255)) {
      return false;
    }
    const INT blue = pixel[0] - m_blue;
    const INT green = pixel[1] - m_green;
    const INT red = pixel[2] - m_red;
    return red * red + green * green + blue * blue <= m_reach;
  }

 private:
  INT m_red;
  INT m_green;
  INT m_blue;
  INT m_reach;  // squared distance
};

void WriteLevels(const std::vector<BYTE>& levels, BYTE* out) {
  for (const BYTE level : levels) out = std::fill_n(out, 3, level);
}

void SplitRows(const Pixels& from, const HighlightTest& isHighlight, eBitmapDitherer ditherer,
               INT ditherParam, const Pixels& background, const Pixels& highlight) {
  const auto rows = MakeRowDitherer(ditherer, ditherParam, from.Width());
  std::vector<BYTE> black(from.Width());
  std::vector<BYTE> colored(from.Width());
  for (INT y = 0; y < from.Height(); ++y) {
    const BYTE* pixel = from.Row(y);
    for (INT x = 0; x < from.Width(); ++x, pixel += 3) {
      const bool matches = isHighlight(pixel);
      black[x] = matches ? 255 : static_cast<BYTE>(Luma(pixel));
      colored[x] = matches ? 0 : 255;
    }
    // What matches the highlight is printed solid: there is nothing to dither in its plane.
    rows->Dither(black);
    WriteLevels(black, background.Row(y));
    WriteLevels(colored, highlight.Row(y));
  }
}

}  // namespace

INT BitmapHelper::SplitImage(Gdiplus::Bitmap* source, Gdiplus::ARGB highlight, double tolerance,
                             eBitmapDitherer ditherer, INT ditherParam,
                             Gdiplus::Bitmap** background, Gdiplus::Bitmap** highlightImage) {
  if (background == nullptr || highlightImage == nullptr) return 0;
  *background = nullptr;
  *highlightImage = nullptr;
  const Pixels from(source, Gdiplus::PixelFormat24bppRGB);
  if (!from.IsValid()) return 0;
  const auto make = [&from](LPCWSTR name) {
    return CreateBitmap(from.Width(), from.Height(), Gdiplus::PixelFormat24bppRGB, name);
  };
  Gdiplus::Bitmap* black = make(WTEXT("SplitBackground"));
  Gdiplus::Bitmap* colored = make(WTEXT("SplitHighlight"));
  try {
    const Pixels blackPixels(black, Gdiplus::PixelFormat24bppRGB);
    const Pixels coloredPixels(colored, Gdiplus::PixelFormat24bppRGB);
    if (!blackPixels.IsValid() || !coloredPixels.IsValid()) throw std::bad_alloc();
    SplitRows(from, HighlightTest(highlight, tolerance), ditherer, ditherParam, blackPixels,
              coloredPixels);
    *background = black;
    *highlightImage = colored;
    return 1;
  } catch (const std::bad_alloc&) {
    DeleteBitmap(black);
    DeleteBitmap(colored);
    return 0;
  }
}
