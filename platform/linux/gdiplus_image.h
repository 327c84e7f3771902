// The objects behind the GDI+ handles.
#pragma once

#include <cstdlib>

#include "platform/gdiplus.h"

namespace Gdiplus {

struct GpImage {
  INT width;
  INT height;
  PixelFormat format;
  INT strideBytes;
  BYTE* pixels;  // calloc

  BYTE* Row(INT y) const { return pixels + static_cast<std::size_t>(y) * strideBytes; }
  bool IsOneBit() const { return format == PixelFormat1bppIndexed; }
};

// Quarter turn and whole-pixel shift: x' = xx * x + yx * y + dx, y' = xy * x + yy * y + dy.
struct Transform {
  INT xx = 1, xy = 0;
  INT yx = 0, yy = 1;
  INT dx = 0, dy = 0;

  bool IsTranslation() const { return xx == 1 && yy == 1; }
};

struct GpGraphics {
  GpImage* target;
  Transform world;
};

// Whether GDI+ is running.
bool IsStarted();

// Luminance 128 and above counts as white. Weights of ITU-R BT.601.
inline bool IsLight(BYTE red, BYTE green, BYTE blue) {
  return 299 * red + 587 * green + 114 * blue >= 128 * 1000;
}

// Draws the source rectangle with its corner at (x, y) of the world.
void DrawPixels(const GpGraphics& graphics, const GpImage& source, INT x, INT y, const Rect& part);

// Writes the image to the stream as a PNG file.
GpStatus WritePng(const GpImage& image, IStream* stream);

}  // namespace Gdiplus
