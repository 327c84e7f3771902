// A page becomes dots of one or two inks.
#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <optional>
#include <utility>

#include "config/vlx_shared.h"
#include "vlx_shared/pixels.h"
#include "vlx_shared/raster_kernels.h"
#include "vlx_shared/screens.h"

// Makes levels of each ink from pixels, and remembers whether there are greys among them.
class LevelReader : public PixelReduction {
 public:
  void Reduce(const BYTE* pixels, INT count, BYTE* const* levels) final {
    m_hasGrey |= Levels(pixels, count, levels);
  }
  // Whether one of the pixels since the last call is neither black nor white.
  bool TakeHasGrey() { return std::exchange(m_hasGrey, false); }

 protected:
  ~LevelReader() = default;

 private:
  // Returns whether a level is neither 0 nor 255.
  virtual bool Levels(const BYTE* pixels, INT count, BYTE* const* levels) = 0;

  bool m_hasGrey = false;
};

// The working memory of a page and its ditherer. Not for more than one page or thread.
class Halftone {
 public:
  // inks: 1, or 2 for black and highlight, which then never print on each other. Throws
  // std::bad_alloc.
  Halftone(eBitmapDitherer ditherer, INT parameter, INT widthPx, INT inks);

  // Makes the dots of a whole page. dots: 1-bit rows of each ink, locked for writing and of the
  // page's size. Throws std::bad_alloc when a bitmap is null or its pixels cannot be had.
  void Print(Gdiplus::Bitmap* page, LevelReader& reader,
             std::initializer_list<const LockedRows*> dots);

 private:
  // How many rows of levels are read at once, as many as the platform turns at a time: where the
  // page lies turned, few rows of it are many small pieces of memory.
  static constexpr INT kRows = 4 * kStripRows;

  // A row of levels, which become dots (0 and 255).
  BYTE* Row(INT ink, INT row) { return m_levels[ink].Row(row); }
  LevelStrip Strip(INT ink, INT top) const;
  // Dithers the first rows of the levels. hasGrey false promises that they are dots already.
  void Dither(INT rows, bool hasGrey);
  void ApplyToneCurve(INT rows);
  void ApplyScreen(INT rows);
  void ApplyDiffusion(INT rows);

  const INT m_inks;
  const std::optional<std::array<BYTE, 256>> m_toneCurve;  // none: levels print as they are
  INT m_pageRow = 0;
  DiffusionRule m_rule = {};
  std::optional<Screen> m_screen;
  std::unique_ptr<BYTE[]> m_memory;
  std::size_t m_stateSize = 0;
  std::unique_ptr<std::int16_t[]> m_states;
  bool m_stateIsClear = true;
  LevelStrip m_levels[2] = {};  // kRows rows
  DiffusionState m_state[2] = {};
};
