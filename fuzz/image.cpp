// Page files of every format that needs no helper program. A page that is accepted holds as many
// pixels as it claims.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/error.h"
#include "host/pages/page_formats.h"

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=64";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  FilePtr file(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  if (file == nullptr) return 0;
  // PDF files and SVG drawings start other programs.
  if (data[0] == '%' || std::memchr(data, '<', std::min<std::size_t>(size, 64))) return 0;
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
