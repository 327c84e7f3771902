// What is printed in black and what in the highlight colour.

#include <cmath>

#include "tests/vlx_shared/bitmaps.h"

namespace {

class ColorSplit : public Bitmaps {
 protected:
  struct Inks {
    Bitmap* black;
    Bitmap* highlight;
  };
  Inks Split(Bitmap* page, DWORD highlight, double tolerance,
             eBitmapDitherer ditherer = eFloydSteinberg) {
    Inks inks = {};
    EXPECT_EQ(BitmapHelper::SplitImage(page, 0xFF000000 | highlight, tolerance, ditherer, 0,
                                       &inks.black, &inks.highlight),
              1);
    Own(inks.black);
    Own(inks.highlight);
    return inks;
  }
};

TEST_F(ColorSplit, PureColoursComeOutBitForBit) {
  const DWORD colors[] = {0x000000, 0xFFFFFF, 0x12AB34};
  for (const INT width : {1, 7, 64, 65}) {
    std::vector<DWORD> pixels(width * 40);
    for (DWORD& pixel : pixels) pixel = colors[random() % 3];
    Bitmap* page = Page(width, 40, [&](INT x, INT y) { return pixels[y * width + x]; });
    for (const WORD ditherer : {0, 1, 2, 3, 4, 5, 9}) {
      for (const double tolerance : {0.0, -1.0, 0.25, 7.0, std::nan("")}) {
        const Inks inks = Split(page, 0x12AB34, tolerance, eBitmapDitherer{ditherer});
        for (INT i = 0; i < width * 40; ++i) {
          ASSERT_EQ(Pixel(inks.black, i % width, i / width) == 0, pixels[i] == 0);
          ASSERT_EQ(Pixel(inks.highlight, i % width, i / width) == 0, pixels[i] == 0x12AB34);
        }
      }
    }
  }
}

TEST_F(ColorSplit, ColoursBecomeTheirMixture) {
  struct Row {
    DWORD highlight, color;
    double tolerance, blackPart, highlightPart;
  };
  const Row rows[] = {
      {0xFF0000, 0xFF8080, 0.25, 0.0, 0.5},   // half covered
      {0xFF0000, 0x800000, 0.25, 0.5, 0.5},   // half black
      {0xFF0000, 0x995959, 0.25, 0.4, 0.25},  // some of each
      {0xFF0000, 0x808080, 0.25, 0.5, 0.0},   // grey
      {0xFF0000, 0xED1C24, 0.25, 0.0, 1.0},   // nearly the highlight
      {0xFF0000, 0xED1C24, 0.05, 0.07, 0.8},  // as it is
      {0xFF0000, 0xED1C24, 0.0, 0.65, 0.0},   // no mixture of these inks
      {0xFF0000, 0xFF8000, 0.25, 0.0, 0.75},  // orange: its hue is near
      {0xFF0000, 0x0000FF, 0.25, 0.89, 0.0},  // blue: by its brightness
      {0xFF0000, 0x00FF00, 1.0, 0.41, 0.0},   // green: never
      {0xFF0000, 0xFFFF00, 0.25, 0.11, 0.0},  // yellow: too far
      {0xFF0000, 0xFFFF00, 0.34, 0.0, 0.5},   // yellow: 60 degrees off
      {0x0060C0, 0x80B0E0, 0.1, 0.0, 0.5},    // another highlight, half covered
      {0x0060C0, 0xFF0000, 0.25, 0.7, 0.0},
      {0x808080, 0x808080, 0.25, 0.0, 1.0},  // a grey highlight is matched by itself only
      {0x808080, 0xC0C0C0, 0.25, 0.25, 0.0},
      {0xFFFFFF, 0x808080, 0.25, 0.5, 0.0},  // as highlights, black and white are nothing
  };
  for (const Row& row : rows) {
    Bitmap* page = Page(128, 128, [&](INT, INT) { return row.color; });
    for (const eBitmapDitherer ditherer : {eFloydSteinberg, eBlueNoise, eClusteredDiffusion}) {
      const Inks inks = Split(page, row.highlight, row.tolerance, ditherer);
      EXPECT_NEAR(Covered(inks.black), row.blackPart, 0.02) << std::hex << row.color;
      EXPECT_NEAR(Covered(inks.highlight), row.highlightPart, 0.02) << std::hex << row.color;
      for (INT i = 0; i < 128 * 128; ++i) {
        // No dot lies on another.
        ASSERT_TRUE(Pixel(inks.black, i % 128, i / 128) | Pixel(inks.highlight, i % 128, i / 128));
      }
    }
  }
}

// Every coverage that anti-aliasing makes at an edge, as drawing programs round it.
TEST_F(ColorSplit, AntiAliasedEdgesHaveNoFringe) {
  for (const DWORD color : {0xFF0000u, 0xED1C24u, 0x0060C0u, 0x12AB34u, 0xF7C600u, 0x7A1020u}) {
    for (const double tolerance : {0.0, 0.1, 0.25, 1.0}) {
      const auto blend = [color](INT coverage) {
        DWORD blended = 0;
        for (int shift = 0; shift < 24; shift += 8) {
          const DWORD channel = color >> shift & 0xFF;
          blended |= ((255 - coverage) * 255 + coverage * channel + 127) / 255 << shift;
        }
        return blended;
      };
      const Inks colored =
          Split(Page(256, 64, [&](INT x, INT) { return blend(x); }), color, tolerance);
      const Inks grey =
          Split(Page(256, 64, [](INT x, INT) { return x * 0x010101u; }), color, tolerance);
      EXPECT_EQ(Covered(colored.black), 0) << std::hex << color;
      EXPECT_EQ(Covered(grey.highlight), 0) << std::hex << color;
      EXPECT_NEAR(Covered(colored.highlight), 0.5, tolerance / 8 + 0.01) << std::hex << color;
    }
  }
}

}  // namespace
