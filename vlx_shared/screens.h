// Threshold screens: tables of levels that are laid over the page like tiles. A pixel prints black
// where its level is below the threshold.
#pragma once

#include <cstddef>
#include <vector>

#include "config/vlx_shared.h"

class Screen {
 public:
  // The screen of a ditherer that has one (eThreshold, eOrdered, eClusteredDot, eBlueNoise).
  // Throws std::bad_alloc.
  Screen(eBitmapDitherer ditherer, INT parameter);

  INT Period() const { return m_side; }
  // The thresholds of page row y, for RasterKernels::Screen.
  const BYTE* Row(INT y) const { return m_rows.data() + std::size_t(y % m_side) * m_strideBytes; }

 private:
  INT m_side = 1;
  std::size_t m_strideBytes = 0;
  std::vector<BYTE> m_rows;
};
