#include "host/pages/page_raster.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/error.h"
#include "host/pages/page_scale.h"
#include "host/settings/length.h"

namespace {

std::string SizeText(std::int64_t width, std::int64_t height, int dpi) {
  return FormatMm(width * 25.4 / dpi) + " x " + FormatMm(height * 25.4 / dpi) + " mm (" +
         std::to_string(width) + " x " + std::to_string(height) + " dots)";
}

// Whether a picture of this resolution is printed dot for dot: 203 and 203.2 dpi are the same.
bool IsSameResolution(double dpi, int deviceDpi) { return std::abs(deviceDpi / dpi - 1) < 0.005; }

std::int64_t Dots(double length, LONG most) {
  return std::clamp<std::int64_t>(std::llround(length), 1, most);
}

constexpr int kQuarterInchUm = 6350;

// How far a page may fall short of the paper before Fit::Scale enlarges it.
constexpr double kLeastGrowth = 1.01;

}  // namespace

bool IsWhite(const std::uint8_t* bytes, std::size_t size) {
  return size == 0 || (bytes[0] == 0xFF && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

PageTooLargeError::PageTooLargeError(const std::string& page, const PageImage& image,
                                     const DevicePage& paper)
    : HostError(
          kExitSettings,
          page + " is " +
              SizeText(DotsOf(image, paper.dpi).width, DotsOf(image, paper.dpi).height, paper.dpi) +
              " at " + std::to_string(paper.dpi) + " dpi, the paper is " +
              SizeText(paper.physicalWidthPx, paper.physicalHeightPx, paper.dpi),
          "choose a larger paper, another resolution or orientation, or let pages shrink to fit"),
      m_widthMm(static_cast<double>(DotsOf(image, paper.dpi).width) * 25.4 / paper.dpi),
      m_heightMm(static_cast<double>(DotsOf(image, paper.dpi).height) * 25.4 / paper.dpi),
      m_fitting(PaperFor(image, paper.dpi, paper.landscape)) {}

PageDots DotsOf(const PageImage& page, int dpi) {
  const auto dots = [dpi](std::uint32_t px, double statedDpi) {
    const bool isSame = statedDpi <= 0 || IsSameResolution(statedDpi, dpi);
    return isSame ? std::int64_t{px}
                  : std::max<std::int64_t>(std::llround(px * dpi / statedDpi), 1);
  };
  return {dots(page.widthPx, page.xDpi), dots(page.heightPx, page.yDpi)};
}

std::optional<PaperSize> PaperFor(const PageImage& page, int dpi, bool landscape) {
  // The roundest length that has these dots. Programs often drop the fraction of a dot, so whole
  // millimetres may have one more.
  const auto side = [&](std::int64_t dots) -> std::int32_t {
    const double lengthUm = (static_cast<double>(dots) - (page.roundedUp ? 0.5 : 0)) * 25400 / dpi;
    if (lengthUm > kLongestSideUm || lengthUm * dpi > 2147483647.0) return 0;
    for (const int stepUm : {1000, kQuarterInchUm, 500, 100, 10, 1}) {
      const double um = std::round(lengthUm / stepUm) * stepUm;
      const std::int64_t paperDots = std::llround(um * dpi / 25400);
      const std::int64_t least = page.roundedUp ? dots - 1 : dots;
      const std::int64_t most = !page.roundedUp && stepUm == 1000 ? dots + 1 : dots;
      if (paperDots < least || paperDots > most) continue;
      return std::max(static_cast<std::int32_t>(um), kShortestSideUm);
    }
    return 0;
  };
  const PageDots dots = DotsOf(page, dpi);
  PaperSize paper = {side(dots.width), side(dots.height)};
  if (landscape) std::swap(paper.widthUm, paper.lengthUm);
  if (paper.widthUm == 0 || paper.lengthUm == 0) return std::nullopt;
  return paper;
}

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

std::optional<PageScale> FitPage(PageImage& page, const DevicePage& device, Fit fit,
                                 const std::string& name) {
  if (page.roundedUp) {
    const auto whole = [](std::uint32_t length, LONG most) {
      return std::int64_t{length} == std::int64_t{most} + 1 && most > 0 ? length - 1 : length;
    };
    TrimPage(page, whole(page.widthPx, device.physicalWidthPx),
             whole(page.heightPx, device.physicalHeightPx));
  }
  const PageDots dots = DotsOf(page, device.dpi);
  const bool fits = dots.width <= device.physicalWidthPx && dots.height <= device.physicalHeightPx;
  if (!fits && fit == Fit::None) throw PageTooLargeError(name, page, device);
  double scale = 1;
  if (!fits || fit == Fit::Scale) {
    scale = std::min(device.physicalWidthPx / static_cast<double>(dots.width),
                     device.physicalHeightPx / static_cast<double>(dots.height));
    if (scale > 1 && scale < kLeastGrowth) scale = 1;
  }
  const auto width = Dots(static_cast<double>(dots.width) * scale, device.physicalWidthPx);
  const auto height = Dots(static_cast<double>(dots.height) * scale, device.physicalHeightPx);
  if (width == page.widthPx && height == page.heightPx) return std::nullopt;
  const bool isStated = dots.width != page.widthPx || dots.height != page.heightPx;
  const PageScale made = {.x = static_cast<double>(width) / page.widthPx,
                          .y = static_cast<double>(height) / page.heightPx,
                          .statedDpi = isStated ? page.xDpi : 0,
                          .isWhole = IsWholeScale(page, width, height)};
  ScalePage(page, width, height, isStated || scale > 1 ? Mixing::Light : Mixing::Values, name);
  return made;
}

POINT PlaceOf(const PageImage& page, const DevicePage& device, Place place) {
  const LONG right = device.physicalWidthPx - static_cast<LONG>(page.widthPx);
  const LONG bottom = device.physicalHeightPx - static_cast<LONG>(page.heightPx);
  switch (place) {
    case Place::Centre:
      return {right / 2, bottom / 2};
    case Place::TopRight:
      return {right, 0};
    case Place::BottomLeft:
      return {0, bottom};
    case Place::BottomRight:
      return {right, bottom};
    case Place::TopLeft:
      break;
  }
  return {0, 0};
}

void RasterPage(PageImage& page, const DevicePage& device, POINT at, PageImage& surface) {
  const std::int64_t width = device.surfaceWidthPx;
  const std::int64_t height = device.surfaceHeightPx;
  const std::int64_t left = std::int64_t{at.x} - device.offsetXPx;  // of the page on the surface
  const std::int64_t top = std::int64_t{at.y} - device.offsetYPx;
  if (left == 0 && top == 0 && page.widthPx == width && page.heightPx == height) {
    std::swap(page, surface);
    return;
  }
  ShapePage(surface, static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
            "The printable area");
  std::fill(surface.pixels.begin(), surface.pixels.end(), 0xFF);
  const std::int64_t firstColumn = std::max<std::int64_t>(left, 0);
  const std::int64_t columns = std::min(left + page.widthPx, width) - firstColumn;
  if (columns <= 0) return;
  const std::int64_t end = std::min(top + page.heightPx, height);
  for (std::int64_t y = std::max<std::int64_t>(top, 0); y < end; ++y) {
    std::memcpy(surface.Row(static_cast<std::uint32_t>(y)) + 3 * firstColumn,
                page.Row(static_cast<std::uint32_t>(y - top)) + 3 * (firstColumn - left),
                static_cast<std::size_t>(3 * columns));
  }
}

bool LosesContent(const PageImage& page, const DevicePage& device, POINT at) {
  // The printed part in the page's coordinates.
  const auto within = [](std::int64_t place, std::uint32_t length) {
    return std::clamp<std::int64_t>(place, 0, length);
  };
  const std::int64_t left = within(std::int64_t{device.offsetXPx} - at.x, page.widthPx);
  const std::int64_t right =
      std::max(within(std::int64_t{device.surfaceWidthPx} - at.x, page.widthPx), left);
  const std::int64_t top = std::int64_t{device.offsetYPx} - at.y;
  const std::int64_t bottom = std::int64_t{device.surfaceHeightPx} - at.y;
  for (std::uint32_t y = 0; y < page.heightPx; ++y) {
    const bool printed = std::int64_t{y} >= top && std::int64_t{y} < bottom;
    const std::int64_t first = printed ? left : page.widthPx;
    const std::int64_t from = printed ? right : page.widthPx;
    if (!IsWhite(page.Row(y), static_cast<std::size_t>(3 * first)) ||
        !IsWhite(page.Row(y) + 3 * from, static_cast<std::size_t>(3 * (page.widthPx - from)))) {
      return true;
    }
  }
  return false;
}
