// Drawing pixel for pixel through a quarter turn and a shift.

#include <algorithm>
#include <cstring>

#include "platform/linux/gdiplus/image.h"

namespace Gdiplus {

namespace {

constexpr INT kTilePx = 64;  // a turned image is walked in tiles that stay in the cache

bool GetBit(const BYTE* row, INT x) { return (row[x >> 3] >> (7 - (x & 7)) & 1) != 0; }

void SetBit(BYTE* row, INT x, bool white) {
  const auto mask = static_cast<BYTE>(0x80 >> (x & 7));
  row[x >> 3] = static_cast<BYTE>(white ? row[x >> 3] | mask : row[x >> 3] & ~mask);
}

void CopyPixel(const GpImage& source, INT sourceX, INT sourceY, bool oneBit, BYTE* to, INT toX) {
  const BYTE* from = source.Row(sourceY);
  if (source.IsOneBit()) {
    const bool white = GetBit(from, sourceX);
    if (oneBit) {
      SetBit(to, toX, white);
    } else {
      std::memset(to + 3 * toX, white ? 0xFF : 0, 3);
    }
    return;
  }
  const BYTE* pixel = from + 3 * sourceX;
  if (oneBit) {
    SetBit(to, toX, IsLight(pixel[2], pixel[1], pixel[0]));
  } else {
    std::memcpy(to + 3 * toX, pixel, 3);
  }
}

// Copies count bits from any bit position to any other.
void CopyBits(const BYTE* from, INT fromX, BYTE* to, INT toX, INT count) {
  while (count > 0 && (toX & 7) != 0) {
    SetBit(to, toX++, GetBit(from, fromX++));
    --count;
  }
  const INT shift = fromX & 7;
  for (; count >= 8; count -= 8, fromX += 8, toX += 8) {
    const BYTE* bytes = from + (fromX >> 3);
    to[toX >> 3] =
        shift == 0 ? bytes[0] : static_cast<BYTE>(bytes[0] << shift | bytes[1] >> (8 - shift));
  }
  for (; count > 0; --count) SetBit(to, toX++, GetBit(from, fromX++));
}

// A part of a source, its corner in the target, and the target's rows from that corner down.
struct Placed {
  const GpImage& source;
  INT left, top;
  INT width, height;
  INT toLeft;
  PixelRows to;
};

void CopyRows(const Placed& area, bool oneBit) {
  for (INT y = 0; y < area.height; ++y) {
    BYTE* to = area.to.Row(y);
    const BYTE* from = area.source.Row(area.top + y);
    if (!area.source.IsOneBit() && !oneBit) {
      std::memmove(to + 3 * area.toLeft, from + 3 * area.left,
                   static_cast<std::size_t>(3) * area.width);
    } else if (area.source.IsOneBit() && oneBit) {
      CopyBits(from, area.left, to, area.toLeft, area.width);
    } else {
      for (INT x = 0; x < area.width; ++x) {
        CopyPixel(area.source, area.left + x, area.top + y, oneBit, to, area.toLeft + x);
      }
    }
  }
}

void DrawTiles(const Placed& area, const Transform& place, bool oneBit) {
  const Area landed = place.Of({0, 0, area.width, area.height});
  const auto drawTile = [&](INT left, INT top) {
    for (INT y = top; y < std::min(top + kTilePx, area.height); ++y) {
      for (INT x = left; x < std::min(left + kTilePx, area.width); ++x) {
        const auto toX = static_cast<INT>(place.xx * x + place.yx * y + place.dx - landed.left);
        const auto toY = static_cast<INT>(place.xy * x + place.yy * y + place.dy - landed.top);
        CopyPixel(area.source, area.left + x, area.top + y, oneBit, area.to.Row(toY),
                  area.toLeft + toX);
      }
    }
  };
  for (INT top = 0; top < area.height; top += kTilePx) {
    for (INT left = 0; left < area.width; left += kTilePx) drawTile(left, top);
  }
}

}  // namespace

void DrawRows(const Drawing& drawing, bool oneBit, INT top, INT bottom, const PixelRows& rows) {
  const Area whole = drawing.Target();
  const Area target = Intersect(whole, {whole.left, top, whole.right, bottom});
  if (target.IsEmpty()) return;
  const Area part = drawing.place.Inverse().Of(target);
  const Placed area = {*drawing.source,
                       static_cast<INT>(part.left),
                       static_cast<INT>(part.top),
                       static_cast<INT>(part.right - part.left),
                       static_cast<INT>(part.bottom - part.top),
                       static_cast<INT>(target.left),
                       {rows.Row(static_cast<INT>(target.top - top)), rows.strideBytes}};
  if (drawing.place.IsTranslation()) {
    CopyRows(area, oneBit);
  } else {
    DrawTiles(area, drawing.place, oneBit);
  }
}

}  // namespace Gdiplus
