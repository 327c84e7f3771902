// Writes bitmaps as PNG files.

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/extensions.h"
#include "platform/linux/gdiplus/deflate.h"
#include "platform/linux/gdiplus/image.h"

namespace Gdiplus {

namespace {

constexpr BYTE kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr SIZE_T kChunkFrame = 12;  // length, type and check sum
constexpr SIZE_T kHeaderBytes = 13;
constexpr SIZE_T kMostChunkBytes = 0x7FFFFFFF;

using Bytes = std::unique_ptr<BYTE[]>;

// Null if there is no memory.
Bytes MakeBytes(SIZE_T size) {
  return Bytes(PlatformShouldFail("PngBuffer") ? nullptr : new (std::nothrow) BYTE[size]);
}

SIZE_T RowBytes(const GpImage& image) {
  return image.IsOneBit() ? (image.width + 7) / 8 : SIZE_T{3} * image.width;
}

// Lays the rows out for compression, each behind its filter number. That is 0, none: filters make
// rows of dots larger.
void LayOut(const GpImage& image, BYTE* out) {
  const SIZE_T rowBytes = RowBytes(image);
  for (INT y = 0; y < image.height; ++y, out += rowBytes) {
    const BYTE* row = image.Row(y);
    *out++ = 0;
    if (image.IsOneBit()) {
      std::memcpy(out, row, rowBytes);
      if ((image.width & 7) != 0)
        out[rowBytes - 1] &= static_cast<BYTE>(0xFF00 >> (image.width & 7));
      continue;
    }
    for (SIZE_T i = 0; i < rowBytes; i += 3) {
      out[i] = row[i + 2];
      out[i + 1] = row[i + 1];
      out[i + 2] = row[i];
    }
  }
}

BYTE* PutNumber(BYTE* to, SIZE_T number) {
  for (int shift = 24; shift >= 0; shift -= 8) *to++ = static_cast<BYTE>(number >> shift);
  return to;
}

// Adds length and check sum to a chunk whose type and content are in place. Returns its end.
BYTE* PutChunk(BYTE* start, SIZE_T bytes) {
  PutNumber(start, bytes);
  return PutNumber(start + 8 + bytes, libdeflate_crc32(0, start + 4, bytes + 4));
}

BYTE* PutHeader(const GpImage& image, BYTE* to) {
  to = std::copy(std::begin(kSignature), std::end(kSignature), to);
  std::memcpy(to + 4, "IHDR", 4);
  PutNumber(PutNumber(to + 8, image.width), image.height);
  const BYTE rest[] = {static_cast<BYTE>(image.IsOneBit() ? 1 : 8),
                       static_cast<BYTE>(image.IsOneBit() ? 0 : 2), 0, 0, 0};
  std::copy(std::begin(rest), std::end(rest), to + 16);
  return PutChunk(to, kHeaderBytes);
}

}  // namespace

GpStatus WritePng(GpImage& image, IStream* stream) {
  image.MakePixels();
  const SIZE_T bytes = (RowBytes(image) + 1) * image.height;
  const SIZE_T room = DeflateBound(bytes);
  const Bytes rows = MakeBytes(bytes);
  const Bytes file = MakeBytes(sizeof kSignature + 3 * kChunkFrame + kHeaderBytes + room);
  if (rows == nullptr || file == nullptr) return OutOfMemory;
  LayOut(image, rows.get());
  BYTE* data = PutHeader(image, file.get());
  std::memcpy(data + 4, "IDAT", 4);
  const SIZE_T compressed = Deflate(*PrinterLink().Get(), rows.get(), bytes, data + 8, room);
  if (compressed == 0 || compressed > kMostChunkBytes) return OutOfMemory;
  BYTE* end = PutChunk(data, compressed);
  std::memcpy(end + 4, "IEND", 4);
  end = PutChunk(end, 0);
  const auto size = static_cast<ULONG>(end - file.get());
  ULONG written = 0;
  return SUCCEEDED(stream->Write(file.get(), size, &written)) && written == size ? Ok : Win32Error;
}

}  // namespace Gdiplus
