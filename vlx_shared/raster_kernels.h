// The loops over pixels that turn a page into dots: one set of functions in plain code and one for
// vector units. Both give the same bytes on every machine, because all arithmetic is in integers.
// Levels are grey bytes, 0 black to 255 white. Black and white pixels of the page stay what they
// are, take no error from their neighbours and pass none on.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/types.h"
#include "vlx_shared/color_mixture.h"

// Levels from here on are white if nothing else decides.
inline constexpr INT kMiddle = 128;

// Rows that a diffusion takes at once, and pixels that kernels may touch beyond both ends of a row.
inline constexpr INT kStripRows = 32;
inline constexpr INT kStripMargin = 96;

// Rows of levels. The margins and rows below the page are white.
struct LevelStrip {
  BYTE* origin;
  std::ptrdiff_t strideBytes;
  INT widthPx;
  BYTE* Row(INT y) const { return origin + y * strideBytes; }
};

// What error diffusion carries to the next row: one entry for each pixel of the row above, and
// kStripMargin zeros at both ends. error: in eighths of a level, 0 only for black and white pixels
// of the page. dots: +feedback for white, -feedback for black, 0 for pixels of the page that were
// black or white.
struct DiffusionState {
  std::int16_t* error;
  std::int16_t* dots;
};

// How error diffusion decides, in eighths of a level. 2 x feedback + noise / 2 must be at most 1023
// to keep errors below kLargestError.
struct DiffusionRule {
  INT feedback;  // makes a dot more likely to be like those at its left and above
  INT noise;     // range of the noise on the threshold, which breaks up worms and stripes
  INT pageRow;   // of the strip's first row
};

// Sixteen times this fits 16 bits. Only an ink that gives way to another can reach it.
inline constexpr INT kLargestError = 2047;

// The noise of a row: a linear congruential generator of 16 bits. Each row has its own factor:
// with one factor and many seeds the noise would draw streaks down the page.
class RowNoise {
 public:
  static constexpr std::uint16_t kOffset = 13849;
  static constexpr INT kFirstColumn = -64;  // numbers begin here, because vector code starts early
  static constexpr std::uint16_t Seed(INT pageRow) {
    return static_cast<std::uint16_t>(40503u * static_cast<DWORD>(pageRow));
  }
  static constexpr std::uint16_t Factor(INT pageRow) {
    return static_cast<std::uint16_t>(25173 + 8 * (2531u * static_cast<DWORD>(pageRow) & 1023));
  }

  explicit RowNoise(INT pageRow) : m_state(Seed(pageRow)), m_factor(Factor(pageRow)) {
    for (INT x = kFirstColumn; x < 0; ++x) Next();
  }
  std::int16_t Next() {
    m_state = static_cast<std::uint16_t>(m_state * m_factor + kOffset);
    return static_cast<std::int16_t>(m_state);
  }

 private:
  std::uint16_t m_state;
  const std::uint16_t m_factor;
};

struct RasterKernels {
  // Grey levels of count pixels. Returns whether any is neither black nor white.
  bool (*Grey)(const BYTE* pixels, INT count, BYTE* levels);

  // Amounts of black and of highlight in count pixels, as levels: 255 none, 0 solid. Returns
  // whether any is neither 0 nor 255.
  bool (*Split)(const BYTE* pixels, INT count, const ColorMixture& mixture, BYTE* black,
                BYTE* highlight);

  // Sets levels below their thresholds to black and all others to white. thresholds repeat after
  // period entries; period + kStripMargin of them can be read.
  void (*Screen)(BYTE* levels, INT count, const BYTE* thresholds, INT period);

  // The same for two inks that never print on the same dot: black takes the upper thresholds, the
  // highlight those below.
  void (*ScreenTwo)(BYTE* black, BYTE* highlight, INT count, const BYTE* thresholds, INT period);

  // Diffuses errors over kStripRows rows, each from left to right.
  void (*Diffuse)(const LevelStrip& strip, const DiffusionRule& rule, const DiffusionState& state);

  // The same for two inks. A highlight dot that would fall on a black one is not printed; its error
  // is passed on.
  void (*DiffuseTwo)(const LevelStrip& black, const LevelStrip& highlight,
                     const DiffusionRule& rule, const DiffusionState& blackState,
                     const DiffusionState& highlightState);

  // Makes a 1-bit row of count levels or pixels, white from kMiddle on. Unused bits are 0.
  void (*PackLevels)(const BYTE* levels, INT count, BYTE* bits);
  void (*Pack)(const BYTE* pixels, INT count, BYTE* bits);
};

// The plain set.
const RasterKernels& PlainKernels();
// The fastest set on this processor.
const RasterKernels& BestKernels();

inline bool IsPure(BYTE level) { return level == 0 || level == 255; }
