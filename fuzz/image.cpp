// Pages as PNG files and PNM streams. A page that is taken has the pixels that it says.

#include <cstdlib>
#include <new>

#include "fuzz/input.h"
#include "host/error.h"
#include "host/page_reader.h"

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=64";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
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
