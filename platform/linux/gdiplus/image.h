// The objects behind the GDI+ handles.
#pragma once

#include "platform/extensions.h"
#include "platform/linux/gdiplus/geometry.h"

namespace Gdiplus {

// A part of an image and its place, pixel for pixel, in another.
struct Drawing {
  GpImage* source;
  Area part;  // lies within the other image once placed
  Transform place;

  Area Target() const { return place.Of(part); }
};

// A bitmap. It keeps its pixels in the cheapest form until they are needed:
//   Color    new or cleared: all pixels have one colour
//   Drawing  a 24-bit bitmap is to be drawn on the colour; strips of the result can be read
//   Bits     written as dots: 1-bit rows
//   Pixels   rows of its format
class GpImage {
 public:
  enum class Content { Color, Drawing, Bits, Pixels };

  GpImage(INT imageWidth, INT imageHeight, PixelFormat pixelFormat, INT rowBytes);
  ~GpImage();
  GpImage(const GpImage&) = delete;
  GpImage& operator=(const GpImage&) = delete;

  INT width;  // only Turn changes width, height and stride
  INT height;
  const PixelFormat format;
  INT strideBytes;

  bool HasMemory() const { return m_block != nullptr; }
  bool IsOneBit() const { return format == PixelFormat1bppIndexed; }
  Area Bounds() const { return {0, 0, width, height}; }
  Content GetContent() const { return m_content; }
  // The colour of Content::Color, or the one under Content::Drawing; and that drawing.
  ARGB Color() const { return m_color; }
  const Drawing& WaitingDrawing() const { return m_drawing; }

  // The rows of Content::Pixels.
  PixelRows Rows() const { return {m_pixels, strideBytes}; }
  BYTE* Row(INT y) const { return Rows().Row(y); }
  // The rows of Content::Bits.
  PixelRows BitRows() const {
    return {m_pixels, static_cast<std::ptrdiff_t>(StrideBytes(width, 1))};
  }

  // Makes the content pixels.
  void MakePixels();
  // The same, before some pixels are written.
  void ChangePixels();
  // Discards the content before all of it is written, as pixels or as bits.
  void DropPixels(Content coming = Content::Pixels);
  void Fill(ARGB with);
  void Draw(const Drawing& drawing);
  // Turns the image by a quarter. Returns false, the image unchanged, if there is no memory.
  bool Turn(bool clockwise);
  // Uses a buffer as the pixels. It must stay unchanged until the pixels change.
  void Borrow(BYTE* pixels);

  // Draws rows top to bottom - 1 of Content::Drawing into the memory for pixels and returns them.
  // They are valid until the next call.
  PixelRows DrawnRows(INT top, INT bottom);

 private:
  bool PutOff(Drawing drawing);
  void DrawReaders();
  void Forget();
  void FillRows(INT count, const PixelRows& rows) const;

  BYTE* m_block;
  BYTE* m_pixels;  // the block, or a borrowed buffer, which is only read
  Content m_content = Content::Color;
  ARGB m_color = 0xFF000000;
  Drawing m_drawing = {};        // of Content::Drawing
  GpImage* m_readers = nullptr;  // list of the images whose waiting drawings read this one
  GpImage* m_nextReader = nullptr;
};

struct GpGraphics {
  GpImage* target;
};

// The image behind a wrapper object; null for null.
inline GpImage* NativeImage(const Image* image) {
  return image == nullptr ? nullptr : image->nativeImage;
}

// Why a call must fail, or Ok.
GpStatus Check(const char* call, bool argumentsValid);

// Draws the part of a drawing that lies in rows top to bottom - 1. rows: begin with row top.
void DrawRows(const Drawing& drawing, INT top, INT bottom, const PixelRows& rows);

// Writes the image to the stream as a PNG file.
GpStatus WritePng(GpImage& image, IStream* stream);

}  // namespace Gdiplus
