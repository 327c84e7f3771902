// Greys become dots, and the page's own dots stay.

#include <cmath>

#include "tests/support/temp_home.h"
#include "tests/vlx_shared/bitmaps.h"

namespace {

constexpr eBitmapDitherer kDitherers[] = {eThreshold,         eFloydSteinberg, eOrdered,
                                          eClusteredDot,      eBlueNoise,      eClusteredDiffusion,
                                          eBitmapDitherer{99}};

using Halftones = Bitmaps;

TEST_F(Halftones, BlackAndWhiteStayAndTouchNothingBesideThem) {
  for (const INT width : {1, 7, 64, 65, 150}) {
    const INT height = 70;
    std::vector<DWORD> levels(width * height);
    for (DWORD& level : levels) level = random() % 2 == 0 ? random() % 2 * 255 : random() % 256;
    const auto page = [&](DWORD own) {
      return Page(width, height, [&, own](INT x, INT y) {
        const DWORD level = levels[y * width + x];
        return (level == 0 || level == 255 ? level ^ own : level) * 0x010101;
      });
    };
    for (const eBitmapDitherer ditherer : kDitherers) {
      for (const INT parameter : {0, 1, 255}) {
        Bitmap* dots = Own(BitmapRasterizer::Dither(page(0), ditherer, parameter));
        Bitmap* others = Own(BitmapRasterizer::Dither(page(255), ditherer, parameter));
        for (INT i = 0; i < width * height; ++i) {
          const bool own = levels[i] == 0 || levels[i] == 255;
          const DWORD dot = Pixel(dots, i % width, i / width);
          // Black turned white beside a grey does not change its dot.
          ASSERT_EQ(dot, own ? levels[i] * 0x010101 : Pixel(others, i % width, i / width));
          ASSERT_TRUE(dot == 0 || dot == 0xFFFFFF) << ditherer;
        }
      }
    }
  }
}

TEST_F(Halftones, GreyKeepsItsTone) {
  for (const DWORD level : {4u, 31u, 64u, 128u, 200u, 250u}) {
    Bitmap* grey = Page(256, 256, [level](INT, INT) { return level * 0x010101; });
    for (const eBitmapDitherer ditherer : kDitherers) {
      if (ditherer == eThreshold) continue;
      for (const INT parameter : {0, 3, 200}) {
        Bitmap* dots = Own(BitmapRasterizer::Dither(grey, ditherer, parameter));
        EXPECT_NEAR(1 - Covered(dots), level / 255.0, 0.012) << ditherer << ' ' << parameter;
      }
    }
  }
}

// The method as its authors describe it, in fractions, and with its one change at the edges.
TEST_F(Halftones, FloydSteinbergRunsLeftToRightInEveryRow) {
  const INT width = 24, height = 40;
  std::vector<double> wanted(width * height);
  for (double& level : wanted) level = static_cast<double>(random() % 256);
  Bitmap* page =
      Page(width, height, [&](INT x, INT y) { return DWORD(wanted[y * width + x]) * 0x010101; });
  const std::vector<double> levels = wanted;
  Bitmap* dots = Own(BitmapRasterizer::Dither(page, eFloydSteinberg, 0));
  for (INT i = 0; i < width * height; ++i) {
    const INT x = i % width;
    // Whole numbers may decide otherwise where it is a near thing.
    const bool printed = Pixel(dots, x, i / width) != 0;
    if (std::abs(wanted[i] - 128) > 1) {
      ASSERT_EQ(printed, wanted[i] >= 128) << i;
    }
    const double white = printed ? 255 : 0;
    const auto isOwn = [&](INT dx, INT dy) {
      const INT to = i + dy * width + dx;
      return x + dx < 0 || x + dx >= width || to >= width * height || levels[to] == 0 ||
             levels[to] == 255;
    };
    const auto pass = [&](INT dx, INT dy, double part) {
      if (!isOwn(dx, dy)) wanted[i + dy * width + dx] += (wanted[i] - white) * part / 16;
    };
    if (isOwn(0, 0)) continue;
    // The part that a dot of the page's own at the lower left would get goes down.
    pass(1, 0, 7), pass(1, 1, 1), pass(-1, 1, 3), pass(0, 1, isOwn(-1, 1) ? 8 : 5);
  }
}

// Changes from dot to dot along the rows of a flat grey: the finer the pattern, the more of them.
TEST_F(Halftones, ParametersCoarsenThePattern) {
  Bitmap* grey = Page(256, 256, [](INT x, INT) { return x < 128 ? 0x606060u : 0x909090u; });
  const auto changes = [&](eBitmapDitherer ditherer, INT parameter) {
    Bitmap* dots = Own(BitmapRasterizer::Dither(grey, ditherer, parameter));
    INT count = 0;
    for (INT i = 1; i < 65536; ++i) {
      if (i % 256 != 0) count += Pixel(dots, i % 256, i / 256) != Pixel(dots, i % 256 - 1, i / 256);
    }
    return count;
  };
  EXPECT_NEAR(changes(eOrdered, 1), 2 * changes(eOrdered, 2), 600);
  EXPECT_NEAR(changes(eBlueNoise, 1), 4 * changes(eBlueNoise, 4), 900);
  EXPECT_NEAR(changes(eClusteredDot, 4), 2 * changes(eClusteredDot, 8), 600);
  EXPECT_EQ(changes(eClusteredDot, 4), changes(eClusteredDot, 0));
  EXPECT_EQ(changes(eClusteredDot, 16), changes(eClusteredDot, 255));
  EXPECT_LT(changes(eClusteredDiffusion, 255), 0.75 * changes(eFloydSteinberg, 0));
  EXPECT_LT(changes(eClusteredDiffusion, 0), changes(eClusteredDiffusion, 100));
}

// No clumps and no holes: every square of a flat tint holds nearly the same number of dots.
TEST_F(Halftones, BlueNoiseIsEven) {
  Bitmap* dots = Own(
      BitmapRasterizer::Dither(Page(192, 192, [](INT, INT) { return 0xE0E0E0u; }), eBlueNoise, 0));
  for (INT square = 0; square < 22 * 22; ++square) {
    const INT left = square % 22 * 8, top = square / 22 * 8;
    INT black = 0;
    for (INT i = 0; i < 24 * 24; ++i) black += Pixel(dots, left + i % 24, top + i / 24) == 0;
    EXPECT_NEAR(black, 24 * 24 * 31 / 255.0, 8);
  }
}

// With a gain of 20 %, what covers 0.31 of the paper prints as 0.31 + 0.8 x 0.31 x 0.69 = 0.48, and
// so on.
TEST_F(Halftones, DotGainIsTakenBack) {
  const TempHome home;
  home.WriteFile("system.toml", "dot_gain = 20");
  for (const DWORD level : {0u, 1u, 40u, 128u, 220u, 254u, 255u}) {
    Bitmap* dots = Own(BitmapRasterizer::Dither(
        Page(256, 256, [level](INT, INT) { return level * 0x010101; }), eFloydSteinberg, 0));
    const double covered = Covered(dots);
    EXPECT_NEAR(covered + 0.8 * covered * (1 - covered), 1 - level / 255.0, 0.01) << level;
  }
}

}  // namespace
