// The flat GDI+ calls other than those on bitmaps.

#include <malloc.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "platform/extensions.h"
#include "platform/gdiplus.h"
#include "platform/linux/gdiplus/image.h"

namespace Gdiplus {

namespace {

constexpr ULONG_PTR kToken = 0x6D1;

constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr GUID kPngFormat = {
    0xB96B3CAF, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr BYTE kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr BYTE kPngMask[] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr ImageCodecInfo kEncoders[] = {{kPngEncoder, kPngFormat, WTEXT("Built-in PNG Codec"),
                                         nullptr, WTEXT("PNG"), WTEXT("*.PNG"), WTEXT("image/png"),
                                         0x10007,  // encoder, decoder, bitmaps, built in
                                         1, 1, sizeof kPngSignature, kPngSignature, kPngMask}};

std::atomic<LONG> startCount{0};

// Whether malloc keeps freed memory for the next page. Fresh memory from the kernel is slow. mmap
// is off because malloc never keeps mapped blocks.
void KeepFreedMemory(bool keep) {
  constexpr int kDefaultBytes = 128 << 10;
  constexpr int kMostKept = 160 << 20;  // three pages of 4 x 12 inches at 600 dpi
  mallopt(M_MMAP_MAX, keep ? 0 : 65536);
  mallopt(M_TRIM_THRESHOLD, keep ? kMostKept : kDefaultBytes);
  if (!keep) malloc_trim(0);
}

// Draws the source rectangle with its corner at (x, y).
void DrawPart(const GpGraphics& graphics, GpImage& source, INT x, INT y, const Rect& part) {
  const Transform place = {1, 0, 0, 1, std::int64_t{x} - part.X, std::int64_t{y} - part.Y};
  const Area asked = {part.X, part.Y, std::int64_t{part.X} + part.Width,
                      std::int64_t{part.Y} + part.Height};
  const Area visible =
      Intersect(Intersect(asked, source.Bounds()), place.Inverse().Of(graphics.target->Bounds()));
  if (!visible.IsEmpty()) graphics.target->Draw({&source, visible, place});
}

}  // namespace

GpStatus Check(const char* call, bool argumentsValid) {
  if (startCount.load(std::memory_order_relaxed) <= 0) return GdiplusNotInitialized;
  if (!argumentsValid) return InvalidParameter;
  return PlatformShouldFail(call) ? OutOfMemory : Ok;
}

Status GdiplusStartup(ULONG_PTR* token, const GdiplusStartupInput* input, GdiplusStartupOutput*) {
  if (token == nullptr || input == nullptr || input->GdiplusVersion != 1) return InvalidParameter;
  if (PlatformShouldFail("GdiplusStartup")) return OutOfMemory;
  if (startCount++ == 0) KeepFreedMemory(true);
  *token = kToken;
  return Ok;
}

void GdiplusShutdown(ULONG_PTR token) {
  if (token != kToken) return;
  LONG count = startCount.load();
  while (count > 0 && !startCount.compare_exchange_weak(count, count - 1)) {
  }
  if (count == 1) KeepFreedMemory(false);
}

namespace DllExports {

void* GdipAlloc(SIZE_T size) {
  return PlatformShouldFail("GdipAlloc") ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void GdipFree(void* ptr) { std::free(ptr); }

GpStatus GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics) {
  if (graphics == nullptr) return InvalidParameter;
  *graphics = nullptr;
  const GpStatus status = Check("GdipGetImageGraphicsContext", image != nullptr);
  if (status != Ok) return status;
  if (image->IsOneBit()) return OutOfMemory;
  *graphics = new (std::nothrow) GpGraphics{image};
  return *graphics == nullptr ? OutOfMemory : Ok;
}

GpStatus GdipDeleteGraphics(GpGraphics* graphics) {
  if (graphics == nullptr) return InvalidParameter;
  delete graphics;
  return Ok;
}

GpStatus GdipGraphicsClear(GpGraphics* graphics, ARGB color) {
  const GpStatus status = Check("GdipGraphicsClear", graphics != nullptr);
  if (status == Ok) graphics->target->Fill(color);
  return status;
}

GpStatus GdipDrawImageI(GpGraphics* graphics, GpImage* image, INT x, INT y) {
  const GpStatus status = Check("GdipDrawImageI", graphics != nullptr && image != nullptr);
  if (status != Ok) return status;
  DrawPart(*graphics, *image, x, y, {0, 0, image->width, image->height});
  return Ok;
}

GpStatus GdipDrawImageRectRectI(GpGraphics* graphics, GpImage* image, INT dstx, INT dsty,
                                INT dstwidth, INT dstheight, INT srcx, INT srcy, INT srcwidth,
                                INT srcheight, GpUnit srcUnit, const GpImageAttributes*,
                                DrawImageAbort, void*) {
  const GpStatus status = Check("GdipDrawImageRectRectI", graphics != nullptr && image != nullptr);
  if (status != Ok) return status;
  if (dstwidth != srcwidth || dstheight != srcheight || srcUnit != UnitPixel) {
    return NotImplemented;
  }
  DrawPart(*graphics, *image, dstx, dsty, {srcx, srcy, srcwidth, srcheight});
  return Ok;
}

GpStatus GdipGetImageEncodersSize(UINT* numEncoders, UINT* size) {
  const GpStatus status =
      Check("GdipGetImageEncodersSize", numEncoders != nullptr && size != nullptr);
  if (status != Ok) return status;
  *numEncoders = std::size(kEncoders);
  *size = sizeof kEncoders;
  return Ok;
}

GpStatus GdipGetImageEncoders(UINT numEncoders, UINT size, ImageCodecInfo* encoders) {
  const GpStatus status = Check("GdipGetImageEncoders", encoders != nullptr);
  if (status != Ok) return status;
  if (numEncoders != std::size(kEncoders) || size < sizeof kEncoders) return InvalidParameter;
  std::memcpy(encoders, kEncoders, sizeof kEncoders);
  return Ok;
}

GpStatus GdipSaveImageToStream(GpImage* image, IStream* stream, const CLSID* clsidEncoder,
                               const EncoderParameters*) {
  const bool valid = image != nullptr && stream != nullptr && clsidEncoder != nullptr &&
                     *clsidEncoder == kPngEncoder;
  const GpStatus status = Check("GdipSaveImageToStream", valid);
  return status == Ok ? WritePng(*image, stream) : status;
}

}  // namespace DllExports
}  // namespace Gdiplus
