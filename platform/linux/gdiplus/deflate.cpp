#include "platform/linux/gdiplus/deflate.h"

#include <libdeflate.h>
#ifdef VLX_ISAL
#include <isa-l/igzip_lib.h>
#endif

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

SIZE_T DeflateFast(const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  struct Memory {
    // Cleared: the library's own initialisation leaves some of it, and what stands there changes
    // the bytes of one page in thousands.
    isal_zstream stream = {};
    BYTE level[ISAL_DEF_LVL1_DEFAULT];
  };
  const std::unique_ptr<Memory> memory(new (std::nothrow) Memory);
  if (memory == nullptr) return 0;
  isal_zstream& stream = memory->stream;
  isal_deflate_stateless_init(&stream);
  stream.level = 1;
  stream.level_buf = memory->level;
  stream.level_buf_size = sizeof memory->level;
  stream.gzip_flag = IGZIP_ZLIB;
  stream.end_of_stream = 1;
  stream.next_in = const_cast<BYTE*>(from);  // read only
  stream.avail_in = static_cast<std::uint32_t>(bytes);
  stream.next_out = out;
  stream.avail_out = static_cast<std::uint32_t>(room);
  return isal_deflate_stateless(&stream) == COMP_OK ? stream.total_out : 0;
}

#else

SIZE_T DeflateFast(const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  return DeflateAtLevel(1, from, bytes, out, room);
}

#endif

}  // namespace

SIZE_T DeflateBound(SIZE_T bytes) { return libdeflate_zlib_compress_bound(nullptr, bytes); }

SIZE_T Deflate(Link link, const BYTE* from, SIZE_T bytes, BYTE* out, SIZE_T room) {
  if (PlatformShouldFail("PngCompressor")) return 0;
  if (link == Link::Network) return DeflateFast(from, bytes, out, room);
  return DeflateAtLevel(link == Link::Usb ? kUsbLevel : kSerialLevel, from, bytes, out, room);
}

}  // namespace Gdiplus
