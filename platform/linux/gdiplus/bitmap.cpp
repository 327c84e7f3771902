// The flat calls on bitmaps, and the extensions that lock dots and lend pixels.

#include <new>

#include "platform/extensions.h"
#include "platform/linux/gdiplus/image.h"

namespace Gdiplus {

namespace {

constexpr std::int64_t kMostBytes = 0x7FFFFFFF;

GpStatus Give(GpImage& image, const PixelRows& rows, PixelFormat format, BitmapData* data) {
  *data = {static_cast<UINT>(image.width),
           static_cast<UINT>(image.height),
           static_cast<INT>(rows.strideBytes),
           format,
           rows.first,
           0};
  return Ok;
}

bool IsWhole(const GpImage& image, const GpRect& rect) {
  return rect.X == 0 && rect.Y == 0 && rect.Width == image.width && rect.Height == image.height;
}

}  // namespace

namespace DllExports {

GpStatus GdipCreateBitmapFromScan0(INT width, INT height, INT, PixelFormat format, BYTE* scan0,
                                   GpBitmap** bitmap) {
  if (bitmap == nullptr) return InvalidParameter;
  *bitmap = nullptr;
  const bool known = format == PixelFormat1bppIndexed || format == PixelFormat24bppRGB;
  const GpStatus status =
      Check("GdipCreateBitmapFromScan0", width > 0 && height > 0 && known && scan0 == nullptr);
  if (status != Ok) return status;
  const std::int64_t strideBytes = StrideBytes(width, format == PixelFormat24bppRGB ? 24 : 1);
  if (strideBytes > kMostBytes / height) return OutOfMemory;
  auto* image = new (std::nothrow) GpImage(width, height, format, static_cast<INT>(strideBytes));
  if (image == nullptr || !image->HasMemory()) {
    delete image;
    return OutOfMemory;
  }
  *bitmap = image;
  return Ok;
}

GpStatus GdipDisposeImage(GpImage* image) {
  if (image == nullptr) return InvalidParameter;
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
  if (bitmap == nullptr || lockedBitmapData == nullptr || format != bitmap->format ||
      (rect != nullptr && !IsWhole(*bitmap, *rect))) {
    return InvalidParameter;
  }
  if (PlatformShouldFail("GdipBitmapLockBits")) return OutOfMemory;
  if (flags == ImageLockModeRead) {
    bitmap->MakePixels();
  } else if (flags == ImageLockModeWrite) {
    bitmap->DropPixels();
  } else {
    bitmap->ChangePixels();
  }
  return Give(*bitmap, bitmap->Rows(), format, lockedBitmapData);
}

GpStatus GdipBitmapUnlockBits(GpBitmap* bitmap, BitmapData* lockedBitmapData) {
  return bitmap == nullptr || lockedBitmapData == nullptr ? InvalidParameter : Ok;
}

GpStatus GdipImageRotateFlip(GpImage* image, RotateFlipType type) {
  const GpStatus status = Check("GdipImageRotateFlip", image != nullptr);
  if (status != Ok || type == RotateNoneFlipNone) return status;
  if (image->IsOneBit() || (type != Rotate90FlipNone && type != Rotate270FlipNone)) {
    return NotImplemented;
  }
  return image->Turn(type == Rotate90FlipNone) ? Ok : OutOfMemory;
}

}  // namespace DllExports
}  // namespace Gdiplus

using Gdiplus::BitmapData;
using Gdiplus::GpImage;

Gdiplus::Status PlatformLockDots(Gdiplus::Bitmap* bitmap, UINT mode, BitmapData* dots) {
  GpImage* image = NativeImage(bitmap);
  const bool reads = mode == Gdiplus::ImageLockModeRead;
  if (image == nullptr || dots == nullptr || image->IsOneBit() ||
      (reads ? image->GetContent() != GpImage::Content::Bits
             : mode != Gdiplus::ImageLockModeWrite)) {
    return Gdiplus::InvalidParameter;
  }
  if (PlatformShouldFail("PlatformLockDots")) return Gdiplus::OutOfMemory;
  if (!reads) image->DropPixels(GpImage::Content::Bits);
  return Gdiplus::Give(*image, image->BitRows(), PixelFormat1bppIndexed, dots);
}

Gdiplus::Status PlatformUnlockDots(Gdiplus::Bitmap* bitmap, BitmapData* dots) {
  return bitmap == nullptr || dots == nullptr ? Gdiplus::InvalidParameter : Gdiplus::Ok;
}

Gdiplus::Status PlatformLendPixels(Gdiplus::Bitmap* bitmap, const BYTE* rows) {
  GpImage* image = NativeImage(bitmap);
  if (image == nullptr || rows == nullptr || image->IsOneBit()) return Gdiplus::InvalidParameter;
  image->Borrow(const_cast<BYTE*>(rows));
  return Gdiplus::Ok;
}
