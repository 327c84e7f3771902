#include "host/page_raster.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/error.h"
#include "host/length.h"

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

std::string SizeText(std::int64_t width, std::int64_t height, int dpi) {
  return FormatMm(width * 25.4 / dpi) + " x " + FormatMm(height * 25.4 / dpi) + " mm (" +
         std::to_string(width) + " x " + std::to_string(height) + " dots)";
}

PageImage Shrunk(const PageImage& page, const DevicePage& device, const std::string& name) {
  const double scale = std::min(static_cast<double>(device.physicalWidthPx) / page.widthPx,
                                static_cast<double>(device.physicalHeightPx) / page.heightPx);
  const auto side = [scale](std::uint32_t length, LONG most) {
    return std::clamp<std::int64_t>(std::llround(length * scale), 1, most);
  };
  PageImage smaller = MakePage(side(page.widthPx, device.physicalWidthPx),
                               side(page.heightPx, device.physicalHeightPx), name);
  if (stbir_resize_uint8(page.pixels.data(), static_cast<int>(page.widthPx),
                         static_cast<int>(page.heightPx), 0, smaller.pixels.data(),
                         static_cast<int>(smaller.widthPx), static_cast<int>(smaller.heightPx), 0,
                         3) == 0) {
    throw std::bad_alloc();
  }
  return smaller;
}

bool IsWhite(const std::uint8_t* bytes, std::size_t size) {
  return std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0xFF; });
}

}  // namespace

PageImage FitPage(PageImage page, const DevicePage& device, Fit fit, const std::string& name) {
  if (std::int64_t{page.widthPx} <= device.physicalWidthPx &&
      std::int64_t{page.heightPx} <= device.physicalHeightPx) {
    return page;
  }
  if (fit == Fit::Shrink) return Shrunk(page, device, name);
  throw HostError(kExitSettings,
                  name + " is " + SizeText(page.widthPx, page.heightPx, device.dpi) + " at " +
                      std::to_string(device.dpi) + " dpi, the paper is " +
                      SizeText(device.physicalWidthPx, device.physicalHeightPx, device.dpi) +
                      ": choose a larger --paper, another --dpi or --orientation, or --fit shrink");
}

Surface RasterPage(const PageImage& page, const DevicePage& device) {
  Surface surface;
  surface.widthPx = device.surfaceWidthPx;
  surface.heightPx = device.surfaceHeightPx;
  surface.strideBytes = (std::size_t{3} * surface.widthPx + 3) / 4 * 4;
  surface.pixels.assign(surface.strideBytes * surface.heightPx, 0xFF);
  const std::int64_t columns =
      std::min<std::int64_t>(std::int64_t{page.widthPx} - device.offsetXPx, surface.widthPx);
  const std::int64_t rows =
      std::min<std::int64_t>(std::int64_t{page.heightPx} - device.offsetYPx, surface.heightPx);
  if (columns <= 0) return surface;
  for (std::int64_t y = 0; y < rows; ++y) {
    std::memcpy(surface.pixels.data() + y * surface.strideBytes,
                page.Row(static_cast<std::uint32_t>(y + device.offsetYPx)) + 3 * device.offsetXPx,
                static_cast<std::size_t>(3 * columns));
  }
  return surface;
}

bool LosesContent(const PageImage& page, const DevicePage& device) {
  const std::int64_t left = device.offsetXPx;
  const std::int64_t right = device.surfaceWidthPx;
  for (std::uint32_t y = 0; y < page.heightPx; ++y) {
    const bool printed =
        std::int64_t{y} >= device.offsetYPx && std::int64_t{y} < device.surfaceHeightPx;
    const std::int64_t first = printed ? std::min<std::int64_t>(left, page.widthPx) : page.widthPx;
    if (!IsWhite(page.Row(y), static_cast<std::size_t>(3 * first))) return true;
    if (!printed || right >= std::int64_t{page.widthPx}) continue;
    const std::int64_t from = std::max(right, left);
    if (!IsWhite(page.Row(y) + 3 * from,
                 static_cast<std::size_t>(3 * std::max<std::int64_t>(page.widthPx - from, 0)))) {
      return true;
    }
  }
  return false;
}
