// The part of the GDI+ flat interface that the plug-in calls, and the two wrapper classes over it.
// Bitmaps are 24-bit (bytes blue, green, red) or 1-bit indexed (0 black, 1 white, most significant
// bit left), rows from the top, padded to 4 bytes. A new bitmap is all zero: black.
#pragma once

#include "platform/com.h"

inline constexpr INT PixelFormat1bppIndexed = 196865;
inline constexpr INT PixelFormat24bppRGB = 137224;

namespace Gdiplus {

using ARGB = DWORD;
using PixelFormat = INT;

enum Status : INT {
  Ok = 0,
  GenericError = 1,
  InvalidParameter = 2,
  OutOfMemory = 3,
  InsufficientBuffer = 5,
  NotImplemented = 6,
  Win32Error = 7,
  GdiplusNotInitialized = 18,
};
using GpStatus = Status;
enum Unit : INT { UnitWorld = 0, UnitDisplay = 1, UnitPixel = 2 };
using GpUnit = Unit;
enum ImageLockMode : UINT {
  ImageLockModeRead = 1,
  ImageLockModeWrite = 2,
};
enum RotateFlipType : INT {
  RotateNoneFlipNone = 0,
  Rotate90FlipNone = 1,  // clockwise
  Rotate270FlipNone = 3,
};

class GpImage;  // every image here is a bitmap
using GpBitmap = GpImage;
struct GpGraphics;
struct GpImageAttributes;
struct EncoderParameters;
using DrawImageAbort = BOOL (*)(void*);

struct Rect {
  Rect() = default;
  Rect(INT x, INT y, INT width, INT height) : X(x), Y(y), Width(width), Height(height) {}

  INT X = 0;
  INT Y = 0;
  INT Width = 0;
  INT Height = 0;
};
using GpRect = Rect;

struct BitmapData {
  UINT Width;
  UINT Height;
  INT Stride;  // bytes from one row to the next
  INT PixelFormat;
  void* Scan0;
  ULONG_PTR Reserved;
};
static_assert(sizeof(BitmapData) == 32);

struct ImageCodecInfo {
  CLSID Clsid;
  GUID FormatID;
  const WCHAR* CodecName;
  const WCHAR* DllName;
  const WCHAR* FormatDescription;
  const WCHAR* FilenameExtension;
  const WCHAR* MimeType;
  DWORD Flags;
  DWORD Version;
  DWORD SigCount;
  DWORD SigSize;
  const BYTE* SigPattern;
  const BYTE* SigMask;
};
static_assert(sizeof(ImageCodecInfo) == 104);

using DebugEventProc = void (*)(INT level, char* message);
struct GdiplusStartupInput {
  GdiplusStartupInput(DebugEventProc debugEventCallback = nullptr,
                      BOOL suppressBackgroundThread = FALSE, BOOL suppressExternalCodecs = FALSE)
      : DebugEventCallback(debugEventCallback),
        SuppressBackgroundThread(suppressBackgroundThread),
        SuppressExternalCodecs(suppressExternalCodecs) {}

  DWORD GdiplusVersion = 1;
  DebugEventProc DebugEventCallback;
  BOOL SuppressBackgroundThread;
  BOOL SuppressExternalCodecs;
};
static_assert(sizeof(GdiplusStartupInput) == 24);
struct GdiplusStartupOutput;

// Start-up is counted; *token is what shut-down takes. Calls other than these two answer
// GdiplusNotInitialized (or null) while GDI+ is not running; bitmaps made before stay readable.
PLATFORM_API Status WINAPI GdiplusStartup(ULONG_PTR* token, const GdiplusStartupInput* input,
                                          GdiplusStartupOutput* output);
PLATFORM_API void WINAPI GdiplusShutdown(ULONG_PTR token);

namespace DllExports {

// Memory of the wrapper objects. Null when there is none. Not bound to start-up.
PLATFORM_API void* WINAPI GdipAlloc(SIZE_T size);
PLATFORM_API void WINAPI GdipFree(void* ptr);

// scan0 must be null (the bitmap owns its pixels). InvalidParameter for a width or height below 1
// or an unknown format, OutOfMemory when rows x stride do not fit; *bitmap is then null.
PLATFORM_API GpStatus WINAPI GdipCreateBitmapFromScan0(INT width, INT height, INT stride,
                                                       PixelFormat format, BYTE* scan0,
                                                       GpBitmap** bitmap);
PLATFORM_API GpStatus WINAPI GdipDisposeImage(GpImage* image);
PLATFORM_API GpStatus WINAPI GdipGetImageWidth(GpImage* image, UINT* width);
PLATFORM_API GpStatus WINAPI GdipGetImageHeight(GpImage* image, UINT* height);
PLATFORM_API GpStatus WINAPI GdipGetImagePixelFormat(GpImage* image, PixelFormat* format);

// Gives the bitmap's own pixels, in the bitmap's own format only. rect must be null or the whole
// image. Locked for writing alone, what the pixels were is lost: all of them must be written.
PLATFORM_API GpStatus WINAPI GdipBitmapLockBits(GpBitmap* bitmap, const GpRect* rect, UINT flags,
                                                PixelFormat format, BitmapData* lockedBitmapData);
PLATFORM_API GpStatus WINAPI GdipBitmapUnlockBits(GpBitmap* bitmap, BitmapData* lockedBitmapData);

// Turns the bitmap itself, whose width and height change places. Quarter turns of 24-bit bitmaps
// only; anything else is NotImplemented.
PLATFORM_API GpStatus WINAPI GdipImageRotateFlip(GpImage* image, RotateFlipType type);

// A drawing context on a 24-bit bitmap, which must outlive it. Indexed bitmaps have none:
// OutOfMemory, as published. Drawings may be made late: a bitmap and those it was drawn from belong
// to one thread.
PLATFORM_API GpStatus WINAPI GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics);
PLATFORM_API GpStatus WINAPI GdipDeleteGraphics(GpGraphics* graphics);
PLATFORM_API GpStatus WINAPI GdipGraphicsClear(GpGraphics* graphics, ARGB color);

// Draws pixel for pixel (no scaling, no interpolation); what falls outside the target is dropped.
PLATFORM_API GpStatus WINAPI GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y);
// The source rectangle at (dstx, dsty); the two sizes must agree. srcUnit: UnitPixel.
PLATFORM_API GpStatus WINAPI GdipDrawImageRectRectI(GpGraphics* graphics, GpImage* image, INT dstx,
                                                    INT dsty, INT dstwidth, INT dstheight, INT srcx,
                                                    INT srcy, INT srcwidth, INT srcheight,
                                                    GpUnit srcUnit,
                                                    const GpImageAttributes* imageAttributes,
                                                    DrawImageAbort callback, void* callbackData);

// The installed encoders: their number and the bytes that the list takes, then the list.
PLATFORM_API GpStatus WINAPI GdipGetImageEncodersSize(UINT* numEncoders, UINT* size);
PLATFORM_API GpStatus WINAPI GdipGetImageEncoders(UINT numEncoders, UINT size,
                                                  ImageCodecInfo* encoders);

// Writes the image as a PNG file: 1-bit greyscale or 24-bit true colour.
PLATFORM_API GpStatus WINAPI GdipSaveImageToStream(GpImage* image, IStream* stream,
                                                   const CLSID* clsidEncoder,
                                                   const EncoderParameters* encoderParams);

}  // namespace DllExports

// What both wrappers share: memory from GDI+ (operator new gives null, not an exception).
class GdiplusBase {
 public:
  static void* operator new(SIZE_T size) noexcept { return DllExports::GdipAlloc(size); }
  static void operator delete(void* p) { DllExports::GdipFree(p); }
};

// An image and the first failure since it was last asked for.
class Image : public GdiplusBase {
 public:
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { DllExports::GdipDisposeImage(nativeImage); }

  Status GetLastStatus() const {
    const Status status = lastStatus;
    lastStatus = Ok;
    return status;
  }
  UINT GetWidth() {
    UINT width = 0;
    Keep(DllExports::GdipGetImageWidth(nativeImage, &width));
    return width;
  }
  UINT GetHeight() {
    UINT height = 0;
    Keep(DllExports::GdipGetImageHeight(nativeImage, &height));
    return height;
  }
  PixelFormat GetPixelFormat() {
    PixelFormat format = 0;
    Keep(DllExports::GdipGetImagePixelFormat(nativeImage, &format));
    return format;
  }
  Status RotateFlip(RotateFlipType type) {
    return Keep(DllExports::GdipImageRotateFlip(nativeImage, type));
  }
  Status Save(IStream* stream, const CLSID* clsidEncoder, const EncoderParameters* params) {
    return Keep(DllExports::GdipSaveImageToStream(nativeImage, stream, clsidEncoder, params));
  }

 protected:
  Image() = default;
  Status Keep(Status status) const {
    if (status != Ok) lastStatus = status;
    return status;
  }

  GpImage* nativeImage = nullptr;

 private:
  friend class Graphics;
  friend GpImage* NativeImage(const Image* image);  // the platform's own
  mutable Status lastStatus = Ok;
};

class Bitmap : public Image {
 public:
  Bitmap(INT width, INT height, PixelFormat format) {
    Keep(DllExports::GdipCreateBitmapFromScan0(width, height, 0, format, nullptr, &nativeImage));
  }

  Status LockBits(const Rect* rect, UINT flags, PixelFormat format, BitmapData* lockedBitmapData) {
    return Keep(DllExports::GdipBitmapLockBits(nativeImage, rect, flags, format, lockedBitmapData));
  }
  Status UnlockBits(BitmapData* lockedBitmapData) {
    return Keep(DllExports::GdipBitmapUnlockBits(nativeImage, lockedBitmapData));
  }
};

// A drawing context on a bitmap. Statuses are recorded and left to the caller.
class Graphics : public GdiplusBase {
 public:
  // Null when the object cannot be allocated.
  static Graphics* FromImage(Image* image) { return new Graphics(image); }
  explicit Graphics(Image* image) {
    Keep(DllExports::GdipGetImageGraphicsContext(image->nativeImage, &nativeGraphics));
  }
  Graphics(const Graphics&) = delete;
  Graphics& operator=(const Graphics&) = delete;
  ~Graphics() { DllExports::GdipDeleteGraphics(nativeGraphics); }

  Status GetLastStatus() const {
    const Status status = lastStatus;
    lastStatus = Ok;
    return status;
  }
  Status Clear(ARGB color) { return Keep(DllExports::GdipGraphicsClear(nativeGraphics, color)); }
  Status DrawImage(Image* image, INT x, INT y) {
    return Keep(DllExports::GdipDrawImageI(nativeGraphics, image->nativeImage, x, y));
  }
  // Copies the source rectangle, pixel for pixel. srcUnit: UnitPixel.
  Status DrawImage(Image* image, const Rect& destRect, INT srcx, INT srcy, INT srcwidth,
                   INT srcheight, Unit srcUnit) {
    return Keep(DllExports::GdipDrawImageRectRectI(
        nativeGraphics, image->nativeImage, destRect.X, destRect.Y, destRect.Width, destRect.Height,
        srcx, srcy, srcwidth, srcheight, srcUnit, nullptr, nullptr, nullptr));
  }

 private:
  Status Keep(Status status) {
    if (status != Ok) lastStatus = status;
    return status;
  }

  GpGraphics* nativeGraphics = nullptr;
  mutable Status lastStatus = Ok;
};

}  // namespace Gdiplus
