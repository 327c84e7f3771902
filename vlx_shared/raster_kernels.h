// The loops over pixels that turn a page into dots, one set of functions for plain code and one for
// vector units. Both give the same bytes; arithmetic is in integers, so every machine does.
// Levels are grey bytes, 0 black to 255 white. Black and white are the page's own dots: they stay
// what they are, take no error from their neighbours and pass none on.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/types.h"
#include "vlx_shared/color_mixture.h"

// A level from here on is white where nothing else decides: the middle of the greys.
inline constexpr INT kMiddle = 128;

// How many rows are worked on at once, and the pixels beside each row that a kernel may touch.
inline constexpr INT kStripRows = 32;
inline constexpr INT kStripMargin = 96;

// Rows of levels. The margins at both ends of a row, and rows below the page, are white.
struct LevelStrip {
  BYTE* origin;
  std::ptrdiff_t strideBytes;
  INT widthPx;
  BYTE* Row(INT y) const { return origin + y * strideBytes; }
};

// What error diffusion carries from row to row, one entry a pixel of the row above and
// kStripMargin zeros at both ends: the error in eighths of a level, 0 only for the page's own
// black and white, and the dot as +feedback (white), -feedback (black) or 0 (the page's own).
struct DiffusionState {
  std::int16_t* error;
  std::int16_t* dots;
};

// How error diffusion decides, in eighths of a level; 2 x feedback + noise / 2 is at most 1023, so
// that errors stay below kLargestError.
struct DiffusionRule {
  INT feedback;  // draws a dot towards the ones at its left and above
  INT noise;     // the range of the noise on the threshold, which breaks up worms and stripes
  INT pageRow;   // of the strip's first row
};

// Sixteen errors fit 16 bits. Only an ink that gives way to another one's dots can reach this.
inline constexpr INT kLargestError = 2047;

// The noise of a row: a linear congruential generator of 16 bits. Each row has its own factor, for
// one generator from many seeds would draw streaks down the page.
class RowNoise {
 public:
  static constexpr std::uint16_t kOffset = 13849;
  static constexpr INT kFirstColumn = -64;  // where a row's numbers begin: vector code starts early
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
  // Grey levels of count pixels. Returns whether one of them is neither black nor white.
  bool (*Grey)(const BYTE* pixels, INT count, BYTE* levels);

  // Amounts of black and of highlight in count pixels, as levels: 255 is none, 0 is solid. Returns
  // whether a level is neither 0 nor 255.
  bool (*Split)(const BYTE* pixels, INT count, const ColorMixture& mixture, BYTE* black,
                BYTE* highlight);

  // Black where a level is below its threshold. thresholds repeats after period entries and can be
  // read for period + kStripMargin.
  void (*Screen)(BYTE* levels, INT count, const BYTE* thresholds, INT period);

  // The same for two inks that never print on each other: black takes the thresholds' upper end,
  // the highlight the part below it.
  void (*ScreenTwo)(BYTE* black, BYTE* highlight, INT count, const BYTE* thresholds, INT period);

  // Error diffusion down kStripRows rows, each from left to right.
  void (*Diffuse)(const LevelStrip& strip, const DiffusionRule& rule, const DiffusionState& state);

  // The same for two inks; no highlight dot falls on a black one, its error goes on.
  void (*DiffuseTwo)(const LevelStrip& black, const LevelStrip& highlight,
                     const DiffusionRule& rule, const DiffusionState& blackState,
                     const DiffusionState& highlightState);

  // A 1-bit row of count levels or pixels, white from kMiddle on; unused bits are 0.
  void (*PackLevels)(const BYTE* levels, INT count, BYTE* bits);
  void (*Pack)(const BYTE* pixels, INT count, BYTE* bits);
};

// The plain set.
const RasterKernels& PlainKernels();
// The fastest set for this processor.
const RasterKernels& BestKernels();

// Luma of a pixel (blue, green, red), with the weights of ITU-R BT.601 in 256ths; only white has
// 255.
inline BYTE Luma(const BYTE* pixel) {
  return static_cast<BYTE>((29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2]) >> 8);
}

inline bool IsPure(BYTE level) { return level == 0 || level == 255; }
