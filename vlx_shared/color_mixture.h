// A pixel as a mixture of white paper, black and the highlight colour. Chroma is a pixel's
// difference from grey. The amount of highlight is the pixel's chroma projected onto the
// highlight's. The darkness that remains is black.
#pragma once

#include <cstdint>

#include "platform/gdiplus.h"

// Constants of one highlight colour and tolerance; channels in the order blue, green, red. All of
// them fit 16 bits, so that a vector holds many pixels.
struct ColorMixture {
  // tolerance: 0 to 1, as a fraction of the largest colour distance and of 180 degrees of hue.
  ColorMixture(Gdiplus::ARGB highlight, double tolerance);

  std::int16_t color[3];
  // Projection onto the highlight's chroma: each channel << 7 times its weight in 32768ths. The sum
  // is the amount in levels << amountShift.
  std::int16_t weight[3] = {};
  std::int16_t amountShift = 0;
  // Scales that sum to the length of the projection; its square is then times 3/2.
  std::uint16_t alongScale = 0;
  // How far a pixel's chroma may be from the highlight's: by its distance, squared and times 3/2,
  // or by its angle, in 65535ths.
  std::uint16_t offLimit = 0;
  std::uint16_t cosineSquared = 0;
  std::uint16_t sineSquared = 0;
  // A pixel prints solid up to this squared distance from the highlight, divided by 4.
  std::uint16_t solidLimit = 0;
  // Black up to this part of the highlight's amount, in 256ths, is left out. That keeps slightly
  // dark highlight colours, and their edges, free of black dots.
  std::uint16_t blackTrace = 0;
  // Luma of white minus that of the solid highlight.
  std::uint16_t lumaDeficit = 0;
};

// Amounts of black or highlight up to this, of 255, may come from rounding.
inline constexpr int kTrace = 3;

// Luma of a pixel (blue, green, red), with the weights of ITU-R BT.601 in 256ths. Only white gives
// 255.
inline BYTE Luma(const BYTE* pixel) {
  return static_cast<BYTE>((29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2]) >> 8);
}
