#include "platform/linux/gdiplus/deflate.h"

#include <libdeflate.h>
#ifdef VLX_ISAL
#include <isa-l/igzip_lib.h>
#endif

#include <algorithm>
#include <memory>
#include <new>

#include "platform/extensions.h"

namespace Gdiplus {

namespace {

// Levels of libdeflate, read off the tables of bench/compare.
constexpr int kUsbLevel = 5;
constexpr int kSerialLevel = 12;

struct CompressorFreer {
  void operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
  }
};

SIZE_T DeflateAtLevel(int level, const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  const std::unique_ptr<libdeflate_compressor, CompressorFreer> compressor(
      libdeflate_alloc_compressor(level));
  if (compressor == nullptr) return 0;
  return libdeflate_zlib_compress(compressor.get(), from, bytes, out, room);
}

#ifdef VLX_ISAL

// The library's vector code (2.30) takes the first hash of a stream from the stream's address, so
// that one image in thousands would have other bytes in another process. Its plain code does not,
// and compresses this many bytes, which are flushed before the rest.
constexpr SIZE_T kPlainBytes = 8;

SIZE_T DeflateFast(const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  struct Memory {
    isal_zstream stream = {};  // the library leaves some of it as it was
    BYTE level[ISAL_DEF_LVL1_DEFAULT];
  };
  const std::unique_ptr<Memory> memory(new (std::nothrow) Memory);
  if (memory == nullptr) return 0;
  isal_zstream& stream = memory->stream;
  isal_deflate_init(&stream);
  stream.level = 1;
  stream.level_buf = memory->level;
  stream.level_buf_size = sizeof memory->level;
  stream.gzip_flag = IGZIP_ZLIB;
  stream.next_in = const_cast<BYTE*>(from);  // read only
  stream.avail_in = static_cast<std::uint32_t>(std::min(bytes, kPlainBytes));
  stream.next_out = out;
  stream.avail_out = static_cast<std::uint32_t>(room);
  stream.flush = SYNC_FLUSH;
  if (isal_deflate(&stream) != COMP_OK) return 0;
  stream.avail_in = static_cast<std::uint32_t>(bytes - std::min(bytes, kPlainBytes));
  stream.flush = NO_FLUSH;
  stream.end_of_stream = 1;
  if (isal_deflate(&stream) != COMP_OK || stream.internal_state.state != ZSTATE_END) return 0;
  return stream.total_out;
}

#else

SIZE_T DeflateFast(const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  return DeflateAtLevel(1, from, bytes, out, room);
}

#endif

}  // namespace

SIZE_T DeflateBound(SIZE_T bytes) {
  constexpr SIZE_T kFlushBytes = 16;  // of ISA-L's bytes that are flushed first
  return libdeflate_zlib_compress_bound(nullptr, bytes) + kFlushBytes;
}

SIZE_T Deflate(Link link, const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  if (PlatformShouldFail("PngCompressor")) return 0;
  if (link == Link::Network) return DeflateFast(from, bytes, out, room);
  return DeflateAtLevel(link == Link::Usb ? kUsbLevel : kSerialLevel, from, bytes, out, room);
}

}  // namespace Gdiplus
