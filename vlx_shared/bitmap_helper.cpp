// Makes, copies, reduces and compares bitmaps, and finds their content.

#include <algorithm>
#include <bit>
#include <cstring>

#include "config/vlx_shared.h"
#include "vlx_shared/pixels.h"
#include "vlx_shared/raster_kernels.h"

using Gdiplus::Bitmap;

namespace {

// The bits in the last byte of a row that are pixels.
BYTE LastByteMask(INT width) {
  const INT used = width & 7;
  return used == 0 ? 0xFF : static_cast<BYTE>(0xFF << (8 - used));
}

// Byte i of a row with its black pixels as 1 bits.
BYTE BlackBits(const BYTE* row, INT i, INT width) {
  const auto black = static_cast<BYTE>(~row[i]);
  return i == (width - 1) / 8 ? static_cast<BYTE>(black & LastByteMask(width)) : black;
}

bool HasSize(Bitmap* bitmap, INT width, INT height) {
  return bitmap != nullptr && bitmap->GetWidth() == static_cast<UINT>(width) &&
         bitmap->GetHeight() == static_cast<UINT>(height);
}

bool HasContent(const Pixels& pixels, INT y) {
  const BYTE* row = pixels.Row(y);
  const INT bytes = (pixels.Width() + 7) / 8;
  INT i = 0;
  for (std::uint64_t word; i + 8 < bytes; i += 8) {
    std::memcpy(&word, row + i, sizeof word);
    if (word != ~std::uint64_t{0}) return true;
  }
  for (; i < bytes; ++i) {
    if (BlackBits(row, i, pixels.Width()) != 0) return true;
  }
  return false;
}

// The first or last column with a black pixel in any row; -1 if none. Looks only at bytes beyond
// the column found so far.
INT ContentColumn(Bitmap* bitmap, bool last) {
  const Pixels pixels(bitmap, PixelFormat1bppIndexed);
  if (!pixels.IsValid()) return -1;
  const INT width = pixels.Width();
  const INT bytes = (width + 7) / 8;
  INT best = last ? -1 : width;
  for (INT y = 0; y < pixels.Height(); ++y) {
    const BYTE* row = pixels.Row(y);
    if (last) {
      for (INT i = bytes - 1; i >= 0 && i * 8 + 7 > best; --i) {
        if (const BYTE black = BlackBits(row, i, width)) {
          best = std::max(best, i * 8 + 7 - std::countr_zero(black));
          break;
        }
      }
    } else {
      for (INT i = 0; i < bytes && i * 8 < best; ++i) {
        if (const BYTE black = BlackBits(row, i, width)) {
          best = std::min(best, i * 8 + std::countl_zero(black));
          break;
        }
      }
    }
  }
  return best == width ? -1 : best;
}

}  // namespace

Bitmap* BitmapHelper::CreateBitmap(INT width, INT height, Gdiplus::PixelFormat format, LPCWSTR) {
  Bitmap* bitmap = new Bitmap(width, height, format);
  if (bitmap != nullptr && bitmap->GetLastStatus() != Gdiplus::Ok) {
    DeleteBitmap(bitmap);
    return nullptr;
  }
  return bitmap;
}

void BitmapHelper::DeleteBitmap(Bitmap* bitmap) { delete bitmap; }

void BitmapHelper::Copy24BPPBufferToBitmap(const BYTE* buffer, INT width, INT height,
                                           Bitmap* bitmap) {
  if (buffer == nullptr || !HasSize(bitmap, width, height)) return;
  PlatformLendPixels(bitmap, buffer);
}

INT BitmapHelper::GetMonochromeImage1BPP(Bitmap* source, Bitmap* target) {
  const Dots dots(source);  // valid if the source was written as dots
  const Pixels from(dots.IsValid() ? nullptr : source, PixelFormat24bppRGB);
  const LockedRows& given = dots.IsValid() ? static_cast<const LockedRows&>(dots) : from;
  if (!given.IsValid() || !HasSize(target, given.Width(), given.Height()) ||
      target->GetPixelFormat() != PixelFormat1bppIndexed) {
    return 0;
  }
  const Pixels to(target, PixelFormat1bppIndexed, Gdiplus::ImageLockModeWrite);
  if (!to.IsValid()) return 0;
  const RasterKernels& kernels = BestKernels();
  const std::size_t rowBytes = (given.Width() + 7) / 8;
  for (INT y = 0; y < given.Height(); ++y) {
    if (dots.IsValid()) {
      std::memcpy(to.Row(y), dots.Row(y), rowBytes);
    } else {
      kernels.Pack(from.Row(y), from.Width(), to.Row(y));
    }
  }
  return 1;
}

INT BitmapHelper::GetFirstContentRow1BPP(Bitmap* bitmap) {
  const Pixels pixels(bitmap, PixelFormat1bppIndexed);
  for (INT y = 0; pixels.IsValid() && y < pixels.Height(); ++y) {
    if (HasContent(pixels, y)) return y;
  }
  return -1;
}

INT BitmapHelper::GetLastContentRow1BPP(Bitmap* bitmap) {
  const Pixels pixels(bitmap, PixelFormat1bppIndexed);
  for (INT y = pixels.Height() - 1; pixels.IsValid() && y >= 0; --y) {
    if (HasContent(pixels, y)) return y;
  }
  return -1;
}

INT BitmapHelper::GetFirstContentColumn1BPP(Bitmap* bitmap) { return ContentColumn(bitmap, false); }
INT BitmapHelper::GetLastContentColumn1BPP(Bitmap* bitmap) { return ContentColumn(bitmap, true); }

INT BitmapHelper::Are1BPPBitmapsEqual(Bitmap* first, Bitmap* second) {
  const Pixels a(first, PixelFormat1bppIndexed);
  const Pixels b(second, PixelFormat1bppIndexed);
  if (!a.IsValid() || !b.IsValid() || !a.SameSize(b)) return 0;
  const INT lastByte = (a.Width() - 1) / 8;
  for (INT y = 0; y < a.Height(); ++y) {
    if (std::memcmp(a.Row(y), b.Row(y), lastByte) != 0 ||
        BlackBits(a.Row(y), lastByte, a.Width()) != BlackBits(b.Row(y), lastByte, b.Width())) {
      return 0;
    }
  }
  return 1;
}
