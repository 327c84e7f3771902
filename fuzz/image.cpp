// Pages as PNG files and PNM streams. A page that is taken has the pixels that it says. The same
// bytes as rows of dots come back when they were compressed.

#include <libdeflate.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/error.h"
#include "host/pages/page_reader.h"
#include "platform/linux/gdiplus/least_deflate.h"
#include "platform/linux/gdiplus/row_deflate.h"

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=64";
}

static void CheckComesBack(const std::uint8_t* rows, std::size_t size) {
  static RowDeflate usual;
  static LeastDeflate least;
  static libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
  const std::size_t repeatBytes = 1 + rows[0];
  std::vector<BYTE> out(2 * size + 1000), back(size);
  const auto check = [&](std::size_t written) {
    if (libdeflate_zlib_decompress(decompressor, out.data(), written, back.data(), size, nullptr) !=
            LIBDEFLATE_SUCCESS ||
        std::memcmp(back.data(), rows, size) != 0) {
      std::abort();
    }
  };
  const MatchSearch search = {1 + rows[size / 2] % 8, 258, rows[size - 1] % 2 == 0};
  check(usual.Compress(rows, size, repeatBytes, search, out.data(), out.size()));
  check(least.Compress(rows, size, repeatBytes, out.data(), out.size()));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  CheckComesBack(data, size);
  std::FILE* file = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
  if (file == nullptr) return 0;
  try {
    PageImage page;
    const bool png = data[0] == 0x89;
    if (png) ReadPng(file, "case", page);
    while (png || ReadPnm(file, "case", page)) {
      if (page.pixels.size() < page.strideBytes * page.heightPx) std::abort();
      if (png) break;
    }
  } catch (const HostError&) {
  } catch (const std::bad_alloc&) {
  }
  std::fclose(file);
  return 0;
}
