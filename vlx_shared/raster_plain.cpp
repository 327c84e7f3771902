// The kernels in plain code. The vector code must give the same bytes.

#include <algorithm>

#include "vlx_shared/raster_kernels.h"

namespace {

bool Grey(const BYTE* pixels, INT count, BYTE* levels) {
  bool grey = false;
  for (INT x = 0; x < count; ++x, pixels += 3) {
    levels[x] = Luma(pixels);
    grey |= !IsPure(levels[x]);
  }
  return grey;
}

// The product of two 32768ths, rounded.
INT MulQ15(INT a, INT b) { return (a * b + 0x4000) >> 15; }

// The amount of highlight in a pixel, 0 to 255.
INT HighlightAmount(const BYTE* pixel, const ColorMixture& mixture) {
  INT distance = 0;
  INT sum = 0;
  for (int i = 0; i < 3; ++i) {
    const INT off = pixel[i] - mixture.color[i];
    distance += off * off >> 2;
    sum += MulQ15(pixel[i] << 7, mixture.weight[i]);
  }
  if (distance <= mixture.solidLimit) return 255;
  if (sum <= 0) return 0;
  const auto squared = [](INT a, INT b) { return (a - b) * (a - b); };
  const INT chroma = ((squared(pixel[0], pixel[1]) + squared(pixel[1], pixel[2]) + 1) >> 1) +
                     (squared(pixel[2], pixel[0]) >> 1);
  const INT length = static_cast<INT>((2u * sum * mixture.alongScale >> 16) * 4 & 0xFFFF);
  const INT along = static_cast<INT>(std::uint32_t(length) * std::uint32_t(length) >> 16);
  const INT off = std::max(chroma - along, 0);
  const bool sameHue = std::uint32_t(off) * mixture.cosineSquared >> 16 <=
                       std::uint32_t(along) * mixture.sineSquared >> 16;
  if (off > mixture.offLimit && !sameHue) return 0;
  const INT shift = mixture.amountShift;
  return std::min((sum + (1 << (shift - 1))) >> shift, 255);
}

bool Split(const BYTE* pixels, INT count, const ColorMixture& mixture, BYTE* black,
           BYTE* highlight) {
  bool grey = false;
  for (INT x = 0; x < count; ++x, pixels += 3) {
    const INT luma = Luma(pixels);
    INT amount = 0;
    INT level = luma;
    if (pixels[0] != pixels[1] || pixels[1] != pixels[2] || !IsPure(pixels[0])) {
      amount = HighlightAmount(pixels, mixture);
      const INT lack = amount * mixture.lumaDeficit + 128;
      level = luma + ((lack + (lack >> 8)) >> 8);
      const INT trace = kTrace + (amount * mixture.blackTrace >> 8);
      if (amount > 0 && level >= 255 - trace) level = 255;
      if (amount <= kTrace) amount = 0;
      if (amount == 255) level = 255;
      level = std::max(level, amount);  // together they cover no more than the whole dot
    }
    black[x] = static_cast<BYTE>(std::min(level, 255));
    highlight[x] = static_cast<BYTE>(255 - amount);
    grey |= !IsPure(black[x]) || !IsPure(highlight[x]);
  }
  return grey;
}

void Screen(BYTE* levels, INT count, const BYTE* thresholds, INT period) {
  for (INT x = 0; x < count; ++x) levels[x] = levels[x] < thresholds[x % period] ? 0 : 255;
}

void ScreenTwo(BYTE* black, BYTE* highlight, INT count, const BYTE* thresholds, INT period) {
  for (INT x = 0; x < count; ++x) {
    const INT threshold = thresholds[x % period];
    const bool covered = black[x] + highlight[x] - 255 < threshold;
    black[x] = black[x] < threshold ? 0 : 255;
    highlight[x] = covered && black[x] != 0 ? 0 : 255;
  }
}

// One row of one ink. After R. Floyd, L. Steinberg: "An Adaptive Algorithm for Spatial Greyscale",
// Proc. SID 17/2, 1976; feedback after R. Levien: "Output Dependent Feedback in Error Diffusion
// Halftoning", IS&T 1993.
class DiffusedRow {
 public:
  DiffusedRow(BYTE* levels, const DiffusionRule& rule, const DiffusionState& state)
      : m_levels(levels),
        m_feedback(rule.feedback),
        m_error(state.error),
        m_dots(state.dots),
        m_above(state.error[0]) {}

  // Decides pixel x; call in order. blocked: another ink prints here. Returns whether it is black.
  bool Next(INT x, INT noise, bool blocked) {
    const INT aboveRight = m_error[x + 1];
    // If the pixel at the left takes no error, its share from the pixel above comes here instead.
    // Otherwise the left edge of a photo would be too light or too dark.
    const INT share = m_left == 0 ? 8 : 5;
    const INT sum = 7 * m_left + m_aboveLeft + share * m_above + 3 * aboveRight;
    m_aboveLeft = m_above;
    m_above = aboveRight;
    INT error = 0;
    INT dot = 0;
    if (!IsPure(m_levels[x])) {
      const INT wanted = 8 * m_levels[x] + (sum >> 4);
      const bool white = blocked || wanted + noise + m_leftDot + m_dots[x] >= 8 * kMiddle;
      m_levels[x] = white ? 255 : 0;
      // An odd error is never 0 and makes up for rounding the sum down.
      error = std::clamp(wanted - 8 * m_levels[x], -kLargestError, kLargestError) | 1;
      dot = white ? m_feedback : -m_feedback;
    }
    m_error[x] = static_cast<std::int16_t>(error);
    m_dots[x] = static_cast<std::int16_t>(dot);
    m_left = error;
    m_leftDot = dot;
    return m_levels[x] == 0;
  }

 private:
  BYTE* const m_levels;
  const INT m_feedback;
  std::int16_t* const m_error;
  std::int16_t* const m_dots;
  INT m_aboveLeft = 0;
  INT m_above;
  INT m_left = 0;
  INT m_leftDot = 0;
};

void Diffuse(const LevelStrip& strip, const DiffusionRule& rule, const DiffusionState& state) {
  for (INT y = 0; y < kStripRows; ++y) {
    RowNoise noise(rule.pageRow + y);
    DiffusedRow row(strip.Row(y), rule, state);
    for (INT x = 0; x < strip.widthPx; ++x) row.Next(x, noise.Next() * rule.noise >> 16, false);
  }
}

void DiffuseTwo(const LevelStrip& black, const LevelStrip& highlight, const DiffusionRule& rule,
                const DiffusionState& blackState, const DiffusionState& highlightState) {
  for (INT y = 0; y < kStripRows; ++y) {
    RowNoise noise(rule.pageRow + y);
    DiffusedRow blackRow(black.Row(y), rule, blackState);
    DiffusedRow highlightRow(highlight.Row(y), rule, highlightState);
    for (INT x = 0; x < black.widthPx; ++x) {
      const INT shift = noise.Next() * rule.noise >> 16;
      highlightRow.Next(x, -shift, blackRow.Next(x, shift, false));
    }
  }
}

void PackLevels(const BYTE* levels, INT count, BYTE* bits) {
  std::fill_n(bits, (count + 7) / 8, BYTE{0});
  for (INT x = 0; x < count; ++x) {
    if (levels[x] >= kMiddle) bits[x / 8] |= 0x80 >> x % 8;
  }
}

void Pack(const BYTE* pixels, INT count, BYTE* bits) {
  std::fill_n(bits, (count + 7) / 8, BYTE{0});
  for (INT x = 0; x < count; ++x, pixels += 3) {
    if (Luma(pixels) >= kMiddle) bits[x / 8] |= 0x80 >> x % 8;
  }
}

constexpr RasterKernels kPlain = {Grey,    Split,      Screen,     ScreenTwo,
                                  Diffuse, DiffuseTwo, PackLevels, Pack};

}  // namespace

const RasterKernels& PlainKernels() { return kPlain; }
