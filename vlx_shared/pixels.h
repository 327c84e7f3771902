// Access to the pixels of a GDI+ bitmap. Rows are padded to 4 bytes; 24-bit pixels are blue, green,
// red, 1-bit rows begin with the most significant bit, 0 is black.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <new>
#include <optional>

#include "platform/gdiplus.h"

// Holds a bitmap's pixels for reading, or for writing all of them. Not valid when the bitmap is
// null or of another format. A 24-bit bitmap can also be written as 1-bit rows, and read so while
// it has not been touched otherwise.
class Pixels {
 public:
  Pixels(Gdiplus::Bitmap* bitmap, Gdiplus::PixelFormat format,
         Gdiplus::ImageLockMode mode = Gdiplus::ImageLockModeRead) {
    Lock(bitmap, nullptr, mode, format);
  }
  // Some rows of a bitmap, for reading; the first of them is row 0 here. Of a page that is turned
  // these are cheaper than the whole.
  Pixels(Gdiplus::Bitmap* bitmap, Gdiplus::PixelFormat format, INT top, INT rows) {
    if (bitmap == nullptr) return;
    const Gdiplus::Rect strip = {0, top, static_cast<INT>(bitmap->GetWidth()), rows};
    Lock(bitmap, &strip, Gdiplus::ImageLockModeRead, format);
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
  void Lock(Gdiplus::Bitmap* bitmap, const Gdiplus::Rect* rect, Gdiplus::ImageLockMode mode,
            Gdiplus::PixelFormat format) {
    if (bitmap == nullptr) return;
    if (Gdiplus::DllExports::GdipBitmapLockBits(bitmap->nativeImage, rect, mode, format, &m_data) ==
        Gdiplus::Ok) {
      m_image = bitmap->nativeImage;
    }
  }

  Gdiplus::GpImage* m_image = nullptr;
  Gdiplus::BitmapData m_data = {};
};

// Reads the rows of a 24-bit page from the top down.
class PageReader {
 public:
  explicit PageReader(Gdiplus::Bitmap* page) : m_page(page) {}

  // Row y, or a later one than the call before gave; it stands until the next call. Throws
  // std::bad_alloc when the page is null, of another format, or cannot be read.
  const BYTE* Row(INT y) {
    assert(y >= m_top);
    if (!m_strip || y >= m_top + m_strip->Height()) {
      if (m_page == nullptr) throw std::bad_alloc();
      m_strip.reset();
      m_top = y;
      m_strip.emplace(m_page, Gdiplus::PixelFormat24bppRGB, y,
                      std::min(kRows, static_cast<INT>(m_page->GetHeight()) - y));
      if (!m_strip->IsValid()) throw std::bad_alloc();
    }
    return m_strip->Row(y - m_top);
  }

 private:
  static constexpr INT kRows = 128;  // of a turned page a second-level cache holds that many

  Gdiplus::Bitmap* m_page;
  INT m_top = 0;
  std::optional<Pixels> m_strip;
};
