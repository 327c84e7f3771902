// The objects behind the GDI+ handles.
#pragma once

#include "platform/extensions.h"
#include "platform/linux/gdiplus/geometry.h"

namespace Gdiplus {

// A part of an image and where it lands, pixel for pixel, in another.
struct Drawing {
  GpImage* source;
  Area part;  // all of it lands within the other image
  Transform place;

  Area Target() const { return place.Of(part); }
};

// A bitmap keeps its pixels in the cheapest form until somebody asks for them. A new or cleared one
// is a colour. One that a 24-bit bitmap was drawn on next is still to be drawn: strips of it can be
// read without the whole ever being made. One that was written as dots is bits.
class GpImage {
 public:
  enum class Content { Color, Drawing, Bits, Pixels };

  GpImage(INT imageWidth, INT imageHeight, PixelFormat pixelFormat, INT rowBytes);
  ~GpImage();
  GpImage(const GpImage&) = delete;
  GpImage& operator=(const GpImage&) = delete;

  INT width;  // as height and stride, changed by Turn alone
  INT height;
  const PixelFormat format;
  INT strideBytes;

  bool HasMemory() const { return m_block != nullptr; }
  bool IsOneBit() const { return format == PixelFormat1bppIndexed; }
  Area Bounds() const { return {0, 0, width, height}; }
  Content GetContent() const { return m_content; }
  // What pixels are that nothing was drawn on, and of Content::Drawing what is to be drawn on them.
  ARGB Color() const { return m_color; }
  const Drawing& WaitingDrawing() const { return m_drawing; }

  // The rows, for reading what they hold.
  PixelRows Rows() const { return {m_pixels, strideBytes}; }
  BYTE* Row(INT y) const { return Rows().Row(y); }
  // The rows of Content::Bits.
  PixelRows BitRows() const { return {m_pixels, (width + 31) / 32 * 4}; }

  // Makes every pixel stand in its row.
  void MakePixels();
  // The same before some of them are written.
  void ChangePixels();
  // The same before all of them are written, as pixels or as bits: what they were is lost.
  void DropPixels(Content coming = Content::Pixels);
  void Fill(ARGB with);
  void Draw(const Drawing& drawing);
  // Turns the whole by a quarter. Returns false, the image as it was, without memory.
  bool Turn(bool clockwise);
  // Takes the pixels to be those of a buffer, which stays as it is until they change.
  void Borrow(BYTE* pixels);

  // Rows of Content::Drawing; the first of the result is the row top. They stand in the unused
  // memory of the pixels until the next call.
  PixelRows DrawnRows(INT top, INT bottom);

 private:
  bool PutOff(Drawing drawing);
  void DrawReaders();
  void Forget();
  void FillRows(INT count, const PixelRows& rows) const;

  BYTE* m_block;
  BYTE* m_pixels;  // the block, or a buffer that is only read; the rows of Content::Bits stand at
                   // its beginning
  Content m_content = Content::Color;
  ARGB m_color = 0xFF000000;
  Drawing m_drawing = {};        // of Content::Drawing: what lies over the colour
  GpImage* m_readers = nullptr;  // those that are still to be drawn from this one, which has pixels
  GpImage* m_nextReader = nullptr;
};

struct GpGraphics {
  GpImage* target;
};

// What a wrapper object stands for; null for null.
inline GpImage* NativeImage(const Image* image) {
  return image == nullptr ? nullptr : image->nativeImage;
}

// Why a call cannot go on, Ok when it can.
GpStatus Check(const char* call, bool argumentsValid);

// Draws what lands in the rows from top up to bottom; the first of rows is the row top.
void DrawRows(const Drawing& drawing, INT top, INT bottom, const PixelRows& rows);

// Writes the image to the stream as a PNG file.
GpStatus WritePng(GpImage& image, IStream* stream);

}  // namespace Gdiplus
