// Which pixels print in black and which in the highlight colour.

#include <array>
#include <cmath>

#include "tests/vlx_shared/bitmaps.h"

namespace {

class ColorSplit : public Bitmaps {
 protected:
  struct Inks {
    Colors black, highlight;
  };
  Inks Split(Bitmap* page, DWORD highlight, double tolerance,
             eBitmapDitherer ditherer = eFloydSteinberg) {
    Bitmap *first = nullptr, *second = nullptr;
    EXPECT_EQ(BitmapHelper::SplitImage(page, 0xFF000000 | highlight, tolerance, ditherer, 0, &first,
                                       &second),
              1);
    return {ColorsOf(*Own(first)), ColorsOf(*Own(second))};
  }
};

TEST_F(ColorSplit, PureColoursComeOutBitForBit) {
  for (const INT width : {1, 7, 64, 65}) {
    Colors page(width * 40), black, highlight;
    for (DWORD& color : page) {
      color = std::array{0x000000u, 0xFFFFFFu, 0x12AB34u}[random() % 3];
      black.push_back(color == 0 ? 0 : 0xFFFFFF);
      highlight.push_back(color == 0x12AB34 ? 0 : 0xFFFFFF);
    }
    for (const WORD ditherer : {0, 1, 2, 3, 4, 5, 9}) {
      for (const double tolerance : {0.0, -1.0, 0.25, 7.0, std::nan("")}) {
        const Inks inks = Split(Page(width, page), 0x12AB34, tolerance, eBitmapDitherer{ditherer});
        ASSERT_TRUE(inks.black == black && inks.highlight == highlight) << ditherer;
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
    for (const eBitmapDitherer ditherer : {eFloydSteinberg, eBlueNoise, eClusteredDiffusion}) {
      const Inks inks = Split(FlatPage(row.color), row.highlight, row.tolerance, ditherer);
      EXPECT_NEAR(Covered(inks.black), row.blackPart, 0.02) << std::hex << row.color;
      EXPECT_NEAR(Covered(inks.highlight), row.highlightPart, 0.02) << std::hex << row.color;
      for (INT i = 0; i < 65536; ++i) ASSERT_TRUE(inks.black[i] | inks.highlight[i]);  // no overlap
    }
  }
}

// Every coverage that anti-aliasing makes at an edge, as drawing programs round it.
TEST_F(ColorSplit, AntiAliasedEdgesHaveNoFringe) {
  for (const DWORD color : {0xFF0000u, 0xED1C24u, 0x0060C0u, 0x12AB34u, 0xF7C600u, 0x7A1020u}) {
    for (const double tolerance : {0.0, 0.1, 0.25, 1.0}) {
      Colors blended(65536), greys(65536);
      for (DWORD i = 0; i < 65536; ++i) {
        const DWORD coverage = i % 256;
        greys[i] = coverage * 0x010101;
        for (int shift = 0; shift < 24; shift += 8) {
          const DWORD channel = color >> shift & 0xFF;
          blended[i] |= ((255 - coverage) * 255 + coverage * channel + 127) / 255 << shift;
        }
      }
      const Inks colored = Split(Page(256, blended), color, tolerance);
      const Inks grey = Split(Page(256, greys), color, tolerance);
      EXPECT_EQ(Covered(colored.black), 0) << std::hex << color;
      EXPECT_EQ(Covered(grey.highlight), 0) << std::hex << color;
      EXPECT_NEAR(Covered(colored.highlight), 0.5, tolerance / 8 + 0.01) << std::hex << color;
    }
  }
}

}  // namespace
