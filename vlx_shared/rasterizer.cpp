#include "vlx_shared/rasterizer.h"

#include <algorithm>
#include <new>
#include <vector>

#include "vlx_shared/pixels.h"

namespace {

constexpr INT kWhite = 255;
constexpr INT kMiddle = 128;

class Threshold final : public RowDitherer {
 public:
  explicit Threshold(INT parameter) : m_level(parameter == 0 ? kMiddle : parameter) {}
  void Dither(std::span<BYTE> levels) override {
    for (BYTE& level : levels) {
      if (level != 0 && level != kWhite) level = level < m_level ? 0 : kWhite;
    }
  }

 private:
  const INT m_level;
};

// R. Floyd, L. Steinberg: "An Adaptive Algorithm for Spatial Greyscale", Proc. SID 17/2, 1976.
// Every other row runs from the right, which keeps the pattern from leaning.
class FloydSteinberg final : public RowDitherer {
 public:
  explicit FloydSteinberg(INT widthPx) : m_current(widthPx + 2), m_next(widthPx + 2) {}

  void Dither(std::span<BYTE> levels) override {
    const INT width = static_cast<INT>(levels.size());
    std::fill(m_next.begin(), m_next.end(), 0);
    const INT step = m_leftToRight ? 1 : -1;
    INT x = m_leftToRight ? 0 : width - 1;
    for (INT i = 0; i < width; ++i, x += step) {
      BYTE& level = levels[x];
      if (level == 0 || level == kWhite) continue;
      // Errors are kept in sixteenths, one place to the right for the edge.
      const INT wanted = 16 * level + m_current[x + 1];
      const INT printed = wanted < 16 * kMiddle ? 0 : kWhite;
      const INT error = (wanted - 16 * printed) / 16;
      m_current[x + 1 + step] += 7 * error;
      m_next[x + 1 - step] += 3 * error;
      m_next[x + 1] += 5 * error;
      m_next[x + 1 + step] += error;
      level = static_cast<BYTE>(printed);
    }
    m_current.swap(m_next);
    m_leftToRight = !m_leftToRight;
  }

 private:
  std::vector<INT> m_current;
  std::vector<INT> m_next;
  bool m_leftToRight = true;
};

}  // namespace

std::unique_ptr<RowDitherer> MakeRowDitherer(eBitmapDitherer ditherer, INT parameter, INT widthPx) {
  if (ditherer == eThreshold) return std::make_unique<Threshold>(parameter);
  return std::make_unique<FloydSteinberg>(widthPx);
}

Gdiplus::Bitmap* BitmapRasterizer::Dither(Gdiplus::Bitmap* source, eBitmapDitherer ditherer,
                                          INT ditherParam) {
  const Pixels from(source, Gdiplus::PixelFormat24bppRGB);
  if (!from.IsValid()) return nullptr;
  Gdiplus::Bitmap* dithered = BitmapHelper::CreateBitmap(
      from.Width(), from.Height(), Gdiplus::PixelFormat24bppRGB, WTEXT("Dithered"));
  try {
    const Pixels to(dithered, Gdiplus::PixelFormat24bppRGB);
    if (!to.IsValid()) throw std::bad_alloc();
    const auto rows = MakeRowDitherer(ditherer, ditherParam, from.Width());
    std::vector<BYTE> levels(from.Width());
    for (INT y = 0; y < from.Height(); ++y) {
      const BYTE* pixel = from.Row(y);
      for (BYTE& level : levels) {
        level = static_cast<BYTE>(Luma(pixel));
        pixel += 3;
      }
      rows->Dither(levels);
      BYTE* out = to.Row(y);
      for (const BYTE level : levels) out = std::fill_n(out, 3, level);
    }
    return dithered;
  } catch (const std::bad_alloc&) {
    BitmapHelper::DeleteBitmap(dithered);
    return nullptr;
  }
}
