// PNG files of bitmaps: the container here, the compression of dots by RowDeflate where rows repeat
// and by LeastDeflate where bytes count, that of diffused greys and of colours by libdeflate.

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "platform/fault.h"
#include "platform/linux/gdiplus/image.h"
#include "platform/linux/gdiplus/least_deflate.h"
#include "platform/linux/gdiplus/row_deflate.h"
#include "platform/linux/state/system_state.h"
#include "platform/linux/system/block.h"

namespace Gdiplus {

namespace {

constexpr BYTE kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr SIZE_T kChunkFrame = 12;  // length, type and check sum
constexpr SIZE_T kHeaderBytes = 13;
constexpr SIZE_T kMostChunkBytes = 0x7FFFFFFF;
// Thousandths of an image: below the first its rows are not compared further, above the second the
// search for repeats costs more than it saves.
constexpr SIZE_T kLittleChange = 250;
constexpr SIZE_T kMostChange = 500;
constexpr INT kMostCellRows = 16;  // of the screens
constexpr INT kSampledRow = 5;     // every fifth row tells enough
constexpr MatchSearch kUsualSearch = {5, DeflateToken::kMostMatch, true};
constexpr MatchSearch kFastSearch = {2, 32, false};
constexpr int kFastLevel = 1;
constexpr int kMostLevel = 12;

// Of images in colour, where only a long search finds what repeats.
int ColorLevel(PngSize wanted) {
  return wanted == PngSize::Fast ? 6 : wanted == PngSize::Small ? kMostLevel : 9;
}

struct BlockFreer {
  void operator()(BYTE* block) const { FreeBlock(block); }
};
using Block = std::unique_ptr<BYTE, BlockFreer>;

Block MakeBlock(SIZE_T bytes) {
  return Block(PlatformShouldFail("PngBuffer") ? nullptr
                                               : static_cast<BYTE*>(AllocateBlock(bytes, false)));
}

// What takes longer to make than a small image to compress: one of each is kept.
std::mutex mutex;
libdeflate_compressor* keptCompressors[kMostLevel + 1];
RowDeflate* keptRowDeflate;
LeastDeflate* keptLeastDeflate;

void Free(libdeflate_compressor* compressor) { libdeflate_free_compressor(compressor); }
void Free(RowDeflate* rowDeflate) { delete rowDeflate; }
void Free(LeastDeflate* leastDeflate) { delete leastDeflate; }

template <typename T>
class Kept {
 public:
  // Takes the one that is kept at the place, or a new one.
  template <typename Make>
  Kept(T*& place, const Make& make) : m_place(place) {
    if (PlatformShouldFail("PngCompressor")) return;
    {
      const std::lock_guard locked(mutex);
      std::swap(m_object, place);
    }
    if (m_object == nullptr) m_object = make();
  }
  ~Kept() {
    {
      const std::lock_guard locked(mutex);
      if (m_place == nullptr) std::swap(m_object, m_place);
    }
    Free(m_object);
  }
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;

  // Null without memory.
  T* Get() const { return m_object; }

 private:
  T*& m_place;
  T* m_object = nullptr;
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

// Of some of the rows, the part in thousandths that differs from the row so many rows up.
SIZE_T ChangeOf(const BYTE* rows, SIZE_T rowBytes, INT height, INT up) {
  SIZE_T changed = 0;
  SIZE_T words = 1;
  for (INT y = up; y < height; y += kSampledRow) {
    const BYTE* row = rows + rowBytes * y;
    for (SIZE_T i = 0; i + 8 <= rowBytes; i += 8, ++words) {
      std::uint64_t here, above;
      std::memcpy(&here, row + i, sizeof here);
      std::memcpy(&above, row + i - rowBytes * up, sizeof above);
      changed += here != above;
    }
  }
  return changed * 1000 / words;
}

// How many rows up the row is that rows resemble most: the one above, or, where greys became a
// screen of dots, one whole cell up. 0 when there is none.
SIZE_T RowsUp(const BYTE* rows, SIZE_T rowBytes, INT height) {
  SIZE_T leastChange = kMostChange;
  INT best = 0;
  for (INT up = 1; up <= kMostCellRows && leastChange > kLittleChange; ++up) {
    const SIZE_T change = ChangeOf(rows, rowBytes, height, up);
    if (change > leastChange) continue;
    leastChange = change;
    best = up;
  }
  return static_cast<SIZE_T>(best);
}

// The rows of an image, compressed into a block.
struct Compression {
  const Block& rows;
  SIZE_T bytes;
  SIZE_T rowBytes;
  BYTE* out;
  SIZE_T room;

  // All return the bytes written to out, which has room for the worst case; 0 without memory.
  SIZE_T At(int level) const {
    const Kept<libdeflate_compressor> compressor(
        keptCompressors[level], [level] { return libdeflate_alloc_compressor(level); });
    if (compressor.Get() == nullptr) return 0;
    return libdeflate_zlib_compress(compressor.Get(), rows.get(), bytes, out, room);
  }

  // Where rows repeat, that is what there is to find; in diffused greys there is nothing, and a
  // search costs the most.
  SIZE_T Usual(const MatchSearch& search) const {
    const SIZE_T repeatBytes = RepeatBytes();
    if (repeatBytes == 0 || bytes > HashChain::kMostBytes) return At(kFastLevel);
    const Kept<RowDeflate> rowDeflate(keptRowDeflate, [] { return new (std::nothrow) RowDeflate; });
    if (rowDeflate.Get() == nullptr) return 0;
    const SIZE_T size =
        rowDeflate.Get()->Compress(rows.get(), bytes, repeatBytes, search, out, room);
    return size != 0 ? size : At(kFastLevel);
  }

  // Now and then, as with noise, the most thorough search is not the one that finds most.
  SIZE_T Least() const {
    const SIZE_T usual = Usual(kUsualSearch);
    if (usual == 0) return 0;
    const SIZE_T least = LeastIn(usual);
    return least != 0 ? least : Usual(kUsualSearch);
  }

  SIZE_T OfDots(PngSize wanted) const {
    if (wanted == PngSize::Small) return Least();
    return Usual(wanted == PngSize::Fast ? kFastSearch : kUsualSearch);
  }

 private:
  SIZE_T LeastIn(SIZE_T most) const {
    if (rowBytes > DeflateToken::kMostDistance || bytes > HashChain::kMostBytes) return 0;
    const Kept<LeastDeflate> leastDeflate(keptLeastDeflate,
                                          [] { return new (std::nothrow) LeastDeflate; });
    if (leastDeflate.Get() == nullptr) return 0;
    const SIZE_T repeatBytes = RepeatBytes();
    return leastDeflate.Get()->Compress(rows.get(), bytes,
                                        repeatBytes != 0 ? repeatBytes : rowBytes, out, most);
  }

  // How far back the rows are that rows resemble; 0 when there are none within reach.
  SIZE_T RepeatBytes() const {
    const SIZE_T back = rowBytes * RowsUp(rows.get(), rowBytes, static_cast<INT>(bytes / rowBytes));
    return back > DeflateToken::kMostDistance ? 0 : back;
  }
};

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
  const Compression compression = {rows, bytes, rowBytes, data + 8, room};
  const PngSize wanted = SystemState()->pngSize;
  const SIZE_T compressed =
      image.IsOneBit() ? compression.OfDots(wanted) : compression.At(ColorLevel(wanted));
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
  for (libdeflate_compressor*& compressor : keptCompressors) {
    Free(std::exchange(compressor, nullptr));
  }
  Free(std::exchange(keptRowDeflate, nullptr));
  Free(std::exchange(keptLeastDeflate, nullptr));
}

}  // namespace Gdiplus
