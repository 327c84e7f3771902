// Levels of one or two inks become dots, strip by strip down a page.
#pragma once

#include <array>
#include <memory>
#include <optional>

#include "config/vlx_shared.h"
#include "vlx_shared/raster_kernels.h"
#include "vlx_shared/screens.h"

// The working memory of a page and its ditherer. Not for more than one page or thread.
class Halftone {
 public:
  // inks: 1, or 2 for black and highlight, which then never print on each other. Throws
  // std::bad_alloc.
  Halftone(eBitmapDitherer ditherer, INT parameter, INT widthPx, INT inks);

  // A row of the strip's levels: in before Dither, dots (0 and 255) after it.
  BYTE* Row(INT ink, INT row) { return m_strips[ink].Row(row); }

  // Dithers the first rows rows of the strip, at most kStripRows; the strips of a page follow each
  // other from its top. hasGrey false promises that the levels are dots already.
  void Dither(INT rows, bool hasGrey);

 private:
  void ApplyToneCurve(INT rows);
  void ApplyScreen(INT rows);
  void ApplyDiffusion(INT rows);

  const INT m_inks;
  const std::optional<std::array<BYTE, 256>> m_toneCurve;  // none: levels print as they are
  INT m_pageRow = 0;
  DiffusionRule m_rule = {};
  std::optional<Screen> m_screen;
  std::unique_ptr<BYTE[]> m_levels;
  std::size_t m_stateSize = 0;
  std::unique_ptr<std::int16_t[]> m_states;
  bool m_stateIsClear = true;
  LevelStrip m_strips[2] = {};
  DiffusionState m_state[2] = {};
};
