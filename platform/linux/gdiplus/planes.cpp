// Reads a page as planes of bytes that the caller makes of its pixels.

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstring>

#include "platform/extensions.h"
#include "platform/linux/gdiplus/image.h"
#include "platform/linux/gdiplus/turn.h"

namespace Gdiplus {

namespace {

constexpr INT kMostPlanes = 2;
constexpr INT kCacheLineBytes = 64;

// The rows to read and where their bytes go.
struct Reading {
  INT top;
  INT bottom;
  PixelReduction& reduction;
  const BytePlane* planes;
  INT planeCount;

  BYTE* At(INT plane, INT x, INT y) const {
    return planes[plane].first + (y - top) * planes[plane].strideBytes + x;
  }
};

// Prefetches pixels. Rows lie too far apart for the processor to do so.
void Fetch(const BYTE* pixels, INT count) {
  for (INT i = 0; i < 3 * count; i += kCacheLineBytes) hwy::Prefetch(pixels + i);
}

// Reads columns of the source as rows of the page. Goes from the bottom up, so that these rows are
// filled from left to right.
void TurnColumns(const GpImage& source, const Area& part, INT toLeft, INT toTop,
                 const Reading& reading) {
  TurnBand bands[kMostPlanes];
  const INT left = static_cast<INT>(part.left);
  const INT columns = static_cast<INT>(part.right) - left;
  for (INT bottom = static_cast<INT>(part.bottom); bottom > part.top; bottom -= TurnBand::kRows) {
    const INT count = std::min(TurnBand::kRows, bottom - static_cast<INT>(part.top));
    for (INT i = 0; i < count; ++i) {
      const INT y = bottom - 1 - i;
      if (y >= TurnBand::kRows) Fetch(source.Row(y - TurnBand::kRows) + 3 * left, columns);
      BYTE* const row[kMostPlanes] = {bands[0].bytes[i], bands[1].bytes[i]};
      reading.reduction.Reduce(source.Row(y) + 3 * left, columns, row);
    }
    const INT x = toLeft + static_cast<INT>(part.bottom) - bottom;
    for (INT plane = 0; plane < reading.planeCount; ++plane) {
      TurnClockwise(bands[plane], count, columns,
                    {reading.At(plane, x, toTop), reading.planes[plane].strideBytes});
    }
  }
}

// Fills the rows with the colour under a drawing.
void FillRows(const GpImage& image, const Reading& reading) {
  const ARGB color = image.Color();
  const BYTE pixel[3] = {static_cast<BYTE>(color), static_cast<BYTE>(color >> 8),
                         static_cast<BYTE>(color >> 16)};
  BYTE bytes[kMostPlanes];
  BYTE* const to[kMostPlanes] = {bytes, bytes + 1};
  reading.reduction.Reduce(pixel, 1, to);
  for (INT plane = 0; plane < reading.planeCount; ++plane) {
    for (INT y = reading.top; y < reading.bottom; ++y) {
      std::memset(reading.At(plane, 0, y), bytes[plane], image.width);
    }
  }
}

// Reads a page whose turn is a waiting drawing. Turns the bytes, which are fewer than the pixels.
void ReadTurned(const GpImage& image, const Reading& reading) {
  const Drawing& drawing = image.WaitingDrawing();
  const Area rows = {0, reading.top, image.width, reading.bottom};
  const Area target = Intersect(drawing.Target(), rows);
  if (!target.Contains(rows)) FillRows(image, reading);
  if (target.IsEmpty()) return;
  for (std::int64_t top = target.top; top < target.bottom; top += TurnBand::kColumns) {
    const std::int64_t bottom = std::min(top + TurnBand::kColumns, target.bottom);
    TurnColumns(*drawing.source,
                drawing.place.Inverse().Of({target.left, top, target.right, bottom}),
                static_cast<INT>(target.left), static_cast<INT>(top), reading);
  }
}

void ReadRows(const PixelRows& rows, INT width, const Reading& reading) {
  for (INT y = reading.top; y < reading.bottom; ++y) {
    BYTE* to[kMostPlanes] = {};
    for (INT plane = 0; plane < reading.planeCount; ++plane) to[plane] = reading.At(plane, 0, y);
    reading.reduction.Reduce(rows.Row(y - reading.top), width, to);
  }
}

GpStatus ReadPlanes(GpImage& image, const Reading& reading) {
  const bool waits = image.GetContent() == GpImage::Content::Drawing;
  if (waits && image.WaitingDrawing().place.IsClockwiseTurn()) {
    ReadTurned(image, reading);
  } else if (waits) {
    ReadRows(image.DrawnRows(reading.top, reading.bottom), image.width, reading);
  } else {
    image.MakePixels();
    ReadRows({image.Row(reading.top), image.strideBytes}, image.width, reading);
  }
  return Ok;
}

}  // namespace
}  // namespace Gdiplus

Gdiplus::Status PlatformReadPlanes(Gdiplus::Bitmap* page, INT top, INT rows,
                                   PixelReduction& reduction, const BytePlane* planes,
                                   INT planeCount) {
  Gdiplus::GpImage* image = NativeImage(page);
  const bool possible = image != nullptr && !image->IsOneBit() && top >= 0 && rows > 0 &&
                        rows <= image->height - top && planeCount > 0 &&
                        planeCount <= Gdiplus::kMostPlanes;
  if (!possible) return Gdiplus::InvalidParameter;
  if (PlatformShouldFail("PlatformReadPlanes")) return Gdiplus::OutOfMemory;
  return Gdiplus::ReadPlanes(*image, {top, top + rows, reduction, planes, planeCount});
}
