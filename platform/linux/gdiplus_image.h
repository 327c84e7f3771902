// The objects behind the GDI+ handles.
#pragma once

#include <cstdlib>

#include "platform/gdiplus.h"

namespace Gdiplus {

// A bitmap keeps its pixels in the cheapest form until somebody asks for them: a new or cleared one
// is a colour, a 24-bit one that was written through a 1-bit lock is bits.
struct GpImage {
  enum class Content { Color, Bits, Pixels };

  INT width;
  INT height;
  PixelFormat format;
  INT strideBytes;
  BYTE* pixels;  // a block; as Content::Bits it begins with the rows of a 1-bit bitmap
  Content content = Content::Color;
  ARGB color = 0xFF000000;

  bool IsOneBit() const { return format == PixelFormat1bppIndexed; }
  INT BitStrideBytes() const { return (width + 31) / 32 * 4; }
  BYTE* Row(INT y) const { return pixels + static_cast<std::size_t>(y) * strideBytes; }
  BYTE* BitRow(INT y) const { return pixels + static_cast<std::size_t>(y) * BitStrideBytes(); }

  void Fill(ARGB with) {
    content = Content::Color;
    color = with;
  }
  // Makes every pixel stand in its row.
  void MakePixels();
  // The same for one whose pixels are all about to be written: what they were is lost.
  void DropPixels() { content = Content::Pixels; }
};

// Quarter turn and whole-pixel shift: x' = xx * x + yx * y + dx, y' = xy * x + yy * y + dy.
struct Transform {
  INT xx = 1, xy = 0;
  INT yx = 0, yy = 1;
  INT dx = 0, dy = 0;

  bool IsTranslation() const { return xx == 1 && yy == 1; }
  bool IsClockwiseTurn() const { return xy == 1 && yx == -1; }
};

struct GpGraphics {
  GpImage* target;
  Transform world;
};

// Why a call cannot go on, Ok when it can.
GpStatus Check(const char* call, bool argumentsValid);

// Luminance 128 and above counts as white. Weights of ITU-R BT.601.
inline bool IsLight(BYTE red, BYTE green, BYTE blue) {
  return 299 * red + 587 * green + 114 * blue >= 128 * 1000;
}

// Draws the source rectangle with its corner at (x, y) of the world.
void DrawPixels(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part);

// Writes the image to the stream as a PNG file.
GpStatus WritePng(GpImage& image, IStream* stream);

// Gives the memory of the PNG compressors back.
void ReleasePngCompressors();

}  // namespace Gdiplus
