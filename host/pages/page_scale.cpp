#include "host/pages/page_scale.h"

#include <cstring>
#include <new>

#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#include <stb/stb_image_resize.h>
#pragma GCC diagnostic pop

namespace {

void RepeatPixels(const PageImage& page, PageImage& larger) {
  const std::uint32_t across = larger.widthPx / page.widthPx;
  const std::uint32_t down = larger.heightPx / page.heightPx;
  for (std::uint32_t y = 0; y < page.heightPx; ++y) {
    const std::uint8_t* from = page.Row(y);
    std::uint8_t* const first = larger.Row(y * down);
    std::uint8_t* to = first;
    for (std::uint32_t x = 0; x < page.widthPx; ++x, from += 3) {
      for (std::uint32_t i = 0; i < across; ++i, to += 3) std::memcpy(to, from, 3);
    }
    for (std::uint32_t i = 1; i < down; ++i) {
      std::memcpy(first + i * larger.strideBytes, first, larger.strideBytes);
    }
  }
}

}  // namespace

bool IsWholeScale(const PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx) {
  return widthPx % page.widthPx == 0 && heightPx % page.heightPx == 0;
}

void ScalePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx, Mixing mixing,
               const std::string& source) {
  PageImage scaled;
  ShapePage(scaled, widthPx, heightPx, source);
  if (IsWholeScale(page, widthPx, heightPx)) {
    RepeatPixels(page, scaled);
  } else if (stbir_resize_uint8_generic(
                 page.pixels.data(), static_cast<int>(page.widthPx),
                 static_cast<int>(page.heightPx), static_cast<int>(page.strideBytes),
                 scaled.pixels.data(), static_cast<int>(scaled.widthPx),
                 static_cast<int>(scaled.heightPx), static_cast<int>(scaled.strideBytes), 3,
                 STBIR_ALPHA_CHANNEL_NONE, 0, STBIR_EDGE_CLAMP, STBIR_FILTER_DEFAULT,
                 mixing == Mixing::Light ? STBIR_COLORSPACE_SRGB : STBIR_COLORSPACE_LINEAR,
                 nullptr) == 0) {
    throw std::bad_alloc();
  }
  page = std::move(scaled);
}
