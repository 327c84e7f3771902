// PNG files of bitmaps: the container here, the compression by libdeflate.

#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <mutex>

#include "platform/fault.h"
#include "platform/linux/block.h"
#include "platform/linux/gdiplus_image.h"
#include "platform/linux/system_state.h"

namespace Gdiplus {

namespace {

constexpr BYTE kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr SIZE_T kChunkFrame = 12;  // length, type and check sum
constexpr SIZE_T kHeaderBytes = 13;
constexpr SIZE_T kMostChunkBytes = 0x7FFFFFFF;
constexpr int kFastLevel = 1;
constexpr int kThoroughLevel = 9;
constexpr int kMostLevel = 12;

struct BlockFreer {
  void operator()(BYTE* block) const { FreeBlock(block); }
};
using Block = std::unique_ptr<BYTE, BlockFreer>;

Block MakeBlock(SIZE_T bytes) {
  return Block(PlatformShouldFail("PngBuffer") ? nullptr
                                               : static_cast<BYTE*>(AllocateBlock(bytes, false)));
}

// A compressor takes longer to make than a small image to compress: one a level is kept.
std::mutex mutex;
libdeflate_compressor* kept[kMostLevel + 1];

class Compressor {
 public:
  explicit Compressor(int level) : m_level(level) {
    if (PlatformShouldFail("PngCompressor")) return;
    {
      const std::lock_guard locked(mutex);
      std::swap(m_compressor, kept[level]);
    }
    if (m_compressor == nullptr) m_compressor = libdeflate_alloc_compressor(level);
  }
  ~Compressor() {
    {
      const std::lock_guard locked(mutex);
      if (kept[m_level] == nullptr) std::swap(m_compressor, kept[m_level]);
    }
    libdeflate_free_compressor(m_compressor);
  }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  // Bytes written to out, which has room for the worst case; 0 without memory.
  SIZE_T Compress(const Block& in, SIZE_T bytes, BYTE* out, SIZE_T room) {
    if (m_compressor == nullptr) return 0;
    return libdeflate_zlib_compress(m_compressor, in.get(), bytes, out, room);
  }

 private:
  const int m_level;
  libdeflate_compressor* m_compressor = nullptr;
};

SIZE_T RowBytes(const GpImage& image) {
  return image.IsOneBit() ? (image.width + 7) / 8 : SIZE_T{3} * image.width;
}

// The image as PNG compresses it: each row behind the number of its filter. There is none: rows of
// dots compress best as they are.
void LayOut(const GpImage& image, BYTE* out) {
  const SIZE_T rowBytes = RowBytes(image);
  for (INT y = 0; y < image.height; ++y) {
    const BYTE* row = image.Row(y);
    *out++ = 0;
    if (image.IsOneBit()) {
      std::memcpy(out, row, rowBytes);
      if ((image.width & 7) != 0)
        out[rowBytes - 1] &= static_cast<BYTE>(0xFF00 >> (image.width & 7));
    } else {
      for (SIZE_T i = 0; i < rowBytes; i += 3) {
        out[i] = row[i + 2];
        out[i + 1] = row[i + 1];
        out[i + 2] = row[i];
      }
    }
    out += rowBytes;
  }
}

// The part of the image, in thousandths, that differs from the row above it.
SIZE_T ChangeOf(const BYTE* rows, SIZE_T rowBytes, INT height) {
  SIZE_T changed = 0;
  SIZE_T words = 1;
  for (INT y = 1; y < height; ++y, rows += rowBytes) {
    for (SIZE_T i = 0; i + 8 <= rowBytes; i += 8, ++words) {
      std::uint64_t above, below;
      std::memcpy(&above, rows + i, sizeof above);
      std::memcpy(&below, rows + rowBytes + i, sizeof below);
      changed += above != below;
    }
  }
  return changed * 1000 / words;
}

// Where rows repeat, a longer search finds the long matches that make the file small; in dithered
// areas there is nothing to find and a search costs the most.
int UsualLevel(SIZE_T changeThousandths) {
  struct Row {
    SIZE_T mostChange;
    int level;
  };
  constexpr Row kRows[] = {{40, 8}, {100, 7}, {300, 5}, {1000, kFastLevel}};
  const Row* row = kRows;
  while (changeThousandths > row->mostChange) ++row;
  return row->level;
}

SIZE_T Compress(const Block& in, SIZE_T bytes, SIZE_T change, BYTE* out, SIZE_T room) {
  const auto at = [&](int level) { return Compressor(level).Compress(in, bytes, out, room); };
  const PngSize wanted = SystemState()->pngSize;
  const int usual = wanted == PngSize::Fast ? kFastLevel : UsualLevel(change);
  if (wanted != PngSize::Small) return at(usual);
  // Now and then the most thorough search is not the one that finds most.
  int best = usual;
  SIZE_T least = at(usual);
  SIZE_T last = least;
  for (const int level : {kThoroughLevel, kMostLevel}) {
    last = at(level);
    if (last == 0 || last >= least) continue;
    least = last;
    best = level;
  }
  return last == least ? last : at(best);
}

BYTE* PutNumber(BYTE* to, SIZE_T number) {
  for (int shift = 24; shift >= 0; shift -= 8) *to++ = static_cast<BYTE>(number >> shift);
  return to;
}

// Closes a chunk whose type and content stand behind the room for its length; returns its end.
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
  const SIZE_T rowBytes = RowBytes(image) + 1;
  const SIZE_T bytes = rowBytes * image.height;
  const SIZE_T room = libdeflate_zlib_compress_bound(nullptr, bytes);
  const Block rows = MakeBlock(bytes);
  const Block file = MakeBlock(sizeof kSignature + 3 * kChunkFrame + kHeaderBytes + room);
  if (rows == nullptr || file == nullptr) return OutOfMemory;
  LayOut(image, rows.get());
  BYTE* data = PutHeader(image, file.get());
  std::memcpy(data + 4, "IDAT", 4);
  const SIZE_T compressed =
      Compress(rows, bytes, ChangeOf(rows.get(), rowBytes, image.height), data + 8, room);
  if (compressed == 0 || compressed > kMostChunkBytes) return OutOfMemory;
  BYTE* end = PutChunk(data, compressed);
  std::memcpy(end + 4, "IEND", 4);
  end = PutChunk(end, 0);
  const auto size = static_cast<ULONG>(end - file.get());
  ULONG written = 0;
  return SUCCEEDED(stream->Write(file.get(), size, &written)) && written == size ? Ok : Win32Error;
}

void ReleasePngCompressors() {
  const std::lock_guard locked(mutex);
  for (libdeflate_compressor*& compressor : kept) {
    libdeflate_free_compressor(compressor);
    compressor = nullptr;
  }
}

}  // namespace Gdiplus
