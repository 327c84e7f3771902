// The part of the GDI+ flat interface that the plug-in calls, and the two wrapper classes over it.
// Bitmaps are 24-bit (bytes blue, green, red) or 1-bit indexed (0 black, 1 white, most significant
// bit left), rows from the top, padded to 4 bytes. A new bitmap is all zero: black.
#pragma once

#include "platform/com.h"

namespace Gdiplus {

using REAL = float;
using ARGB = DWORD;
using PixelFormat = INT;

inline constexpr PixelFormat PixelFormat1bppIndexed = 196865;
inline constexpr PixelFormat PixelFormat24bppRGB = 137224;

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
enum MatrixOrder : INT { MatrixOrderPrepend = 0, MatrixOrderAppend = 1 };
using GpMatrixOrder = MatrixOrder;
enum Unit : INT { UnitWorld = 0, UnitDisplay = 1, UnitPixel = 2 };
using GpUnit = Unit;
enum ImageLockMode : UINT {
  ImageLockModeRead = 1,
  ImageLockModeWrite = 2,
  ImageLockModeUserInputBuf = 4,
};

class GpImage;  // every image here is a bitmap
using GpBitmap = GpImage;
struct GpGraphics;
struct GpImageAttributes;
struct EncoderParameters;
using DrawImageAbort = BOOL (*)(void*);

struct Rect {
  INT X;
  INT Y;
  INT Width;
  INT Height;
};
using GpRect = Rect;

struct BitmapData {
  UINT Width;
  UINT Height;
  INT Stride;  // bytes from one row to the next
  PixelFormat PixelFormat_;
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
  DWORD GdiplusVersion;
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

// Gives the bitmap's own pixels, in the bitmap's own format only. rect must be null (the whole
// image). Locked for writing alone, what the pixels were is lost: all of them must be written. A
// 24-bit bitmap can be written as 1-bit rows, for writing alone; it is then black and white. Until
// its pixels are asked for it is kept so, and can be read as 1-bit rows too. Write and
// UserInputBuf: the whole image is in the caller's buffer, Scan0, whose Stride is that of rows
// padded to 4 bytes. It is copied when the bitmap is changed next; until the bitmap is changed or
// disposed of, the buffer stays as it is.
PLATFORM_API GpStatus WINAPI GdipBitmapLockBits(GpBitmap* bitmap, const GpRect* rect, UINT flags,
                                                PixelFormat format, BitmapData* lockedBitmapData);
PLATFORM_API GpStatus WINAPI GdipBitmapUnlockBits(GpBitmap* bitmap, BitmapData* lockedBitmapData);

// A drawing context on a bitmap, which must outlive it. Drawings may be made late: a bitmap and
// those it was drawn from belong to one thread.
PLATFORM_API GpStatus WINAPI GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics);
PLATFORM_API GpStatus WINAPI GdipDeleteGraphics(GpGraphics* graphics);
PLATFORM_API GpStatus WINAPI GdipGraphicsClear(GpGraphics* graphics, ARGB color);

// World transform: quarter turns (90.0, 180.0, 270.0 and their negatives) and whole-pixel
// translations; anything else is NotImplemented. Positive angles turn clockwise on the page.
PLATFORM_API GpStatus WINAPI GdipRotateWorldTransform(GpGraphics* graphics, REAL angle,
                                                      GpMatrixOrder order);
PLATFORM_API GpStatus WINAPI GdipTranslateWorldTransform(GpGraphics* graphics, REAL dx, REAL dy,
                                                         GpMatrixOrder order);

// Draws pixel for pixel (no scaling, no interpolation) through the world transform; what falls
// outside the target is dropped. Between the formats a 1-bit target takes pixels of luminance 128
// and above as white. A pixel (x, y) covers the square from (x, y) to (x + 1, y + 1): a quarter
// turn maps squares.
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
// for the bitmap's width in each row; the first row of each is the row top. A page that was drawn
// turned is read so without ever being turned as pixels. The reduction sees each pixel of the rows
// at least once, in any order. Bound to the thread that the bitmap belongs to. InvalidParameter for
// another format, rows that are not all of the bitmap, or another number of planes; OutOfMemory.
PLATFORM_API GpStatus WINAPI PlatformReadPlanes(GpBitmap* bitmap, INT top, INT rows,
                                                PixelReduction& reduction, const BytePlane* planes,
                                                INT planeCount);

// What both wrappers share: memory from GDI+ (operator new gives null, not an exception).
class GdiplusBase {
 public:
  static void* operator new(SIZE_T size) noexcept { return DllExports::GdipAlloc(size); }
  static void operator delete(void* p) { DllExports::GdipFree(p); }
};

// A bitmap and the status of the last call on it.
class Bitmap : public GdiplusBase {
 public:
  Bitmap(INT width, INT height, PixelFormat format) {
    lastResult =
        DllExports::GdipCreateBitmapFromScan0(width, height, 0, format, nullptr, &nativeImage);
  }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  ~Bitmap() { DllExports::GdipDisposeImage(nativeImage); }

  Status GetLastStatus() const { return lastResult; }
  UINT GetWidth() const {
    UINT width = 0;
    DllExports::GdipGetImageWidth(nativeImage, &width);
    return width;
  }
  UINT GetHeight() const {
    UINT height = 0;
    DllExports::GdipGetImageHeight(nativeImage, &height);
    return height;
  }
  PixelFormat GetPixelFormat() const {
    PixelFormat format = 0;
    DllExports::GdipGetImagePixelFormat(nativeImage, &format);
    return format;
  }
  Status Save(IStream* stream, const CLSID* clsidEncoder,
              const EncoderParameters* params = nullptr) {
    return lastResult =
               DllExports::GdipSaveImageToStream(nativeImage, stream, clsidEncoder, params);
  }

  GpImage* nativeImage = nullptr;

 private:
  Status lastResult;
};

// A drawing context on a bitmap. Statuses are recorded and left to the caller.
class Graphics : public GdiplusBase {
 public:
  // Null when the object cannot be allocated.
  static Graphics* FromImage(Bitmap* image) { return new Graphics(image); }
  explicit Graphics(Bitmap* image) {
    lastResult = DllExports::GdipGetImageGraphicsContext(image->nativeImage, &nativeGraphics);
  }
  Graphics(const Graphics&) = delete;
  Graphics& operator=(const Graphics&) = delete;
  ~Graphics() { DllExports::GdipDeleteGraphics(nativeGraphics); }

  Status GetLastStatus() const { return lastResult; }
  void Clear(ARGB color) { lastResult = DllExports::GdipGraphicsClear(nativeGraphics, color); }
  void RotateTransform(REAL angle, MatrixOrder order = MatrixOrderPrepend) {
    lastResult = DllExports::GdipRotateWorldTransform(nativeGraphics, angle, order);
  }
  void TranslateTransform(REAL dx, REAL dy, MatrixOrder order = MatrixOrderPrepend) {
    lastResult = DllExports::GdipTranslateWorldTransform(nativeGraphics, dx, dy, order);
  }
  void DrawImage(Bitmap* image, INT x, INT y) {
    lastResult = DllExports::GdipDrawImageI(nativeGraphics, image->nativeImage, x, y);
  }
  // Copies the source rectangle to (x, y), pixel for pixel.
  void DrawImage(Bitmap* image, INT x, INT y, const Rect& source) {
    lastResult = DllExports::GdipDrawImageRectRectI(
        nativeGraphics, image->nativeImage, x, y, source.Width, source.Height, source.X, source.Y,
        source.Width, source.Height, UnitPixel, nullptr, nullptr, nullptr);
  }

 private:
  GpGraphics* nativeGraphics = nullptr;
  Status lastResult;
};

}  // namespace Gdiplus
