// Pages through the published calls: every row is a row of pixels in memory.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/extensions.h"

using Gdiplus::Bitmap;
using Gdiplus::BitmapData;
using Gdiplus::Rect;
using Gdiplus::Status;

namespace {

INT WidthOf(Bitmap* bitmap) { return static_cast<INT>(bitmap->GetWidth()); }
INT HeightOf(Bitmap* bitmap) { return static_cast<INT>(bitmap->GetHeight()); }

// Calls work with each of the rows, numbered from 0, while they are locked.
template <typename Work>
Status ForEachRow(Bitmap* bitmap, INT top, INT rows, Gdiplus::ImageLockMode mode,
                  const Work& work) {
  if (bitmap == nullptr || bitmap->GetPixelFormat() != PixelFormat24bppRGB) {
    return Gdiplus::InvalidParameter;
  }
  const Rect area(0, top, WidthOf(bitmap), rows);
  BitmapData data = {};
  const Status status = bitmap->LockBits(&area, mode, PixelFormat24bppRGB, &data);
  if (status != Gdiplus::Ok) return status;
  for (INT y = 0; y < rows; ++y) {
    work(static_cast<BYTE*>(data.Scan0) + static_cast<std::ptrdiff_t>(y) * data.Stride, y);
  }
  return bitmap->UnlockBits(&data);
}

}  // namespace

Status PlatformReadPlanes(Bitmap* page, INT top, INT rows, PixelReduction& reduction,
                          const BytePlane* planes, INT planeCount) {
  if (planeCount < 1 || planeCount > 2) return Gdiplus::InvalidParameter;
  const INT width = page == nullptr ? 0 : WidthOf(page);
  return ForEachRow(page, top, rows, Gdiplus::ImageLockModeRead, [&](const BYTE* row, INT y) {
    BYTE* to[2] = {};
    for (INT i = 0; i < planeCount; ++i) to[i] = planes[i].first + y * planes[i].strideBytes;
    reduction.Reduce(row, width, to);
  });
}

Status PlatformLockDots(Bitmap* bitmap, UINT mode, BitmapData* dots) {
  // No bitmap is kept as dots here, so none can be read as such.
  if (bitmap == nullptr || dots == nullptr || mode != Gdiplus::ImageLockModeWrite ||
      bitmap->GetPixelFormat() != PixelFormat24bppRGB) {
    return Gdiplus::InvalidParameter;
  }
  const INT strideBytes = (WidthOf(bitmap) + 31) / 32 * 4;
  auto* bits = new (std::nothrow) BYTE[std::size_t(strideBytes) * HeightOf(bitmap)];
  if (bits == nullptr) return Gdiplus::OutOfMemory;
  *dots = {bitmap->GetWidth(), bitmap->GetHeight(), strideBytes, PixelFormat1bppIndexed, bits, 0};
  return Gdiplus::Ok;
}

Status PlatformUnlockDots(Bitmap* bitmap, BitmapData* dots) {
  if (bitmap == nullptr || dots == nullptr) return Gdiplus::InvalidParameter;
  const std::unique_ptr<BYTE[]> bits(static_cast<BYTE*>(dots->Scan0));
  const auto width = static_cast<INT>(dots->Width);
  return ForEachRow(bitmap, 0, static_cast<INT>(dots->Height), Gdiplus::ImageLockModeWrite,
                    [&](BYTE* row, INT y) {
                      const BYTE* from = bits.get() + std::ptrdiff_t{y} * dots->Stride;
                      for (INT x = 0; x < width; ++x) {
                        const bool white = (from[x / 8] >> (7 - x % 8) & 1) != 0;
                        std::memset(row + 3 * x, white ? 0xFF : 0, 3);
                      }
                    });
}

Status PlatformLendPixels(Bitmap* bitmap, const BYTE* rows) {
  if (bitmap == nullptr || rows == nullptr) return Gdiplus::InvalidParameter;
  const std::size_t bytes = std::size_t{3} * bitmap->GetWidth();
  return ForEachRow(
      bitmap, 0, HeightOf(bitmap), Gdiplus::ImageLockModeWrite,
      [&](BYTE* row, INT y) { std::memcpy(row, rows + (bytes + 3) / 4 * 4 * y, bytes); });
}
