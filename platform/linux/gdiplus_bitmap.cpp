// Bitmaps: their memory and their pixels.

#include <cstring>
#include <new>

#include "platform/fault.h"
#include "platform/linux/block.h"
#include "platform/linux/gdiplus_image.h"

namespace Gdiplus {

namespace {

constexpr std::int64_t kMostBytes = 0x7FFFFFFF;

void FillRow(const GpImage& image, BYTE* row) {
  const auto red = static_cast<BYTE>(image.color >> 16);
  const auto green = static_cast<BYTE>(image.color >> 8);
  const auto blue = static_cast<BYTE>(image.color);
  if (image.IsOneBit() || (red == green && green == blue)) {
    const bool light = IsLight(red, green, blue);
    std::memset(row, image.IsOneBit() ? (light ? 0xFF : 0) : blue, image.strideBytes);
    return;
  }
  for (INT x = 0; x < image.width; ++x, row += 3) {
    row[0] = blue;
    row[1] = green;
    row[2] = red;
  }
}

// Spreads the bits over the block that they stand at the beginning of: from its end, so that no bit
// is overwritten before it is read.
void SpreadBits(const GpImage& image) {
  for (INT y = image.height - 1; y >= 0; --y) {
    const BYTE* bits = image.BitRow(y);
    BYTE* row = image.Row(y);
    for (INT x = image.width - 1; x >= 0; --x) {
      const BYTE level = (bits[x >> 3] >> (7 - (x & 7)) & 1) != 0 ? 0xFF : 0;
      std::memset(row + 3 * x, level, 3);
    }
  }
}

}  // namespace

void GpImage::MakePixels() {
  if (content == Content::Color) {
    for (INT y = 0; y < height; ++y) FillRow(*this, Row(y));
  } else if (content == Content::Bits) {
    SpreadBits(*this);
  }
  content = Content::Pixels;
}

namespace DllExports {

GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT, PixelFormat format, BYTE* scan0,
                                   GpBitmap** bitmap) {
  if (bitmap == nullptr) return InvalidParameter;
  *bitmap = nullptr;
  const bool known = format == PixelFormat1bppIndexed || format == PixelFormat24bppRGB;
  const GpStatus status =
      Check("GdipCreateBitmapFromScan0", width > 0 && height > 0 && known && scan0 == nullptr);
  if (status != Ok) return status;
  const std::int64_t bits = std::int64_t{width} * (format == PixelFormat24bppRGB ? 24 : 1);
  const std::int64_t strideBytes = (bits + 31) / 32 * 4;
  if (strideBytes > kMostBytes / height) return OutOfMemory;
  // A page's dots are kept until the next page is compared with them: with two inks that makes four
  // bitmaps, and a block to encode one from.
  const int spares = format == PixelFormat1bppIndexed ? 4 : 0;
  auto* pixels = static_cast<BYTE*>(AllocateBlock(strideBytes * height, false, spares));
  auto* image =
      new (std::nothrow) GpImage{width, height, format, static_cast<INT>(strideBytes), pixels};
  if (pixels == nullptr || image == nullptr) {
    FreeBlock(pixels);
    delete image;
    return OutOfMemory;
  }
  *bitmap = image;
  return Ok;
}

GpStatus GdipDisposeImage(GpImage* image) {
  if (image == nullptr) return InvalidParameter;
  FreeBlock(image->pixels);
  delete image;
  return Ok;
}

GpStatus GdipGetImageWidth(GpImage* image, UINT* width) {
  if (image == nullptr || width == nullptr) return InvalidParameter;
  *width = static_cast<UINT>(image->width);
  return Ok;
}

GpStatus GdipGetImageHeight(GpImage* image, UINT* height) {
  if (image == nullptr || height == nullptr) return InvalidParameter;
  *height = static_cast<UINT>(image->height);
  return Ok;
}

GpStatus GdipGetImagePixelFormat(GpImage* image, PixelFormat* format) {
  if (image == nullptr || format == nullptr) return InvalidParameter;
  *format = image->format;
  return Ok;
}

GpStatus GdipBitmapLockBits(GpBitmap* bitmap, const GpRect* rect, UINT flags, PixelFormat format,
                            BitmapData* lockedBitmapData) {
  if (bitmap == nullptr || rect != nullptr || lockedBitmapData == nullptr) return InvalidParameter;
  const bool asBits = format == PixelFormat1bppIndexed && !bitmap->IsOneBit();
  const bool reads = flags != ImageLockModeWrite;
  const bool possible =
      asBits ? !reads || (flags == ImageLockModeRead && bitmap->content == GpImage::Content::Bits)
             : format == bitmap->format;
  if (!possible) return InvalidParameter;
  if (PlatformShouldFail("GdipBitmapLockBits")) return OutOfMemory;
  if (asBits) {
    bitmap->content = GpImage::Content::Bits;
  } else if (reads) {
    bitmap->MakePixels();
  } else {
    bitmap->DropPixels();
  }
  *lockedBitmapData = {static_cast<UINT>(bitmap->width),
                       static_cast<UINT>(bitmap->height),
                       asBits ? bitmap->BitStrideBytes() : bitmap->strideBytes,
                       format,
                       bitmap->pixels,
                       0};
  return Ok;
}

GpStatus GdipBitmapUnlockBits(GpBitmap* bitmap, BitmapData* lockedBitmapData) {
  return bitmap == nullptr || lockedBitmapData == nullptr ? InvalidParameter : Ok;
}

}  // namespace DllExports
}  // namespace Gdiplus
