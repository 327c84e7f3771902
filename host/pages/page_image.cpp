#include "host/pages/page_image.h"

#include <cmath>
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
  page.xDpi = page.yDpi = 0;
  page.pixels.resize(page.strideBytes * page.heightPx);
  WhitenPadding(page);
}

void StateResolution(PageImage& page, double xDpi, double yDpi) {
  const auto isMeant = [](double dpi) {
    const bool isOfScreens = std::abs(dpi - 72) < 0.5 || std::abs(dpi - 96) < 0.5;
    return dpi >= 30 && dpi <= 10000 && !isOfScreens;
  };
  if (!isMeant(xDpi) || !isMeant(yDpi)) return;
  page.xDpi = xDpi;
  page.yDpi = yDpi;
}

void TurnPage(PageImage& page, int orientation, const std::string& source) {
  if (orientation < 2 || orientation > 8) return;
  const bool turns = orientation > 4;  // rows become columns
  const bool fromRight =
      turns ? orientation == 6 || orientation == 7 : orientation == 2 || orientation == 3;
  const bool fromBottom =
      turns ? orientation == 7 || orientation == 8 : orientation == 3 || orientation == 4;
  PageImage upright;
  ShapePage(upright, turns ? page.heightPx : page.widthPx, turns ? page.widthPx : page.heightPx,
            source);
  for (std::uint32_t y = 0; y < upright.heightPx; ++y) {
    std::uint8_t* to = upright.Row(y);
    const std::uint32_t down = fromBottom ? upright.heightPx - 1 - y : y;
    for (std::uint32_t x = 0; x < upright.widthPx; ++x, to += 3) {
      const std::uint32_t across = fromRight ? upright.widthPx - 1 - x : x;
      std::memcpy(to, turns ? page.Row(across) + 3 * down : page.Row(down) + 3 * across, 3);
    }
  }
  upright.xDpi = turns ? page.yDpi : page.xDpi;
  upright.yDpi = turns ? page.xDpi : page.yDpi;
  page = std::move(upright);
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
