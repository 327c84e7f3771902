#include "Renderer/page_geometry.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>

namespace {

TEST(PageGeometry, FollowsPaperMarginsAndResolution) {
  const struct {
    LONG width, length;
    Margins margins;
    ULONG dpi;
    std::array<LONG, 8> expected;  // printable in micrometres, in pixels, physical, offset
  } rows[] = {
      {100000, 60000, {2000, 1000, 0, 500}, 300, {97000, 59500, 1146, 703, 1181, 708, 23, 0}},
      {10000, 10000, {90000, 1000, 0, 20000}, 300, {0, 0, 0, 0, 118, 118, 118, 0}},
      // Margins whose sum wraps to exactly the paper: nothing is left, and nothing is moved.
      {10000, 10000, {90000, 0u - 80000, 0, 10000}, 300, {0, 0, 0, 0, 118, 118, 1062, 0}},
      {101600, 152400, {0, 0, 0, 0}, 203, {101600, 152400, 812, 1218, 812, 1218, 0, 0}},
      {50000, 30000, {0, 0, 0, 0}, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
      {25400, 50800, {0, 0, 0, 0}, 1, {25400, 50800, 1, 2, 1, 2, 0, 0}},
      {-500, -3276800, {100, 0, 0, 0}, 300, {0, 0, 0, 0, -6, -38703, -6, -38703}},
      // Half a step of 100 micrometres: each single-precision step counts.
      {1015300, 1015300, {0, 0, 0, 0}, 203, {1015200, 1015200, 8114, 8114, 8114, 8114, 0, 0}},
  };
  for (const auto& row : rows) {
    const auto got = std::bit_cast<std::array<LONG, 8>>(
        ComputePageGeometry(row.width, row.length, row.margins, row.dpi, row.dpi));
    EXPECT_EQ(got, row.expected) << row.width << " at " << row.dpi;
  }
}

}  // namespace
