// Error diffusion in vector code, included once for each kind of vector unit. A pixel depends on
// the one at its left and on those above, up to one column to the right. So 32 rows run at once,
// one in each lane, each row two columns behind the one above it. Lane 0 is the lowest row: its
// errors, which the next strip needs, are stored with the whole vector, and the next step
// overwrites the other lanes.

#if defined(VLX_RASTER_WAVEFRONT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VLX_RASTER_WAVEFRONT_INL_H
#undef VLX_RASTER_WAVEFRONT_INL_H
#else
#define VLX_RASTER_WAVEFRONT_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "platform/transpose-inl.h"
#include "vlx_shared/raster_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vlx::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR && !HWY_HAVE_SCALABLE

using Lanes = hn::FixedTag<std::int16_t, HWY_MAX_BYTES >= 32 ? 16 : 8>;
using LaneVec = hn::Vec<Lanes>;
constexpr Lanes kLaneTag;
constexpr INT kLanes = static_cast<INT>(hn::MaxLanes(kLaneTag));
constexpr INT kVectors = kStripRows / kLanes;
constexpr INT kSkew =
    2 * (kStripRows - 1);  // steps from column 0 of the first row to that of the last
constexpr INT kTileSteps = 16;

// The levels of 16 steps: [step][lane]; lane 0 is the strip's last row.
using Tile = BYTE[kTileSteps][kStripRows];

// Where the 16 levels of a tile's lane are in the strip.
inline BYTE* TileRow(const LevelStrip& strip, INT firstStep, INT lane) {
  return strip.Row(kStripRows - 1 - lane) + firstStep - kSkew + 2 * lane;
}

// Returns whether the tile has a level that is neither black nor white.
inline bool LoadTile(const LevelStrip& strip, INT firstStep, Tile& tile) {
  const hn::FixedTag<std::uint8_t, 16> d;
  const auto one = hn::Set(d, 1);
  auto most = hn::Zero(d);
  for (INT half = 0; half < kStripRows; half += 16) {
    hn::Vec<hn::FixedTag<std::uint8_t, 16>> rows[16];
    for (INT i = 0; i < 16; ++i) {
      rows[i] = hn::LoadU(d, TileRow(strip, firstStep, half + i));
      most = hn::Max(most, hn::Add(rows[i], one));
    }
    Transpose16x16(d, rows);
    for (INT i = 0; i < 16; ++i) hn::Store(rows[i], d, &tile[i][half]);
  }
  return !hn::AllFalse(d, hn::Gt(most, one));
}

inline void StoreTile(const LevelStrip& strip, INT firstStep, const Tile& tile) {
  const hn::FixedTag<std::uint8_t, 16> d;
  for (INT half = 0; half < kStripRows; half += 16) {
    hn::Vec<hn::FixedTag<std::uint8_t, 16>> rows[16];
    for (INT i = 0; i < 16; ++i) rows[i] = hn::Load(d, &tile[i][half]);
    Transpose16x16(d, rows);
    for (INT i = 0; i < 16; ++i) hn::StoreU(rows[i], d, TileRow(strip, firstStep, half + i));
  }
}

// Each lane takes the number of the lane above it, the last lane that of lane 0 of next.
HWY_INLINE LaneVec SlideDown(LaneVec vector, LaneVec next) {
  if constexpr (kLanes == 16) next = hn::ConcatLowerUpper(kLaneTag, next, vector);
  return hn::CombineShiftRightBytes<2>(kLaneTag, next, vector);
}

// The last kSteps numbers that the row above each lane made, in the lanes of the rows that need
// them.
template <int kSteps>
struct Above {
  LaneVec last[kSteps][kVectors];

  // made: this step's numbers. carried: the number of the strip above for the first row.
  HWY_INLINE void Push(const LaneVec (&made)[kVectors], const std::int16_t* carried) {
    for (int age = kSteps - 1; age > 0; --age) {
      for (INT j = 0; j < kVectors; ++j) last[age][j] = last[age - 1][j];
    }
    for (INT j = 0; j < kVectors; ++j) {
      last[0][j] = SlideDown(made[j], j + 1 < kVectors ? made[j + 1 < kVectors ? j + 1 : j]
                                                       : hn::LoadU(kLaneTag, carried));
    }
  }
};

// RowNoise for all rows of a strip.
class FrontNoise {
 public:
  FrontNoise(const DiffusionRule& rule)
      : m_range(hn::Set(kLaneTag, static_cast<std::int16_t>(rule.noise))) {
    alignas(64) std::uint16_t state[kStripRows];
    alignas(64) std::uint16_t factor[kStripRows];
    for (INT lane = 0; lane < kStripRows; ++lane) {
      const INT row = rule.pageRow + kStripRows - 1 - lane;
      state[lane] = RowNoise::Seed(row);
      factor[lane] = RowNoise::Factor(row);
    }
    for (INT j = 0; j < kVectors; ++j) {
      m_state[j] = hn::Load(kUnsigned, state + j * kLanes);
      m_factor[j] = hn::Load(kUnsigned, factor + j * kLanes);
    }
    // At step 0 a lane stands at column 2 x lane - kSkew.
    for (INT done = 0; done < -RowNoise::kFirstColumn; ++done) {
      for (INT j = 0; j < kVectors; ++j) {
        const auto lane = hn::Iota(kUnsigned, static_cast<std::uint16_t>(j * kLanes));
        const auto due =
            hn::Add(hn::Add(lane, lane), hn::Set(kUnsigned, -kSkew - RowNoise::kFirstColumn));
        const auto before = m_state[j];
        Advance(j);
        m_state[j] = hn::IfThenElse(
            hn::Gt(due, hn::Set(kUnsigned, static_cast<std::uint16_t>(done))), m_state[j], before);
      }
    }
  }

  HWY_INLINE LaneVec Next(INT j) {
    Advance(j);
    return hn::MulHigh(hn::BitCast(kLaneTag, m_state[j]), m_range);
  }
  void Skip(INT steps) {
    for (INT i = 0; i < steps * kVectors; ++i) Advance(i % kVectors);
  }

 private:
  static constexpr hn::RebindToUnsigned<Lanes> kUnsigned{};
  HWY_INLINE void Advance(INT j) {
    m_state[j] = hn::Add(hn::Mul(m_state[j], m_factor[j]), hn::Set(kUnsigned, RowNoise::kOffset));
  }
  const LaneVec m_range;
  hn::Vec<hn::RebindToUnsigned<Lanes>> m_state[kVectors];
  hn::Vec<hn::RebindToUnsigned<Lanes>> m_factor[kVectors];
};

// One ink's way through a strip. kShaped: with feedback and noise. kSecond: gives way to the dots
// of the other ink.
template <bool kShaped, bool kSecond>
class Front {
 public:
  Front(const DiffusionRule& rule, const DiffusionState& state)
      : m_state(state), m_feedback(hn::Set(kLaneTag, static_cast<std::int16_t>(rule.feedback))) {
    Rest(-1);
  }

  // One step of vector j. blocked: where the other ink has dots. Returns where this one has dots.
  HWY_INLINE hn::Mask<Lanes> Decide(INT j, BYTE* levels, LaneVec noise, hn::Mask<Lanes> blocked) {
    const hn::Rebind<std::uint8_t, Lanes> bytes;
    const auto set = [](int value)
                         HWY_ATTR { return hn::Set(kLaneTag, static_cast<std::int16_t>(value)); };
    const LaneVec level = hn::PromoteTo(kLaneTag, hn::Load(bytes, levels + j * kLanes));
    const LaneVec share = hn::IfThenElse(hn::Eq(m_error[j], hn::Zero(kLaneTag)), set(8), set(5));
    const LaneVec above = hn::Add(m_errors.last[2][j], hn::Mul(m_errors.last[0][j], set(3)));
    const LaneVec left = hn::Add(above, hn::Sub(hn::ShiftLeft<3>(m_error[j]), m_error[j]));
    const LaneVec sum = hn::Add(left, hn::Mul(m_errors.last[1][j], share));
    const LaneVec wanted = hn::Add(hn::ShiftLeft<3>(level), hn::ShiftRight<4>(sum));
    LaneVec compared = wanted;
    if constexpr (kShaped) {
      compared = hn::Add(hn::Add(wanted, noise), hn::Add(m_dot[j], m_dots.last[1][j]));
    }
    auto white = hn::Gt(compared, set(8 * 128 - 1));
    if constexpr (kSecond) white = hn::Or(white, blocked);
    const auto isWhite = hn::Eq(level, set(255));
    const auto pure = hn::Or(isWhite, hn::Eq(level, set(0)));
    LaneVec error = hn::Sub(wanted, hn::IfThenElseZero(white, set(8 * 255)));
    if constexpr (kSecond) error = hn::Min(hn::Max(error, set(-kLargestError)), set(kLargestError));
    m_error[j] = hn::IfThenZeroElse(pure, hn::Or(error, set(1)));
    if constexpr (kShaped) {
      const LaneVec dot = hn::IfThenElse(white, m_feedback, hn::Neg(m_feedback));
      m_dot[j] = hn::IfThenZeroElse(pure, dot);
    }
    const auto stays = hn::Or(isWhite, hn::AndNot(pure, white));
    hn::Store(hn::DemoteTo(bytes, hn::IfThenElseZero(stays, set(255))), bytes, levels + j * kLanes);
    return hn::Not(stays);
  }

  // Ends a step: hands errors to the rows below, those of the lowest row to the next strip.
  HWY_INLINE void Step(INT step) {
    m_errors.Push(m_error, m_state.error + step + 2);
    hn::StoreU(m_error[0], kLaneTag, m_state.error + step - kSkew);
    if constexpr (kShaped) {
      m_dots.Push(m_dot, m_state.dots + step + 2);
      hn::StoreU(m_dot[0], kLaneTag, m_state.dots + step - kSkew);
    }
  }

  // Skips the steps of a tile without greys, which passes no errors on.
  void SkipTile(INT firstStep) {
    std::fill_n(m_state.error + firstStep - kSkew, kTileSteps, std::int16_t{0});
    if constexpr (kShaped) {
      std::fill_n(m_state.dots + firstStep - kSkew, kTileSteps, std::int16_t{0});
    }
    Rest(firstStep + kTileSteps - 1);
  }

 private:
  // Sets the state after steps without errors up to this one.
  void Rest(INT step) {
    for (INT j = 0; j < kVectors; ++j) m_error[j] = m_dot[j] = hn::Zero(kLaneTag);
    for (INT age = 2; age >= 0; --age) {
      m_errors.Push(m_error, m_state.error + step - age + 2);
      if constexpr (kShaped) m_dots.Push(m_dot, m_state.dots + step - age + 2);
    }
  }

  const DiffusionState m_state;
  const LaneVec m_feedback;
  LaneVec m_error[kVectors];  // of the pixels at the left
  LaneVec m_dot[kVectors];
  Above<3> m_errors = {};
  Above<2> m_dots = {};
};

template <bool kShaped>
HWY_INLINE void DiffuseOne(const LevelStrip& strip, const DiffusionRule& rule,
                           const DiffusionState& state) {
  Front<kShaped, false> front(rule, state);
  FrontNoise noise(rule);
  alignas(64) Tile tile;
  const auto free = hn::FirstN(kLaneTag, 0);
  for (INT first = 0; first < strip.widthPx + kSkew; first += kTileSteps) {
    if (!LoadTile(strip, first, tile)) {
      front.SkipTile(first);
      if constexpr (kShaped) noise.Skip(kTileSteps);
      continue;
    }
    for (INT i = 0; i < kTileSteps; ++i) {
      for (INT j = 0; j < kVectors; ++j) {
        front.Decide(j, tile[i], kShaped ? noise.Next(j) : hn::Zero(kLaneTag), free);
      }
      front.Step(first + i);
    }
    StoreTile(strip, first, tile);
  }
}

template <bool kShaped>
HWY_INLINE void DiffuseBoth(const LevelStrip& black, const LevelStrip& highlight,
                            const DiffusionRule& rule, const DiffusionState& blackState,
                            const DiffusionState& highlightState) {
  Front<kShaped, false> blackFront(rule, blackState);
  Front<kShaped, true> highlightFront(rule, highlightState);
  FrontNoise noise(rule);
  alignas(64) Tile blackTile;
  alignas(64) Tile highlightTile;
  const auto free = hn::FirstN(kLaneTag, 0);
  for (INT first = 0; first < black.widthPx + kSkew; first += kTileSteps) {
    const bool blackGrey = LoadTile(black, first, blackTile);
    const bool highlightGrey = LoadTile(highlight, first, highlightTile);
    if (!blackGrey && !highlightGrey) {
      blackFront.SkipTile(first);
      highlightFront.SkipTile(first);
      if constexpr (kShaped) noise.Skip(kTileSteps);
      continue;
    }
    for (INT i = 0; i < kTileSteps; ++i) {
      for (INT j = 0; j < kVectors; ++j) {
        const LaneVec shift = kShaped ? noise.Next(j) : hn::Zero(kLaneTag);
        const auto dots = blackFront.Decide(j, blackTile[i], shift, free);
        highlightFront.Decide(j, highlightTile[i], hn::Neg(shift), dots);
      }
      blackFront.Step(first + i);
      highlightFront.Step(first + i);
    }
    StoreTile(black, first, blackTile);
    StoreTile(highlight, first, highlightTile);
  }
}

void Diffuse(const LevelStrip& strip, const DiffusionRule& rule, const DiffusionState& state) {
  if (rule.feedback == 0 && rule.noise == 0) {
    DiffuseOne<false>(strip, rule, state);
  } else {
    DiffuseOne<true>(strip, rule, state);
  }
}

void DiffuseTwo(const LevelStrip& black, const LevelStrip& highlight, const DiffusionRule& rule,
                const DiffusionState& blackState, const DiffusionState& highlightState) {
  if (rule.feedback == 0 && rule.noise == 0) {
    DiffuseBoth<false>(black, highlight, rule, blackState, highlightState);
  } else {
    DiffuseBoth<true>(black, highlight, rule, blackState, highlightState);
  }
}

#endif

}  // namespace vlx::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
