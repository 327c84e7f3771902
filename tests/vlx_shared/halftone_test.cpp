// Greys become dots, and the page's own dots stay.

#include <cmath>

#include "tests/support/temp_home.h"
#include "tests/vlx_shared/bitmaps.h"

namespace {

std::vector<eBitmapDitherer> Ditherers() {
  std::vector<eBitmapDitherer> all = {eBitmapDitherer{99}};
  for (WORD i = 0; i < std::size(kDithererNames); ++i) all.push_back(eBitmapDitherer{i});
  return all;
}
const std::vector<eBitmapDitherer> kDitherers = Ditherers();

bool IsOwn(DWORD color) { return color == 0 || color == 0xFFFFFF; }

class Halftones : public Bitmaps {
 protected:
  Colors Dots(Bitmap* page, eBitmapDitherer ditherer, INT parameter = 0) {
    return ColorsOf(*Own(BitmapRasterizer::Dither(page, ditherer, parameter)));
  }
};

TEST_F(Halftones, BlackAndWhiteStayAndTouchNothingBesideThem) {
  for (const INT width : {1, 7, 64, 65, 150}) {
    Colors colors(width * 70), inverse;
    for (DWORD& color : colors) {
      color = (random() % 2 == 0 ? random() % 2 * 255 : random() % 256) * 0x010101;
      inverse.push_back(IsOwn(color) ? color ^ 0xFFFFFF : color);
    }
    for (const eBitmapDitherer ditherer : kDitherers) {
      for (const INT parameter : {0, 1, 255}) {
        const Colors dots = Dots(Page(width, colors), ditherer, parameter);
        const Colors others = Dots(Page(width, inverse), ditherer, parameter);
        for (std::size_t i = 0; i < colors.size(); ++i) {
          // Black turned white beside a grey does not change its dot.
          ASSERT_EQ(dots[i], IsOwn(colors[i]) ? colors[i] : others[i]);
          ASSERT_TRUE(IsOwn(dots[i])) << ditherer;
        }
      }
    }
  }
}

// With a gain of 20 %, what covers 0.31 of the paper prints as 0.31 + 0.8 x 0.31 x 0.69 = 0.48, and
// so on.
TEST_F(Halftones, GreyKeepsItsToneWhateverTheDotGain) {
  const TempHome home;
  for (const int gain : {0, 20}) {
    home.WriteFile("system.toml", "dot_gain = " + std::to_string(gain));
    for (const DWORD level : {0u, 1u, 4u, 31u, 64u, 128u, 200u, 250u, 254u, 255u}) {
      for (const eBitmapDitherer ditherer : kDitherers) {
        for (const INT parameter : {0, 3, 200}) {
          if (ditherer == eThreshold && gain != 0) continue;
          const double threshold = parameter == 0 ? 128 : parameter;
          const double white = ditherer == eThreshold ? level >= threshold : level / 255.0;
          const double covered = Covered(Dots(FlatPage(level * 0x010101), ditherer, parameter));
          EXPECT_NEAR(covered + gain * 0.04 * covered * (1 - covered), 1 - white, 0.012)
              << level << ' ' << ditherer << ' ' << parameter;
        }
      }
    }
  }
}

// The method as its authors describe it, in fractions, and with its one change at the edges.
TEST_F(Halftones, FloydSteinbergRunsLeftToRightInEveryRow) {
  const INT width = 24, size = width * 40;
  Colors colors(size);
  for (DWORD& color : colors) color = random() % 256 * 0x010101;
  std::vector<double> wanted;
  for (const DWORD color : colors) wanted.push_back(color & 0xFF);
  const Colors dots = Dots(Page(width, colors), eFloydSteinberg);
  for (INT i = 0; i < size; ++i) {
    // Integer arithmetic may decide borderline pixels differently.
    if (std::abs(wanted[i] - 128) > 1) {
      ASSERT_EQ(dots[i] != 0, wanted[i] >= 128) << i;
    }
    const double error = wanted[i] - (dots[i] & 0xFF);
    const auto isOwn = [&](INT dx, INT dy) {
      const INT x = i % width + dx, to = i + dy * width + dx;
      return x < 0 || x >= width || to >= size || IsOwn(colors[to]);
    };
    const auto pass = [&](INT dx, INT dy, double part) {
      if (!isOwn(dx, dy)) wanted[i + dy * width + dx] += error * part / 16;
    };
    if (isOwn(0, 0)) continue;
    // The part that a dot of the page's own at the lower left would get goes down.
    pass(1, 0, 7), pass(1, 1, 1), pass(-1, 1, 3), pass(0, 1, isOwn(-1, 1) ? 8 : 5);
  }
}

// Changes from dot to dot along the rows of a flat grey: the finer the pattern, the more of them.
TEST_F(Halftones, ParametersCoarsenThePattern) {
  Colors grey(65536, 0x606060);
  for (INT i = 0; i < 65536; ++i) grey[i] += i % 256 < 128 ? 0 : 0x303030;
  const auto changes = [&](eBitmapDitherer ditherer, INT parameter) {
    const Colors dots = Dots(Page(256, grey), ditherer, parameter);
    INT count = 0;
    for (INT i = 1; i < 65536; ++i) count += i % 256 != 0 && dots[i] != dots[i - 1];
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
  const Colors dots = Dots(FlatPage(0xE0E0E0), eBlueNoise);
  for (INT square = 0; square < 30 * 30; ++square) {
    INT black = 0;
    for (INT i = 0; i < 24 * 24; ++i) {
      black += dots[(square / 30 * 8 + i / 24) * 256 + square % 30 * 8 + i % 24] == 0;
    }
    EXPECT_NEAR(black, 24 * 24 * 31 / 255.0, 8);
  }
}

}  // namespace
