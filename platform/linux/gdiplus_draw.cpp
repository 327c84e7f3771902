// Drawing pixel for pixel through a quarter turn and a shift.

#include <algorithm>
#include <cstring>

#include "platform/linux/gdiplus_image.h"
#include "platform/linux/gdiplus_turn.h"

namespace Gdiplus {

namespace {

constexpr INT kTilePx = 64;  // a turned page is walked in tiles that stay in the cache

bool GetBit(const BYTE* row, INT x) { return (row[x >> 3] >> (7 - (x & 7)) & 1) != 0; }

void SetBit(BYTE* row, INT x, bool white) {
  const auto mask = static_cast<BYTE>(0x80 >> (x & 7));
  row[x >> 3] = static_cast<BYTE>(white ? row[x >> 3] | mask : row[x >> 3] & ~mask);
}

void CopyPixel(const GpImage& source, INT sourceX, INT sourceY, const GpImage& target, INT targetX,
               INT targetY) {
  const BYTE* from = source.Row(sourceY);
  BYTE* to = target.Row(targetY);
  if (source.IsOneBit()) {
    const bool white = GetBit(from, sourceX);
    if (target.IsOneBit()) {
      SetBit(to, targetX, white);
    } else {
      std::memset(to + 3 * targetX, white ? 0xFF : 0, 3);
    }
    return;
  }
  const BYTE* pixel = from + 3 * sourceX;
  if (target.IsOneBit()) {
    SetBit(to, targetX, IsLight(pixel[2], pixel[1], pixel[0]));
  } else {
    std::memcpy(to + 3 * targetX, pixel, 3);
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

struct Shifted {
  INT sourceX, sourceY;
  INT targetX, targetY;
  INT width, height;
};

void CopyRows(const GpImage& source, const GpImage& target, const Shifted& area) {
  for (INT row = 0; row < area.height; ++row) {
    const INT sourceY = area.sourceY + row;
    const INT targetY = area.targetY + row;
    if (source.IsOneBit() && target.IsOneBit()) {
      CopyBits(source.Row(sourceY), area.sourceX, target.Row(targetY), area.targetX, area.width);
    } else if (!source.IsOneBit() && !target.IsOneBit()) {
      std::memcpy(target.Row(targetY) + 3 * area.targetX, source.Row(sourceY) + 3 * area.sourceX,
                  static_cast<std::size_t>(3) * area.width);
    } else {
      for (INT i = 0; i < area.width; ++i) {
        CopyPixel(source, area.sourceX + i, sourceY, target, area.targetX + i, targetY);
      }
    }
  }
}

// Cuts one dimension of a copy down to what lies within both images.
void Clip(std::int64_t& source, std::int64_t& target, std::int64_t& length, INT sourceLength,
          INT targetLength) {
  const std::int64_t skipped = std::max({-source, -target, std::int64_t{0}});
  source += skipped;
  target += skipped;
  length = std::min({length - skipped, sourceLength - source, targetLength - target});
}

// Makes ready what is about to be read and written.
void Prepare(GpImage& source, GpImage& target, bool wholeTarget) {
  source.MakePixels();
  if (wholeTarget) {
    target.DropPixels();
  } else {
    target.MakePixels();
  }
}

void DrawShifted(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part) {
  GpImage& target = *graphics.target;
  std::int64_t sourceX = part.X, sourceY = part.Y;
  std::int64_t width = part.Width, height = part.Height;
  std::int64_t targetX = std::int64_t{x} + graphics.world.dx;
  std::int64_t targetY = std::int64_t{y} + graphics.world.dy;
  Clip(sourceX, targetX, width, source.width, target.width);
  Clip(sourceY, targetY, height, source.height, target.height);
  if (width <= 0 || height <= 0) return;
  Prepare(source, target, width == target.width && height == target.height);
  CopyRows(source, target,
           {static_cast<INT>(sourceX), static_cast<INT>(sourceY), static_cast<INT>(targetX),
            static_cast<INT>(targetY), static_cast<INT>(width), static_cast<INT>(height)});
}

// A page turned clockwise onto one of its size; false when it is another case.
bool TurnWholePage(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part) {
  const Transform& world = graphics.world;
  GpImage& target = *graphics.target;
  if (!world.IsClockwiseTurn() || source.IsOneBit() || target.IsOneBit() || x != 0 || y != 0 ||
      part.X != 0 || part.Y != 0 || part.Width != source.width || part.Height != source.height ||
      world.dx != source.height || world.dy != 0 || target.width != source.height ||
      target.height != source.width || &source == &target) {
    return false;
  }
  Prepare(source, target, true);
  TurnClockwise({source.pixels, source.strideBytes}, source.width, source.height,
                {target.pixels, target.strideBytes});
  return true;
}

void DrawTurned(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part) {
  if (TurnWholePage(graphics, source, x, y, part)) return;
  const Transform& world = graphics.world;
  GpImage& target = *graphics.target;
  Prepare(source, target, false);
  const INT left = std::max(part.X, 0);
  const INT top = std::max(part.Y, 0);
  const auto right =
      static_cast<INT>(std::min(std::int64_t{part.X} + part.Width, std::int64_t{source.width}));
  const auto bottom =
      static_cast<INT>(std::min(std::int64_t{part.Y} + part.Height, std::int64_t{source.height}));
  // A pixel is a square: where an axis is turned round, its far edge becomes the near one.
  const std::int64_t baseX = std::int64_t{world.dx} + std::min({world.xx, world.yx, 0});
  const std::int64_t baseY = std::int64_t{world.dy} + std::min({world.xy, world.yy, 0});
  const auto drawTile = [&](INT tileX, INT tileY) {
    for (INT j = tileY; j < std::min(tileY + kTilePx, bottom); ++j) {
      const std::int64_t worldY = std::int64_t{y} + j - part.Y;
      for (INT i = tileX; i < std::min(tileX + kTilePx, right); ++i) {
        const std::int64_t worldX = std::int64_t{x} + i - part.X;
        const std::int64_t targetX = world.xx * worldX + world.yx * worldY + baseX;
        const std::int64_t targetY = world.xy * worldX + world.yy * worldY + baseY;
        if (targetX < 0 || targetX >= target.width || targetY < 0 || targetY >= target.height) {
          continue;
        }
        CopyPixel(source, i, j, target, static_cast<INT>(targetX), static_cast<INT>(targetY));
      }
    }
  };
  for (INT tileY = top; tileY < bottom; tileY += kTilePx) {
    for (INT tileX = left; tileX < right; tileX += kTilePx) drawTile(tileX, tileY);
  }
}

}  // namespace

void DrawPixels(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part) {
  if (graphics.world.IsTranslation()) {
    DrawShifted(graphics, source, x, y, part);
  } else {
    DrawTurned(graphics, source, x, y, part);
  }
}

}  // namespace Gdiplus
