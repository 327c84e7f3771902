#include "platform/linux/gdiplus/image.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace Gdiplus {

namespace {

// Turns the bits at the beginning of the block into pixels. Works from the end, so that no bit is
// overwritten before it is read.
void SpreadBits(const GpImage& image) {
  for (INT y = image.height - 1; y >= 0; --y) {
    const BYTE* bits = image.BitRows().Row(y);
    BYTE* row = image.Row(y);
    for (INT x = image.width - 1; x >= 0; --x) {
      const BYTE level = (bits[x >> 3] >> (7 - (x & 7)) & 1) != 0 ? 0xFF : 0;
      std::memset(row + 3 * x, level, 3);
    }
  }
}

}  // namespace

GpImage::GpImage(INT imageWidth, INT imageHeight, PixelFormat pixelFormat, INT rowBytes)
    : width(imageWidth),
      height(imageHeight),
      format(pixelFormat),
      strideBytes(rowBytes),
      m_block(static_cast<BYTE*>(std::malloc(static_cast<SIZE_T>(strideBytes) * height))),
      m_pixels(m_block) {}

GpImage::~GpImage() {
  Forget();
  std::free(m_block);
}

void GpImage::FillRows(INT count, const PixelRows& rows) const {
  const auto red = static_cast<BYTE>(m_color >> 16);
  const auto green = static_cast<BYTE>(m_color >> 8);
  const auto blue = static_cast<BYTE>(m_color);
  for (INT y = 0; y < count; ++y) {
    BYTE* pixel = rows.Row(y);
    if (IsOneBit() || (red == green && green == blue)) {
      std::memset(pixel, blue, strideBytes);
      continue;
    }
    for (INT x = 0; x < width; ++x, pixel += 3) {
      pixel[0] = blue;
      pixel[1] = green;
      pixel[2] = red;
    }
  }
}

void GpImage::MakePixels() {
  if (m_content == Content::Color) FillRows(height, Rows());
  if (m_content == Content::Bits) SpreadBits(*this);
  if (m_content == Content::Drawing) {
    DrawnRows(0, height);
    Forget();
  }
  m_content = Content::Pixels;
}

void GpImage::ChangePixels() {
  MakePixels();
  Forget();
  if (m_pixels == m_block) return;
  std::memcpy(m_block, m_pixels, static_cast<std::size_t>(strideBytes) * height);
  m_pixels = m_block;
}

void GpImage::DropPixels(Content coming) {
  Forget();
  m_pixels = m_block;
  m_content = coming;
}

void GpImage::Borrow(BYTE* pixels) {
  DropPixels();
  m_pixels = pixels;
}

void GpImage::Fill(ARGB with) {
  DropPixels(Content::Color);
  m_color = with;
}

void GpImage::Draw(const Drawing& drawing) {
  if (PutOff(drawing)) return;
  drawing.source->MakePixels();
  if (drawing.Target().Contains(Bounds())) {
    DropPixels();
  } else {
    ChangePixels();
  }
  DrawRows(drawing, 0, height, Rows());
}

// Puts a drawing off if nothing else was drawn here; returns false if it must be done now. If the
// source is itself a waiting drawing on the same colour, that one's source is drawn instead.
bool GpImage::PutOff(Drawing drawing) {
  if (m_content != Content::Color || drawing.source->IsOneBit()) return false;
  const GpImage& drawn = *drawing.source;
  if (drawn.m_content == Content::Drawing && drawn.m_color == m_color) {
    const Area part = Intersect(drawing.part, drawn.m_drawing.Target());
    if (part.IsEmpty()) return true;
    drawing = {drawn.m_drawing.source, drawn.m_drawing.place.Inverse().Of(part),
               Combine(drawn.m_drawing.place, drawing.place)};
  }
  if (drawing.source->m_content != Content::Pixels) return false;
  m_content = Content::Drawing;
  m_drawing = drawing;
  m_nextReader = drawing.source->m_readers;
  drawing.source->m_readers = this;
  return true;
}

bool GpImage::Turn(bool clockwise) {
  GpImage turned(height, width, format, static_cast<INT>(StrideBytes(height, 24)));
  if (!turned.HasMemory()) return false;
  DrawReaders();
  const Transform turn =
      clockwise ? Transform{0, 1, -1, 0, height - 1, 0} : Transform{0, -1, 1, 0, 0, width - 1};
  if (m_content == Content::Drawing) {
    m_drawing.place = Combine(m_drawing.place, turn);
  } else if (m_content != Content::Color) {
    MakePixels();
    DrawRows({this, Bounds(), turn}, 0, turned.height, turned.Rows());
  }
  std::swap(width, height);
  strideBytes = turned.strideBytes;
  std::swap(m_block, turned.m_block);
  m_pixels = m_block;
  return true;
}

// Does the waiting drawings of other images that read these pixels, before they change.
void GpImage::DrawReaders() {
  while (m_readers != nullptr) m_readers->MakePixels();
}

// The same, and drops the drawing that waits here.
void GpImage::Forget() {
  DrawReaders();
  if (m_drawing.source == nullptr) return;
  GpImage** place = &m_drawing.source->m_readers;
  while (*place != this) place = &(*place)->m_nextReader;
  *place = m_nextReader;
  m_nextReader = nullptr;
  m_drawing.source = nullptr;
}

PixelRows GpImage::DrawnRows(INT top, INT bottom) {
  if (!m_drawing.Target().Contains({0, top, width, bottom})) FillRows(bottom - top, Rows());
  DrawRows(m_drawing, top, bottom, Rows());
  return Rows();
}

}  // namespace Gdiplus
