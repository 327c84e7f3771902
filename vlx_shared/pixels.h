// Scoped access to the pixels of a GDI+ bitmap. Rows are padded to 4 bytes. 24-bit pixels are blue,
// green, red. 1-bit rows have their first pixel in the most significant bit; 0 is black.
#pragma once

#include <cstddef>

#include "platform/extensions.h"

// The locked rows of a bitmap.
class LockedRows {
 public:
  LockedRows(const LockedRows&) = delete;
  LockedRows& operator=(const LockedRows&) = delete;

  bool IsValid() const { return m_bitmap != nullptr; }
  INT Width() const { return static_cast<INT>(m_data.Width); }
  INT Height() const { return static_cast<INT>(m_data.Height); }
  bool SameSize(const LockedRows& other) const {
    return Width() == other.Width() && Height() == other.Height();
  }
  BYTE* Row(INT y) const {
    return static_cast<BYTE*>(m_data.Scan0) + static_cast<std::ptrdiff_t>(y) * m_data.Stride;
  }

 protected:
  LockedRows() = default;
  ~LockedRows() = default;

  Gdiplus::Bitmap* m_bitmap = nullptr;  // null unless locked
  Gdiplus::BitmapData m_data = {};
};

// Locks a bitmap's pixels for reading, or for writing all of them. Not valid if the bitmap is null,
// has another format or cannot be locked.
class Pixels : public LockedRows {
 public:
  Pixels(Gdiplus::Bitmap* bitmap, Gdiplus::PixelFormat format,
         Gdiplus::ImageLockMode mode = Gdiplus::ImageLockModeRead) {
    if (bitmap == nullptr || bitmap->GetPixelFormat() != format) return;
    const Gdiplus::Rect whole(0, 0, static_cast<INT>(bitmap->GetWidth()),
                              static_cast<INT>(bitmap->GetHeight()));
    if (bitmap->LockBits(&whole, mode, format, &m_data) == Gdiplus::Ok) m_bitmap = bitmap;
  }
  ~Pixels() {
    if (m_bitmap != nullptr) m_bitmap->UnlockBits(&m_data);
  }
};

// Locks a 24-bit bitmap as 1-bit rows: for writing all of them, or for reading if it was written so
// before. Not valid otherwise.
class Dots : public LockedRows {
 public:
  explicit Dots(Gdiplus::Bitmap* bitmap, Gdiplus::ImageLockMode mode = Gdiplus::ImageLockModeRead) {
    if (PlatformLockDots(bitmap, mode, &m_data) == Gdiplus::Ok) m_bitmap = bitmap;
  }
  ~Dots() {
    if (m_bitmap != nullptr) PlatformUnlockDots(m_bitmap, &m_data);
  }
};
