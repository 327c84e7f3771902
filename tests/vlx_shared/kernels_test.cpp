// The vector kernels give the plain ones' bytes, whatever the width, and touch nothing beyond it.

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#ifdef VLX_VECTOR
#include <hwy/highway.h>
#endif

#include "vlx_shared/raster_kernels.h"

namespace {

// The vector kernels for every kind of unit that this processor has; none in a build without them.
std::vector<const RasterKernels*> VectorSets() {
  std::vector<const RasterKernels*> sets;
#ifdef VLX_VECTOR
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::GetChosenTarget().Update(target);
    sets.push_back(&BestKernels());
  }
  hwy::GetChosenTarget().DeInit();
  EXPECT_NE(sets.front(), &PlainKernels());
#else
  EXPECT_EQ(&BestKernels(), &PlainKernels());
#endif
  return sets;
}

const INT kWidths[] = {1, 2, 7, 8, 15, 16, 31, 32, 33, 63, 64, 65, 95, 97, 128, 255, 1201};

class Kernels : public ::testing::Test {
 protected:
  // Bytes as pages have them: runs of paper, of black and of anything.
  std::vector<BYTE> Bytes(std::size_t count) {
    std::vector<BYTE> bytes;
    while (bytes.size() < count) {
      const std::size_t run = 1 + random() % 150;
      const unsigned kind = random() % 5;
      for (std::size_t i = 0; i < run; ++i) {
        bytes.push_back(kind == 0   ? 255
                        : kind == 1 ? 0
                        : kind == 2 ? 255 * (random() % 2)
                                    : static_cast<BYTE>(random()));
      }
    }
    bytes.resize(count);
    return bytes;
  }
  // Runs work with each set on the same bytes; all bytes and the result must be equal.
  void Compare(const std::vector<BYTE>& bytes,
               const std::function<int(const RasterKernels&, BYTE*)>& work) {
    std::vector<BYTE> plain = bytes;
    const int result = work(PlainKernels(), plain.data());
    for (const RasterKernels* set : sets) {
      std::vector<BYTE> vector = bytes;
      EXPECT_EQ(work(*set, vector.data()), result);
      ASSERT_TRUE(plain == vector);
    }
  }

  const std::vector<const RasterKernels*> sets = VectorSets();
  std::mt19937 random{11};
};

TEST_F(Kernels, RowsAreEqual) {
  for (const INT width : kWidths) {
    for (int round = 0; round < 20; ++round) {
      // Pixels first, then room for two rows of levels with something behind them.
      const std::vector<BYTE> bytes = Bytes(3 * width + 2 * (width + 40));
      const INT at = 3 * width;
      const INT second = at + width + 40;
      Compare(bytes, [&](auto& k, BYTE* b) { return k.Grey(b, width, b + at); });
      Compare(bytes, [&](auto& k, BYTE* b) { return k.PackLevels(b + at, width, b), 0; });
      Compare(bytes, [&](auto& k, BYTE* b) { return k.Pack(b, width, b + at), 0; });
      const INT period = 1 + static_cast<INT>(random() % 70);
      std::vector<BYTE> thresholds;
      for (INT i = 0; i < period + kStripMargin; ++i) {
        thresholds.push_back(i < period ? 1 + random() % 255 : thresholds[i - period]);
      }
      Compare(bytes, [&](auto& k, BYTE* b) {
        return k.Screen(b + at, width, thresholds.data(), period), 0;
      });
      Compare(bytes, [&](auto& k, BYTE* b) {
        return k.ScreenTwo(b + at, b + second, width, thresholds.data(), period), 0;
      });
    }
  }
}

// Every colour that a little highlight, tolerance and hue can bring to an edge of the rule.
TEST_F(Kernels, SplitIsEqualForAllColors) {
  std::vector<BYTE> bytes;
  for (int color = 0; color < 1 << 15; ++color) {
    for (const int channel : {color & 31, color >> 5 & 31, color >> 10}) {
      bytes.push_back(static_cast<BYTE>(channel * 255 / 31));
    }
  }
  const INT count = 1 << 15;
  bytes.resize(bytes.size() + 2 * count);
  for (const Gdiplus::ARGB highlight : {0xFF0000u, 0x00FF00u, 0xFFFF00u, 0x0072BCu, 0x807070u,
                                        0x907060u, 0x101010u, 0xFFFFFFu, 0x300000u}) {
    for (const double tolerance : {0.0, 0.1, 0.25, 0.5, 1.0}) {
      const ColorMixture mixture(highlight, tolerance);
      Compare(bytes, [&](auto& k, BYTE* b) {
        return k.Split(b, count, mixture, b + 3 * count, b + 4 * count);
      });
    }
  }
}

// Three strips after each other: what one hands to the next counts too.
TEST_F(Kernels, DiffusionIsEqual) {
  const DiffusionRule rules[] = {{0, 0, 0}, {192, 576, 0}, {0, 2040, 64}, {255, 765, 7}};
  for (const INT width : kWidths) {
    const INT rowSize = width + 2 * kStripMargin;
    const INT inkSize = kStripRows * rowSize;
    std::vector<BYTE> page = Bytes(3 * 2 * inkSize + 4 * rowSize * sizeof(std::int16_t));
    for (INT i = 0; i < 3 * 2 * inkSize; ++i) {
      const INT x = i % rowSize - kStripMargin;
      if (x < 0 || x >= width) page[i] = 255;
    }
    std::fill(page.begin() + 3 * 2 * inkSize, page.end(), 0);  // the states, at first clear
    for (const DiffusionRule& rule : rules) {
      const auto diffuse = [&](const RasterKernels& kernels, BYTE* bytes, bool two) {
        auto* state = reinterpret_cast<std::int16_t*>(bytes + 6 * inkSize) + kStripMargin;
        for (INT strip = 0; strip < 3; ++strip) {
          const DiffusionRule here = {rule.feedback, rule.noise, rule.pageRow + strip * kStripRows};
          const LevelStrip black{bytes + 2 * strip * inkSize + kStripMargin, rowSize, width};
          const LevelStrip highlight{black.origin + inkSize, rowSize, width};
          const DiffusionState blackState{state, state + rowSize};
          const DiffusionState highlightState{state + 2 * rowSize, state + 3 * rowSize};
          if (two) {
            kernels.DiffuseTwo(black, highlight, here, blackState, highlightState);
          } else {
            kernels.Diffuse(black, here, blackState);
          }
        }
        return 0;
      };
      Compare(page, [&](auto& k, BYTE* bytes) { return diffuse(k, bytes, false); });
      Compare(page, [&](auto& k, BYTE* bytes) { return diffuse(k, bytes, true); });
    }
  }
}

}  // namespace
