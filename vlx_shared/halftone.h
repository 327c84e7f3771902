// Turns a page into dots of one or two inks.
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

// Turns pixels into levels of each ink and remembers whether any of them was grey.
class LevelReader : public PixelReduction {
 public:
  void Reduce(const BYTE* pixels, INT count, BYTE* const* levels) final {
    m_hasGrey |= Levels(pixels, count, levels);
  }
  // Whether a level since the last call was neither 0 nor 255.
  bool TakeHasGrey() { return std::exchange(m_hasGrey, false); }

 protected:
  ~LevelReader() = default;

 private:
  // Returns whether any level is neither 0 nor 255.
  virtual bool Levels(const BYTE* pixels, INT count, BYTE* const* levels) = 0;

  bool m_hasGrey = false;
};

// The ditherer of one page and its working memory. Use a new one for each page; not thread-safe.
class Halftone {
 public:
  // inks: 1, or 2 for black and highlight, which never print on the same dot. Throws
  // std::bad_alloc.
  Halftone(eBitmapDitherer ditherer, INT parameter, INT widthPx, INT inks);

  // Makes the dots of a whole page. dots: for each ink 1-bit rows of the page's size, locked for
  // writing. Throws std::bad_alloc if the page is null or pixels cannot be read or locked.
  void Print(Gdiplus::Bitmap* page, LevelReader& reader,
             std::initializer_list<const LockedRows*> dots);

 private:
  // Rows read at once. A turned page is read by its columns, which is slow for a few rows.
  static constexpr INT kRows = 4 * kStripRows;

  // A row of levels. Dithering replaces them by dots, 0 and 255.
  BYTE* Row(INT ink, INT row) { return m_levels[ink].Row(row); }
  LevelStrip Strip(INT ink, INT top) const;
  // Dithers the first rows of the levels. hasGrey: false if they are all 0 or 255.
  void Dither(INT rows, bool hasGrey);
  void ApplyToneCurve(INT rows);
  void ApplyScreen(INT rows);
  void ApplyDiffusion(INT rows);

  const INT m_inks;
  const std::optional<std::array<BYTE, 256>> m_toneCurve;  // nullopt: no correction
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
