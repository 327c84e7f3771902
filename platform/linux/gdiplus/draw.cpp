// Draws pixel for pixel through a quarter turn and a shift.

#include <algorithm>
#include <cstring>

#include "platform/linux/gdiplus/image.h"

namespace Gdiplus {

namespace {

constexpr INT kTilePx = 64;  // turned in tiles that stay in the cache

void CopyPixel(const GpImage& source, INT sourceX, INT sourceY, BYTE* to) {
  const BYTE* from = source.Row(sourceY);
  if (source.IsOneBit()) {
    const bool white = (from[sourceX >> 3] >> (7 - (sourceX & 7)) & 1) != 0;
    std::memset(to, white ? 0xFF : 0, 3);
  } else {
    std::memcpy(to, from + 3 * sourceX, 3);
  }
}

// A part of a source, and the target's rows from the part's upper left corner on.
struct Placed {
  const GpImage& source;
  INT left, top;
  INT width, height;
  INT toLeft;
  PixelRows to;
};

void CopyRows(const Placed& area) {
  for (INT y = 0; y < area.height; ++y) {
    BYTE* to = area.to.Row(y) + 3 * area.toLeft;
    const INT from = area.top + y;
    if (!area.source.IsOneBit()) {
      std::memmove(to, area.source.Row(from) + 3 * area.left, std::size_t{3} * area.width);
      continue;
    }
    for (INT x = 0; x < area.width; ++x) CopyPixel(area.source, area.left + x, from, to + 3 * x);
  }
}

void DrawTiles(const Placed& area, const Transform& place) {
  const Area landed = place.Of({0, 0, area.width, area.height});
  const auto drawTile = [&](INT left, INT top) {
    for (INT y = top; y < std::min(top + kTilePx, area.height); ++y) {
      for (INT x = left; x < std::min(left + kTilePx, area.width); ++x) {
        const auto toX = static_cast<INT>(place.xx * x + place.yx * y + place.dx - landed.left);
        const auto toY = static_cast<INT>(place.xy * x + place.yy * y + place.dy - landed.top);
        CopyPixel(area.source, area.left + x, area.top + y,
                  area.to.Row(toY) + 3 * (area.toLeft + toX));
      }
    }
  };
  for (INT top = 0; top < area.height; top += kTilePx) {
    for (INT left = 0; left < area.width; left += kTilePx) drawTile(left, top);
  }
}

}  // namespace

void DrawRows(const Drawing& drawing, INT top, INT bottom, const PixelRows& rows) {
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
    CopyRows(area);
  } else {
    DrawTiles(area, drawing.place);
  }
}

}  // namespace Gdiplus
