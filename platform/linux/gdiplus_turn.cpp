// The quarter turn in blocks of 16 rows and 4 or 8 columns: each gives 48 bytes of as many target
// rows. Blocks go in tiles whose rows stay in the cache and in the translation buffer.

#include "platform/linux/gdiplus_turn.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/linux/gdiplus_turn.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Gdiplus::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void TurnBlocks(const PixelRows&, INT, INT, INT, const PixelRows&, INT&, INT&) {}  // no block

#else

constexpr INT kBlockRows = 16;
constexpr INT kTilePx = 64;

// Every 16 bytes of a vector are worked on by themselves, with four columns.
#if HWY_MAX_BYTES >= 32 && !HWY_HAVE_SCALABLE
constexpr size_t kVectorBytes = 32;
#else
constexpr size_t kVectorBytes = 16;
#endif
using Bytes = hn::FixedTag<uint8_t, kVectorBytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using Pairs = hn::Repartition<uint64_t, Bytes>;
using Vector = hn::Vec<Bytes>;
using HalfBytes = hn::FixedTag<uint8_t, 16>;
constexpr INT kBlockColumns = static_cast<INT>(kVectorBytes) / 4;
constexpr INT kReadPx = kBlockColumns + 2;  // a load of 16 bytes reaches two pixels further

HWY_INLINE Vector LoadColumns(const BYTE* pixels) {
  const HalfBytes half;
#if HWY_MAX_BYTES >= 32 && !HWY_HAVE_SCALABLE
  return hn::Combine(Bytes(), hn::LoadU(half, pixels + 12), hn::LoadU(half, pixels));
#else
  return hn::LoadU(half, pixels);
#endif
}

// Stores the 16 bytes of four columns, and those of the next four, a group of rows further down.
HWY_INLINE void StoreRows(Vector rows, BYTE* to, std::ptrdiff_t strideBytes) {
  const HalfBytes half;
#if HWY_MAX_BYTES >= 32 && !HWY_HAVE_SCALABLE
  hn::StoreU(hn::LowerHalf(half, rows), half, to);
  hn::StoreU(hn::UpperHalf(half, rows), half, to + 4 * strideBytes);
#else
  (void)strideBytes;
  hn::StoreU(rows, half, to);
#endif
}

struct Columns {
  Vector of[4];
};

// Pixels of four rows from lowestRow up, turned: of[i] holds column i, its 12 bytes put in their
// places by place.
HWY_INLINE Columns Turn(const PixelRows& source, INT x, INT lowestRow, const uint8_t* place) {
  const Bytes bytes;
  const Words words;
  const Pairs pairs;
  alignas(16) static constexpr uint8_t kSpread[16] = {0, 1, 2, 0x80, 3, 4,  5,  0x80,
                                                      6, 7, 8, 0x80, 9, 10, 11, 0x80};
  const Vector spread = hn::LoadDup128(bytes, kSpread);
  const Vector places = hn::LoadDup128(bytes, place);
  const auto row = [&](INT up) {
    const Vector pixels = LoadColumns(source.Row(lowestRow - up) + 3 * x);
    return hn::BitCast(words, hn::TableLookupBytesOr0(pixels, spread));
  };
  const auto a = row(0), b = row(1), c = row(2), d = row(3);
  const auto ab = hn::BitCast(pairs, hn::InterleaveLower(words, a, b));
  const auto cd = hn::BitCast(pairs, hn::InterleaveLower(words, c, d));
  const auto ab2 = hn::BitCast(pairs, hn::InterleaveUpper(words, a, b));
  const auto cd2 = hn::BitCast(pairs, hn::InterleaveUpper(words, c, d));
  const auto placed = [&](auto column) {
    return hn::TableLookupBytesOr0(hn::BitCast(bytes, column), places);
  };
  return {{placed(hn::InterleaveLower(pairs, ab, cd)), placed(hn::InterleaveUpper(pairs, ab, cd)),
           placed(hn::InterleaveLower(pairs, ab2, cd2)),
           placed(hn::InterleaveUpper(pairs, ab2, cd2))}};
}

// A block whose lowest row is lowestRow; its pixels begin at to in the first of the target rows.
// Four times 12 bytes fill three times 16: the second and the third lie across.
HWY_INLINE void TurnBlock(const PixelRows& source, INT x, INT lowestRow, BYTE* to,
                          std::ptrdiff_t strideBytes) {
  constexpr uint8_t no = 0x80;
  alignas(16) static constexpr uint8_t kPlaces[4][16] = {
      {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, no, no, no, no},
      {5, 6, 8, 9, 10, 12, 13, 14, no, no, no, no, 0, 1, 2, 4},
      {10, 12, 13, 14, no, no, no, no, 0, 1, 2, 4, 5, 6, 8, 9},
      {no, no, no, no, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14}};
  alignas(16) static constexpr uint32_t kFirst[4] = {~0u, 0, 0, 0};
  alignas(16) static constexpr uint32_t kLast[4] = {0, 0, 0, ~0u};
  const Bytes bytes;
  const Words words;
  const Pairs pairs;
  const auto first = hn::MaskFromVec(hn::BitCast(bytes, hn::LoadDup128(words, kFirst)));
  const auto last = hn::MaskFromVec(hn::BitCast(bytes, hn::LoadDup128(words, kLast)));
  const Columns p = Turn(source, x, lowestRow, kPlaces[0]);
  const Columns q = Turn(source, x, lowestRow - 4, kPlaces[1]);
  const Columns r = Turn(source, x, lowestRow - 8, kPlaces[2]);
  const Columns s = Turn(source, x, lowestRow - 12, kPlaces[3]);
  for (INT i = 0; i < 4; ++i, to += strideBytes) {
    StoreRows(hn::IfThenElse(last, q.of[i], p.of[i]), to, strideBytes);
    StoreRows(
        hn::BitCast(bytes, hn::OddEven(hn::BitCast(pairs, r.of[i]), hn::BitCast(pairs, q.of[i]))),
        to + 16, strideBytes);
    StoreRows(hn::IfThenElse(first, r.of[i], s.of[i]), to + 32, strideBytes);
  }
}

// Fetches what the block further up reads: the rows lie too far apart for the processor to foresee.
HWY_INLINE void FetchBlock(const PixelRows& source, INT x, INT lowestRow) {
  for (INT i = 0; i < kBlockRows; ++i) hwy::Prefetch(source.Row(lowestRow - i) + 3 * x);
}

// Whole blocks only, in columns of tiles from the bottom up, so that the target's rows grow to the
// right; returns by reference how far they reach.
void TurnBlocks(const PixelRows& source, INT width, INT height, INT readable,
                const PixelRows& target, INT& columns, INT& rows) {
  columns = std::min(width, readable - kReadPx + kBlockColumns) / kBlockColumns * kBlockColumns;
  columns = std::max(columns, 0);
  rows = height / kBlockRows * kBlockRows;
  for (INT left = 0; left < columns; left += kTilePx) {
    const INT right = std::min(left + kTilePx, columns);
    for (INT y = rows; y > 0; y -= kBlockRows) {
      for (INT x = left; x < right; x += kBlockColumns) {
        if (y > kBlockRows) FetchBlock(source, x, y - kBlockRows - 1);
        TurnBlock(source, x, y - 1, target.Row(x) + 3 * (height - y), target.strideBytes);
      }
    }
  }
}

#endif

}  // namespace Gdiplus::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Gdiplus {

HWY_EXPORT(TurnBlocks);

namespace {

// The pixels from (left, top) up to (right, bottom) of a source of that height.
void TurnPart(const PixelRows& source, INT height, const PixelRows& target, INT left, INT top,
              INT right, INT bottom) {
  for (INT x = left; x < right; ++x) {
    BYTE* to = target.Row(x) + 3 * (height - bottom);
    for (INT y = bottom - 1; y >= top; --y, to += 3) {
      std::memcpy(to, source.Row(y) + 3 * x, 3);
    }
  }
}

}  // namespace

void TurnClockwise(const PixelRows& source, INT width, INT height, INT readable,
                   const PixelRows& target) {
  INT columns = 0;
  INT rows = 0;
  HWY_DYNAMIC_DISPATCH(TurnBlocks)(source, width, height, readable, target, columns, rows);
  TurnPart(source, height, target, columns, 0, width, height);
  TurnPart(source, height, target, 0, rows, columns, height);
}

}  // namespace Gdiplus
#endif
