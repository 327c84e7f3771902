// Threshold screens: squares of thresholds that cover the page like tiles. A pixel prints black if
// its level is below the threshold at its place.
#pragma once

#include <cstddef>
#include <vector>

#include "vlx_shared/raster_kernels.h"

// A square of thresholds, row by row.
struct Tile {
  INT side;
  std::vector<BYTE> thresholds;
};

// The tiles of the ditherers that are screens. parameter: see config/ditherers.h. Throw
// std::bad_alloc.
Tile ThresholdTile(INT parameter);
Tile OrderedTile(INT parameter);
Tile ClusteredDotTile(INT parameter);
Tile BlueNoiseTile(INT parameter);

class Screen {
 public:
  // Throws std::bad_alloc.
  explicit Screen(const Tile& tile);

  INT Period() const { return m_side; }
  // Whether the screen decides like RasterKernels::PackLevels. One ink then needs no screen.
  bool IsPlain() const { return m_side == 1 && m_rows[0] == kMiddle; }
  // The thresholds of page row y, for RasterKernels::Screen.
  const BYTE* Row(INT y) const { return m_rows.data() + std::size_t(y % m_side) * m_strideBytes; }

 private:
  INT m_side = 1;
  std::size_t m_strideBytes = 0;
  std::vector<BYTE> m_rows;
};
