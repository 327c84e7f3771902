// Access to the pixels of a GDI+ bitmap. Rows are padded to 4 bytes; 24-bit pixels are blue, green,
// red, 1-bit rows begin with the most significant bit, 0 is black.
#pragma once

#include <cstddef>

#include "platform/gdiplus.h"

// Holds a bitmap's pixels for reading, or for writing all of them. Not valid when the bitmap is
// null or of another format. A 24-bit bitmap can also be written as 1-bit rows, and read so while
// it has not been touched otherwise.
class Pixels {
 public:
  Pixels(Gdiplus::Bitmap* bitmap, Gdiplus::PixelFormat format,
         Gdiplus::ImageLockMode mode = Gdiplus::ImageLockModeRead) {
    if (bitmap == nullptr) return;
    if (Gdiplus::DllExports::GdipBitmapLockBits(bitmap->nativeImage, nullptr, mode, format,
                                                &m_data) == Gdiplus::Ok) {
      m_image = bitmap->nativeImage;
    }
  }
  ~Pixels() {
    if (m_image != nullptr) Gdiplus::DllExports::GdipBitmapUnlockBits(m_image, &m_data);
  }
  Pixels(const Pixels&) = delete;
  Pixels& operator=(const Pixels&) = delete;

  bool IsValid() const { return m_image != nullptr; }
  INT Width() const { return static_cast<INT>(m_data.Width); }
  INT Height() const { return static_cast<INT>(m_data.Height); }
  bool SameSize(const Pixels& other) const {
    return Width() == other.Width() && Height() == other.Height();
  }
  std::ptrdiff_t StrideBytes() const { return m_data.Stride; }
  BYTE* Row(INT y) const {
    return static_cast<BYTE*>(m_data.Scan0) + static_cast<std::ptrdiff_t>(y) * m_data.Stride;
  }

 private:
  Gdiplus::GpImage* m_image = nullptr;
  Gdiplus::BitmapData m_data = {};
};
