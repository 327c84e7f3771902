// Threshold screens: tables of levels that are laid over the page like tiles. A pixel prints black
// where its level is below the threshold.
#pragma once

#include <cstddef>
#include <vector>

#include "config/vlx_shared.h"
#include "vlx_shared/raster_kernels.h"

class Screen {
 public:
  // The screen of a ditherer that has one (eThreshold, eOrdered, eClusteredDot, eBlueNoise).
  // Throws std::bad_alloc.
  Screen(eBitmapDitherer ditherer, INT parameter);

  INT Period() const { return m_side; }
  // Whether the screen decides as RasterKernels::PackLevels does, so that one ink needs none.
  bool IsPlain() const { return m_side == 1 && m_rows[0] == kMiddle; }
  // The thresholds of page row y, for RasterKernels::Screen.
  const BYTE* Row(INT y) const { return m_rows.data() + std::size_t(y % m_side) * m_strideBytes; }

 private:
  INT m_side = 1;
  std::size_t m_strideBytes = 0;
  std::vector<BYTE> m_rows;
};
