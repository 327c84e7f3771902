#include "vlx_shared/color_mixture.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kLargestSquaredDistance = 3.0 * 255.0 * 255.0;
// A highlight colour with less squared chroma counts as grey.
constexpr double kLeastSquaredChroma = 16.0 * 16.0;
// Rounding in the kernels may move an exact mixture off by this.
constexpr double kOffRounding = 40.0;

std::uint16_t Clamp16(double value) {
  return static_cast<std::uint16_t>(std::clamp(std::floor(value + 0.5), 0.0, 65535.0));
}

}  // namespace

ColorMixture::ColorMixture(Gdiplus::ARGB highlight, double tolerance)
    : color{static_cast<std::int16_t>(highlight & 0xFF),
            static_cast<std::int16_t>(highlight >> 8 & 0xFF),
            static_cast<std::int16_t>(highlight >> 16 & 0xFF)} {
  const double reach = tolerance > 0.0 ? std::min(tolerance, 1.0) : 0.0;  // also for a NaN
  const double mean = (color[0] + color[1] + color[2]) / 3.0;
  double chroma = 0.0;
  double toBlack = 0.0;
  double toWhite = 0.0;
  for (const double channel : color) {
    chroma += (channel - mean) * (channel - mean);
    toBlack += channel * channel;
    toWhite += (255 - channel) * (255 - channel);
  }
  // Colours within half the tolerance print solid, but at most a quarter of the way to black or
  // white.
  const double solid =
      std::min({reach * reach * kLargestSquaredDistance / 4, toBlack / 16, toWhite / 16});
  solidLimit = Clamp16(std::floor(solid / 4));
  blackTrace = Clamp16(reach * 128.0);
  const BYTE pixel[3] = {static_cast<BYTE>(color[0]), static_cast<BYTE>(color[1]),
                         static_cast<BYTE>(color[2])};
  lumaDeficit = static_cast<std::uint16_t>(255 - Luma(pixel));
  if (chroma < kLeastSquaredChroma) return;  // grey has no hue: only near colours count

  double largest = 0.0;
  for (const double channel : color) {
    largest = std::max(largest, std::abs(channel - mean) * 255.0 / chroma);
  }
  const int exponent = std::max(0, std::ilogb(largest) + 1);
  const double scale = 255.0 / chroma * 32768.0 / (1 << exponent);
  weight[0] = static_cast<std::int16_t>(std::lround((color[0] - mean) * scale));
  weight[2] = static_cast<std::int16_t>(std::lround((color[2] - mean) * scale));
  weight[1] = static_cast<std::int16_t>(-weight[0] - weight[2]);  // so that greys add up to 0
  amountShift = static_cast<std::int16_t>(7 - exponent);
  alongScale = Clamp16(std::sqrt(1.5 * chroma) / 255.0 * 2 * (1 << exponent) * 8192.0);
  offLimit = Clamp16(reach * reach * kLargestSquaredDistance * 1.5 + kOffRounding);
  const double angle = std::min(reach, 0.5) * std::numbers::pi;
  cosineSquared = Clamp16(65535.0 * std::cos(angle) * std::cos(angle));
  sineSquared = Clamp16(65535.0 * std::sin(angle) * std::sin(angle));
}
