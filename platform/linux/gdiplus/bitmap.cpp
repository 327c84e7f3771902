// The calls on bitmaps and their pixels.

#include <new>

#include "platform/fault.h"
#include "platform/linux/gdiplus/image.h"

namespace Gdiplus::DllExports {

namespace {

constexpr std::int64_t kMostBytes = 0x7FFFFFFF;

GpStatus LockUserBuffer(const GpImage& image, const GpRect* rect, PixelFormat format,
                        BitmapData* data) {
  if (rect != nullptr || format != image.format || data->Scan0 == nullptr ||
      data->Stride != image.strideBytes) {
    return InvalidParameter;
  }
  data->Reserved = ImageLockModeUserInputBuf;  // needs no memory and cannot fail
  return Ok;
}

// Makes the image ready for the lock.
void Prepare(GpImage& image, UINT flags, bool asBits) {
  if (asBits && flags == ImageLockModeRead) return;  // the bits are there
  if (flags == ImageLockModeRead) {
    image.MakePixels();
  } else if (flags == ImageLockModeWrite) {
    image.DropPixels(asBits ? GpImage::Content::Bits : GpImage::Content::Pixels);
  } else {
    image.ChangePixels();
  }
}

}  // namespace

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
  if (bitmap == nullptr || lockedBitmapData == nullptr) return InvalidParameter;
  if (flags == (ImageLockModeWrite | ImageLockModeUserInputBuf)) {
    return LockUserBuffer(*bitmap, rect, format, lockedBitmapData);
  }
  const bool reads = flags != ImageLockModeWrite;
  const bool asBits = format == PixelFormat1bppIndexed && !bitmap->IsOneBit();
  const bool possible = asBits ? !reads || (flags == ImageLockModeRead &&
                                            bitmap->GetContent() == GpImage::Content::Bits)
                               : format == bitmap->format;
  if (!possible || rect != nullptr) return InvalidParameter;
  if (PlatformShouldFail("GdipBitmapLockBits")) return OutOfMemory;
  Prepare(*bitmap, flags, asBits);
  const PixelRows rows = asBits ? bitmap->BitRows() : bitmap->Rows();
  *lockedBitmapData = {static_cast<UINT>(bitmap->width),
                       static_cast<UINT>(bitmap->height),
                       static_cast<INT>(rows.strideBytes),
                       format,
                       rows.first,
                       0};
  return Ok;
}

GpStatus GdipBitmapUnlockBits(GpBitmap* bitmap, BitmapData* lockedBitmapData) {
  if (bitmap == nullptr || lockedBitmapData == nullptr) return InvalidParameter;
  if (lockedBitmapData->Reserved == ImageLockModeUserInputBuf) {
    bitmap->Borrow(static_cast<BYTE*>(lockedBitmapData->Scan0));
  }
  return Ok;
}

}  // namespace Gdiplus::DllExports
