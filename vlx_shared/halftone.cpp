#include "vlx_shared/halftone.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/extensions.h"

namespace {

// Plain error diffusion: the parameter is the noise.
DiffusionRule PlainRule(INT parameter) { return {0, 8 * std::clamp(parameter, 0, 255), 0}; }

DiffusionRule ClusteredRule(INT parameter) {
  // At 192 dots stand in groups of two to four. A thermal head prints such groups evenly.
  const INT strength = parameter == 0 ? 192 : std::clamp(parameter, 1, 255);
  return {strength, 3 * strength, 0};
}

// A ditherer either lays a screen over the page or diffuses errors.
struct Ditherer {
  eBitmapDitherer number;
  Tile (*screen)(INT parameter);
  DiffusionRule (*diffusion)(INT parameter);
};
constexpr Ditherer kDitherers[] = {
    {eFloydSteinberg, nullptr, PlainRule},  // also for unknown numbers
    {eThreshold, ThresholdTile, nullptr},          {eOrdered, OrderedTile, nullptr},
    {eClusteredDot, ClusteredDotTile, nullptr},    {eBlueNoise, BlueNoiseTile, nullptr},
    {eClusteredDiffusion, nullptr, ClusteredRule},
};

const Ditherer& DithererOf(eBitmapDitherer number) {
  const auto* found = std::find_if(std::begin(kDitherers), std::end(kDitherers),
                                   [number](const Ditherer& row) { return row.number == number; });
  return found == std::end(kDitherers) ? kDitherers[0] : *found;
}

// The levels to print instead of the wanted ones. Dots print larger than they are: if they should
// cover the part a of the paper, they cover a + 4 g a (1 - a), where g is the gain at one half.
// Greys stay greys.
std::optional<std::array<BYTE, 256>> ToneCurve(INT gainPercent) {
  if (gainPercent == 0) return std::nullopt;
  const auto printed = [gainPercent](INT covered) {
    return 25500 * covered + 4 * gainPercent * covered * (255 - covered);
  };
  std::array<BYTE, 256> curve;
  INT covered = 0;
  for (INT wanted = 0; wanted <= 255; ++wanted) {
    while (covered < 255 && printed(covered) + printed(covered + 1) <= 2 * 25500 * wanted)
      ++covered;
    const INT grey = std::clamp(covered, 1, 254);
    curve[255 - wanted] = static_cast<BYTE>(255 - (wanted == 0 || wanted == 255 ? wanted : grey));
  }
  return curve;
}

}  // namespace

Halftone::Halftone(eBitmapDitherer ditherer, INT parameter, INT widthPx, INT inks)
    : m_inks(inks), m_toneCurve(ToneCurve(PlatformDotGainPercent())) {
  if (PlatformShouldFail("Halftone")) throw std::bad_alloc();
  const std::size_t rowSize = std::size_t(widthPx) + 2 * kStripMargin;
  m_memory = std::make_unique_for_overwrite<BYTE[]>(rowSize * kRows * inks);
  std::memset(m_memory.get(), 255, rowSize * kRows * inks);
  for (INT ink = 0; ink < inks; ++ink) {
    m_levels[ink] = {m_memory.get() + rowSize * kRows * ink + kStripMargin,
                     static_cast<std::ptrdiff_t>(rowSize), widthPx};
  }
  const Ditherer& used = DithererOf(ditherer);
  if (used.screen != nullptr) {
    m_screen.emplace(used.screen(parameter));
    return;
  }
  m_rule = used.diffusion(parameter);
  m_stateSize = rowSize * 2 * inks;
  m_states = std::make_unique<std::int16_t[]>(m_stateSize);
  for (INT ink = 0; ink < inks; ++ink) {
    std::int16_t* error = m_states.get() + rowSize * 2 * ink + kStripMargin;
    m_state[ink] = {error, error + rowSize};
  }
}

void Halftone::Print(Gdiplus::Bitmap* page, LevelReader& reader,
                     std::initializer_list<const LockedRows*> dots) {
  if (page == nullptr) throw std::bad_alloc();
  for (const LockedRows* bits : dots) {
    if (!bits->IsValid()) throw std::bad_alloc();
  }
  const RasterKernels& kernels = BestKernels();
  const INT height = static_cast<INT>(page->GetHeight());
  for (INT top = 0; top < height; top += kRows) {
    const INT rows = std::min(kRows, height - top);
    const BytePlane planes[2] = {{m_levels[0].origin, m_levels[0].strideBytes},
                                 {m_levels[1].origin, m_levels[1].strideBytes}};
    if (PlatformReadPlanes(page, top, rows, reader, planes, m_inks) != Gdiplus::Ok) {
      throw std::bad_alloc();
    }
    Dither(rows, reader.TakeHasGrey());
    INT ink = 0;
    for (const LockedRows* bits : dots) {
      for (INT y = 0; y < rows; ++y) {
        kernels.PackLevels(Row(ink, y), m_levels[0].widthPx, bits->Row(top + y));
      }
      ++ink;
    }
  }
}

void Halftone::Dither(INT rows, bool hasGrey) {
  if (hasGrey && m_toneCurve) ApplyToneCurve(rows);
  if (m_screen) {
    if (hasGrey && !(m_inks == 1 && m_screen->IsPlain())) ApplyScreen(rows);
  } else if (hasGrey) {
    ApplyDiffusion(rows);
  } else if (!m_stateIsClear) {
    // Rows of black and white pass no error on.
    std::fill_n(m_states.get(), m_stateSize, std::int16_t{0});
    m_stateIsClear = true;
  }
  m_pageRow += rows;
}

void Halftone::ApplyToneCurve(INT rows) {
  for (INT ink = 0; ink < m_inks; ++ink) {
    for (INT row = 0; row < rows; ++row) {
      BYTE* levels = Row(ink, row);
      for (INT x = 0; x < m_levels[0].widthPx; ++x) levels[x] = (*m_toneCurve)[levels[x]];
    }
  }
}

void Halftone::ApplyScreen(INT rows) {
  const RasterKernels& kernels = BestKernels();
  const INT period = m_screen->Period();
  for (INT row = 0; row < rows; ++row) {
    const BYTE* thresholds = m_screen->Row(m_pageRow + row);
    if (m_inks == 1) {
      kernels.Screen(Row(0, row), m_levels[0].widthPx, thresholds, period);
    } else {
      kernels.ScreenTwo(Row(0, row), Row(1, row), m_levels[0].widthPx, thresholds, period);
    }
  }
}

LevelStrip Halftone::Strip(INT ink, INT top) const {
  return {m_levels[ink].Row(top), m_levels[ink].strideBytes, m_levels[ink].widthPx};
}

void Halftone::ApplyDiffusion(INT rows) {
  const INT strips = (rows + kStripRows - 1) / kStripRows;
  for (INT ink = 0; ink < m_inks; ++ink) {
    for (INT row = rows; row < strips * kStripRows; ++row) {  // below the page's end
      std::memset(Row(ink, row), 255, m_levels[0].widthPx);
    }
  }
  for (INT top = 0; top < rows; top += kStripRows) {
    m_rule.pageRow = m_pageRow + top;
    if (m_inks == 1) {
      BestKernels().Diffuse(Strip(0, top), m_rule, m_state[0]);
    } else {
      BestKernels().DiffuseTwo(Strip(0, top), Strip(1, top), m_rule, m_state[0], m_state[1]);
    }
  }
  m_stateIsClear = false;
}
