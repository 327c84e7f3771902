#include "host/pages/page_raster.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/error.h"
#include "host/settings/length.h"

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

void Shrink(PageImage& page, const DevicePage& device, const std::string& name) {
  const double scale = std::min(static_cast<double>(device.physicalWidthPx) / page.widthPx,
                                static_cast<double>(device.physicalHeightPx) / page.heightPx);
  const auto side = [scale](std::uint32_t length, LONG most) {
    return std::clamp<std::int64_t>(std::llround(length * scale), 1, most);
  };
  PageImage smaller;
  ShapePage(smaller, side(page.widthPx, device.physicalWidthPx),
            side(page.heightPx, device.physicalHeightPx), name);
  if (stbir_resize_uint8(page.pixels.data(), static_cast<int>(page.widthPx),
                         static_cast<int>(page.heightPx), static_cast<int>(page.strideBytes),
                         smaller.pixels.data(), static_cast<int>(smaller.widthPx),
                         static_cast<int>(smaller.heightPx), static_cast<int>(smaller.strideBytes),
                         3) == 0) {
    throw std::bad_alloc();
  }
  page = std::move(smaller);
}

}  // namespace

bool IsWhite(const std::uint8_t* bytes, std::size_t size) {
  return size == 0 || (bytes[0] == 0xFF && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

PageTooLargeError::PageTooLargeError(const std::string& page, const PageImage& image,
                                     const DevicePage& paper)
    : HostError(
          kExitSettings,
          page + " is " + SizeText(image.widthPx, image.heightPx, paper.dpi) + " at " +
              std::to_string(paper.dpi) + " dpi, the paper is " +
              SizeText(paper.physicalWidthPx, paper.physicalHeightPx, paper.dpi),
          "choose a larger paper, another resolution or orientation, or let pages shrink to fit"),
      m_widthMm(image.widthPx * 25.4 / paper.dpi),
      m_heightMm(image.heightPx * 25.4 / paper.dpi) {}

void CheckPrintable(const DevicePage& device) {
  if (device.physicalWidthPx < 0 || device.physicalHeightPx < 0) {
    // The platform multiplies micrometres by dots per inch in 32 bits.
    const double mostMm = std::floor(2147483647.0 / device.dpi / 100) / 10;
    throw HostError(kExitSettings,
                    "The paper is too large for " + std::to_string(device.dpi) +
                        " dpi, where a side may have up to " + FormatMm(mostMm) + " mm",
                    "choose a smaller paper or resolution");
  }
  if (device.surfaceWidthPx > 0 && device.surfaceHeightPx > 0) return;
  throw HostError(kExitSettings,
                  "The margins leave nothing of the paper of " +
                      SizeText(device.physicalWidthPx, device.physicalHeightPx, device.dpi) +
                      " to print on",
                  "make paper.margin_* or the stock's margins smaller, or the paper larger");
}

void FitPage(PageImage& page, const DevicePage& device, Fit fit, const std::string& name) {
  if (page.roundedUp) {
    const auto whole = [](std::uint32_t length, LONG most) {
      return std::int64_t{length} == std::int64_t{most} + 1 && most > 0 ? length - 1 : length;
    };
    TrimPage(page, whole(page.widthPx, device.physicalWidthPx),
             whole(page.heightPx, device.physicalHeightPx));
  }
  if (std::int64_t{page.widthPx} <= device.physicalWidthPx &&
      std::int64_t{page.heightPx} <= device.physicalHeightPx) {
    return;
  }
  if (fit == Fit::Shrink) return Shrink(page, device, name);
  throw PageTooLargeError(name, page, device);
}

void RasterPage(PageImage& page, const DevicePage& device, PageImage& surface) {
  const std::int64_t width = device.surfaceWidthPx;
  const std::int64_t height = device.surfaceHeightPx;
  if (device.offsetXPx == 0 && device.offsetYPx == 0 && page.widthPx == width &&
      page.heightPx == height) {
    std::swap(page, surface);
    return;
  }
  ShapePage(surface, static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
            "The printable area");
  std::fill(surface.pixels.begin(), surface.pixels.end(), 0xFF);
  const std::int64_t columns = std::min(std::int64_t{page.widthPx} - device.offsetXPx, width);
  const std::int64_t rows = std::min(std::int64_t{page.heightPx} - device.offsetYPx, height);
  if (columns <= 0) return;
  for (std::int64_t y = 0; y < rows; ++y) {
    std::memcpy(surface.Row(static_cast<std::uint32_t>(y)),
                page.Row(static_cast<std::uint32_t>(y + device.offsetYPx)) + 3 * device.offsetXPx,
                static_cast<std::size_t>(3 * columns));
  }
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
