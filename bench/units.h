// The units of the other figures: work that every label program has to do, in its plainest form.
#pragma once

#include <cstdint>
#include <span>

// R. Floyd, L. Steinberg: "An Adaptive Algorithm for Spatial Greyscale", Proc. SID 17/2, 1976, as
// textbooks print it: one pixel after the other, row by row, in place. levels: widthPx a row.
void TextbookFloydSteinberg(std::span<std::uint8_t> levels, int widthPx);

// The size in bytes of the PNG file when libpng compresses it at level 9, without row filters.
std::size_t LibpngLevel9Bytes(std::span<const char> png);

// CPU time of pages by stage, in microseconds.
struct StageTimes {
  double turn = 0;  // or the capture of the bands
  double dots = 0;
  double png = 0;
};

// CPU time of this process since the last call, or since it was made, in microseconds.
class StageClock {
 public:
  double Lap();

 private:
  static double Now();
  double m_last = Now();
};
