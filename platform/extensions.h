// What the platform layer offers beyond the published interfaces, for the shared library, the
// driver host and tests: pages that are read, written and lent without ever standing in memory as
// pixels.
#pragma once

#include "platform/gdiplus.h"

// What a caller wants to know of pixels.
class PixelReduction {
 public:
  // Makes count pixels (blue, green, red) into as many bytes in each of the planes that are read.
  virtual void Reduce(const BYTE* pixels, INT count, BYTE* const* planes) = 0;

 protected:
  ~PixelReduction() = default;
};

// Rows of bytes, one a pixel.
struct BytePlane {
  BYTE* first;
  std::ptrdiff_t strideBytes;
};

// Reads rows of a 24-bit bitmap as what the reduction makes of them, in one plane or two with room
// for the bitmap's width in each row; the first row of each is the row top. The reduction sees each
// pixel of the rows at least once, in any order. Bound to the thread that the bitmap belongs to.
// InvalidParameter for another format, rows that are not all of the bitmap, or another number of
// planes; OutOfMemory.
PLATFORM_API Gdiplus::Status PlatformReadPlanes(Gdiplus::Bitmap* page, INT top, INT rows,
                                                PixelReduction& reduction, const BytePlane* planes,
                                                INT planeCount);

// Gives the rows of a 24-bit bitmap as 1-bit rows, 0 black. mode: ImageLockModeWrite, and all of
// them must be written; or ImageLockModeRead, which fails with InvalidParameter unless the bitmap
// was written so and is kept so. Nobody else touches the bitmap in between.
PLATFORM_API Gdiplus::Status PlatformLockDots(Gdiplus::Bitmap* bitmap, UINT mode,
                                              Gdiplus::BitmapData* dots);
PLATFORM_API Gdiplus::Status PlatformUnlockDots(Gdiplus::Bitmap* bitmap, Gdiplus::BitmapData* dots);

// Makes the rows of a buffer the pixels of a 24-bit bitmap: rows as many and as long as its own,
// padded to 4 bytes. They may be copied late: the buffer stays as it is until the bitmap is changed
// or disposed of.
PLATFORM_API Gdiplus::Status PlatformLendPixels(Gdiplus::Bitmap* bitmap, const BYTE* rows);
