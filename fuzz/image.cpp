// Pages as PNG files and PNM streams. A page that is taken has the pixels that it says. The same
// bytes as rows of dots come back when they were compressed.

#include <libdeflate.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/error.h"
#include "host/pages/page_formats.h"
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
  FilePtr file(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  if (file == nullptr || data[0] == '%') return 0;  // a PDF file starts another program
  try {
    PageImage page;
    for (const auto pages = OpenPages({std::move(file), "case"}, 203); pages->Next(page);) {
      if (page.pixels.size() < page.strideBytes * page.heightPx) std::abort();
    }
  } catch (const HostError&) {
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
