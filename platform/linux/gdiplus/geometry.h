// Geometry of pixels: rows, areas, and transforms by quarter turns and whole-pixel shifts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/types.h"

namespace Gdiplus {

// Bytes of a row of that many bits a pixel, padded to 4 bytes.
constexpr std::int64_t StrideBytes(std::int64_t widthPx, INT bitsPerPixel) {
  return (widthPx * bitsPerPixel + 31) / 32 * 4;
}

// Rows of pixels.
struct PixelRows {
  BYTE* first;
  std::ptrdiff_t strideBytes;
  BYTE* Row(INT y) const { return first + y * strideBytes; }
};

// Pixels from (left, top) up to, not including, (right, bottom). 64-bit numbers, so that no
// argument of a caller overflows.
struct Area {
  std::int64_t left, top, right, bottom;

  bool IsEmpty() const { return left >= right || top >= bottom; }
  bool Contains(const Area& other) const {
    return left <= other.left && top <= other.top && right >= other.right && bottom >= other.bottom;
  }
};

inline Area Intersect(const Area& a, const Area& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
}

// x' = xx * x + yx * y + dx, y' = xy * x + yy * y + dy. The four factors are those of a quarter
// turn, 0 or +-1.
struct Transform {
  INT xx = 1, xy = 0;
  INT yx = 0, yy = 1;
  std::int64_t dx = 0, dy = 0;

  bool IsTranslation() const { return xx == 1 && yy == 1; }
  bool IsClockwiseTurn() const { return xy == 1 && yx == -1; }

  Transform Inverse() const { return {xx, yx, xy, yy, -(xx * dx + xy * dy), -(yx * dx + yy * dy)}; }

  // The place of an area that is not empty.
  Area Of(const Area& area) const {
    const std::int64_t x1 = xx * area.left + yx * area.top + dx;
    const std::int64_t y1 = xy * area.left + yy * area.top + dy;
    const std::int64_t x2 = xx * (area.right - 1) + yx * (area.bottom - 1) + dx;
    const std::int64_t y2 = xy * (area.right - 1) + yy * (area.bottom - 1) + dy;
    return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2) + 1, std::max(y1, y2) + 1};
  }
};

// first, then second: the product of row-vector matrices.
inline Transform Combine(const Transform& first, const Transform& second) {
  return {first.xx * second.xx + first.xy * second.yx,
          first.xx * second.xy + first.xy * second.yy,
          first.yx * second.xx + first.yy * second.yx,
          first.yx * second.xy + first.yy * second.yy,
          first.dx * second.xx + first.dy * second.yx + second.dx,
          first.dx * second.xy + first.dy * second.yy + second.dy};
}

}  // namespace Gdiplus
