#include "host/pages/page_image.h"

#include <cstring>

#include "host/error.h"

namespace {

constexpr std::uint64_t kMostPixelBytes = std::uint64_t{1} << 30;

std::size_t StrideBytes(std::uint32_t widthPx) { return (std::size_t{3} * widthPx + 3) / 4 * 4; }

void WhitenPadding(PageImage& page) {
  const std::size_t used = std::size_t{3} * page.widthPx;
  if (used == page.strideBytes) return;
  for (std::uint32_t y = 0; y < page.heightPx; ++y) {
    std::memset(page.Row(y) + used, 0xFF, page.strideBytes - used);
  }
}

}  // namespace

void ShapePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx,
               const std::string& source) {
  const std::string size = std::to_string(widthPx) + " x " + std::to_string(heightPx) + " pixels";
  if (widthPx == 0 || heightPx == 0) {
    throw HostError(kExitInput, source + ": the page is empty (" + size + ")");
  }
  if (widthPx > kMostPixelBytes || heightPx > kMostPixelBytes ||
      widthPx * 3 + 3 > kMostPixelBytes / heightPx) {
    throw HostError(
        kExitInput,
        source + ": the page is too large (" + size + "), at most 1 GiB of pixels can be printed",
        "export it smaller");
  }
  page.widthPx = static_cast<std::uint32_t>(widthPx);
  page.heightPx = static_cast<std::uint32_t>(heightPx);
  page.strideBytes = StrideBytes(page.widthPx);
  page.roundedUp = false;
  page.pixels.resize(page.strideBytes * page.heightPx);
  WhitenPadding(page);
}

void TrimPage(PageImage& page, std::uint32_t widthPx, std::uint32_t heightPx) {
  const std::size_t strideBytes = StrideBytes(widthPx);
  for (std::uint32_t y = 0; y < heightPx && strideBytes != page.strideBytes; ++y) {
    std::memmove(page.pixels.data() + y * strideBytes, page.Row(y), std::size_t{3} * widthPx);
  }
  page.widthPx = widthPx;
  page.heightPx = heightPx;
  page.strideBytes = strideBytes;
  page.pixels.resize(strideBytes * heightPx);
  WhitenPadding(page);
}
