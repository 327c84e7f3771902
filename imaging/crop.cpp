#include "imaging/crop.h"

#include <cstddef>
#include <cstring>

namespace {

// A lock of the rows of a 1-bit bitmap.
class Bits {
 public:
  Bits(Gdiplus::Bitmap* bitmap, Gdiplus::ImageLockMode mode) : m_bitmap(bitmap) {
    const Gdiplus::Rect whole(0, 0, static_cast<INT>(bitmap->GetWidth()),
                              static_cast<INT>(bitmap->GetHeight()));
    m_locked = bitmap->LockBits(&whole, mode, PixelFormat1bppIndexed, &m_data) == Gdiplus::Ok;
  }
  ~Bits() {
    if (m_locked) m_bitmap->UnlockBits(&m_data);
  }
  Bits(const Bits&) = delete;
  Bits& operator=(const Bits&) = delete;

  bool IsLocked() const { return m_locked; }
  BYTE* Row(INT y) const {
    return static_cast<BYTE*>(m_data.Scan0) + static_cast<std::ptrdiff_t>(y) * m_data.Stride;
  }

 private:
  Gdiplus::Bitmap* const m_bitmap;
  Gdiplus::BitmapData m_data = {};
  bool m_locked = false;
};

// Copies count bits of a row, from the bit first on, to the start of another row.
void CopyBits(const BYTE* from, INT first, INT count, BYTE* to) {
  from += first / 8;
  const INT shift = first % 8;
  if (shift == 0) {
    std::memcpy(to, from, static_cast<std::size_t>((count + 7) / 8));
    return;
  }
  const INT sourceBytes = (shift + count + 7) / 8;
  for (INT i = 0; i < (count + 7) / 8; ++i) {
    const int next = i + 1 < sourceBytes ? from[i + 1] : 0;
    to[i] = static_cast<BYTE>(from[i] << shift | next >> (8 - shift));
  }
}

// A new 1-bit bitmap with a rectangle of the source, which is 1-bit and holds all of it. Null if it
// cannot be made. GDI+ does not draw on 1-bit bitmaps everywhere, so bits are copied.
BitmapOwner CropBitmap(Gdiplus::Bitmap* source, INT x, INT y, INT width, INT height) {
  BitmapOwner cropped = MakeBitmap(static_cast<UINT>(width), static_cast<UINT>(height),
                                   PixelFormat1bppIndexed, WTEXT("pCroppedBitmap"));
  if (cropped == nullptr) return nullptr;
  const Bits from(source, Gdiplus::ImageLockModeRead);
  const Bits to(cropped.get(), Gdiplus::ImageLockModeWrite);
  if (!from.IsLocked() || !to.IsLocked()) return nullptr;
  for (INT row = 0; row < height; ++row) CopyBits(from.Row(y + row), x, width, to.Row(row));
  return cropped;
}

}  // namespace

CroppedImage CropToContent(Gdiplus::Bitmap* given, DWORD rotation) {
  CroppedImage image{.used = given};
  const bool byColumns = rotation == 1 || rotation == 3;
  const INT width = static_cast<INT>(given->GetWidth());
  const INT height = static_cast<INT>(given->GetHeight());
  INT first = byColumns ? BitmapHelper::GetFirstContentColumn1BPP(given)
                        : BitmapHelper::GetFirstContentRow1BPP(given);
  INT count = 1;
  image.empty = first < 0;
  if (image.empty) {
    first = 0;
  } else {
    const INT last = byColumns ? BitmapHelper::GetLastContentColumn1BPP(given)
                               : BitmapHelper::GetLastContentRow1BPP(given);
    count = last - first + 1;
  }
  if (count == (byColumns ? width : height)) return image;

  image.copy = byColumns ? CropBitmap(given, first, 0, count, height)
                         : CropBitmap(given, 0, first, width, count);
  if (image.copy != nullptr) {
    image.used = image.copy.get();
    image.offsetPx = first;
  }
  return image;
}
