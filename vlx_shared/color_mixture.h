// A pixel as a mixture of paper white, black and the highlight colour. The amount of highlight is
// the pixel's chroma (what distinguishes it from grey) along the highlight's; what its brightness
// then lacks is black.
#pragma once

#include <cstdint>

#include "platform/gdiplus.h"

// The numbers of one highlight colour and tolerance, channels blue, green, red. Everything fits 16
// bits, so that vector units take as many pixels at once as possible.
struct ColorMixture {
  // tolerance: a part of the largest colour distance and of half a turn of hue, 0 to 1.
  ColorMixture(Gdiplus::ARGB highlight, double tolerance);

  std::int16_t color[3];
  // Chroma along the highlight's: the products of the channels, shifted left by 7, with these
  // 32768ths add up to the amount in parts of 1 << amountShift of a level.
  std::int16_t weight[3] = {};
  std::int16_t amountShift = 0;
  // From that sum to the length of the chroma along the highlight's, squared and times 3/2.
  std::uint16_t alongScale = 0;
  // How far chroma may be off the highlight's: squared and times 3/2, or by its angle (65535ths).
  std::uint16_t offLimit = 0;
  std::uint16_t cosineSquared = 0;
  std::uint16_t sineSquared = 0;
  // Squared and quartered distance from the highlight up to which a pixel prints solid.
  std::uint16_t solidLimit = 0;
  // 256ths of the highlight's amount up to which black beside it is left out: a highlight colour
  // that is a little dark stays clean, and so do its edges.
  std::uint16_t blackTrace = 0;
  // Brightness that a solid highlight lacks to white.
  std::uint16_t lumaDeficit = 0;
};

// An amount of black or highlight, of 255, that rounding may have made.
inline constexpr int kTrace = 3;
