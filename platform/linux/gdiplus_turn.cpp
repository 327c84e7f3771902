// The quarter turn in blocks of 16 rows and 4 columns: each block gives 48 bytes, three vectors, of
// 4 target rows. Blocks go in tiles whose rows stay in the cache and in the translation buffer.

#include "platform/linux/gdiplus_turn.h"

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

void TurnBlocks(const PixelRows&, INT, INT, const PixelRows&, INT&, INT&) {}  // no block

#else

constexpr INT kBlockRows = 16;
constexpr INT kBlockColumns = 4;
constexpr INT kTilePx = 64;
constexpr INT kReadPx = 6;  // a vector of 16 bytes reaches into the sixth pixel

using Bytes = hn::FixedTag<uint8_t, 16>;
using Words = hn::FixedTag<uint32_t, 4>;
using Vector = hn::Vec<Bytes>;

struct Four {
  Vector of[4];
};

// Pixels x to x + 3 of four rows, from the lowest row up: of[i] is column x + i, 12 bytes and
// zeros.
HWY_INLINE Four Columns(const PixelRows& source, INT x, INT lowestRow) {
  const Bytes bytes;
  const Words words;
  alignas(16) static constexpr uint8_t kSpread[16] = {0, 1, 2, 0x80, 3, 4,  5,  0x80,
                                                      6, 7, 8, 0x80, 9, 10, 11, 0x80};
  alignas(16) static constexpr uint8_t kPack[16] = {0,  1,  2,  4,  5,    6,    8,    9,
                                                    10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};
  const auto spread = hn::Load(bytes, kSpread);
  const auto pack = hn::Load(bytes, kPack);
  const auto row = [&](INT up) {
    const Vector pixels = hn::LoadU(bytes, source.Row(lowestRow - up) + 3 * x);
    return hn::BitCast(words, hn::TableLookupBytesOr0(pixels, spread));
  };
  const auto a = row(0), b = row(1), c = row(2), d = row(3);
  const auto ab = hn::InterleaveLower(words, a, b), cd = hn::InterleaveLower(words, c, d);
  const auto ab2 = hn::InterleaveUpper(words, a, b), cd2 = hn::InterleaveUpper(words, c, d);
  const auto packed = [&](auto column) {
    return hn::TableLookupBytesOr0(hn::BitCast(bytes, column), pack);
  };
  return {{packed(hn::ConcatLowerLower(words, cd, ab)), packed(hn::ConcatUpperUpper(words, cd, ab)),
           packed(hn::ConcatLowerLower(words, cd2, ab2)),
           packed(hn::ConcatUpperUpper(words, cd2, ab2))}};
}

// A block whose lowest row is lowestRow; its pixels begin at to in the first of four target rows.
HWY_INLINE void TurnBlock(const PixelRows& source, INT x, INT lowestRow, BYTE* to,
                          std::ptrdiff_t strideBytes) {
  const Bytes bytes;
  const Four p = Columns(source, x, lowestRow), q = Columns(source, x, lowestRow - 4);
  const Four r = Columns(source, x, lowestRow - 8), s = Columns(source, x, lowestRow - 12);
  for (INT i = 0; i < kBlockColumns; ++i, to += strideBytes) {
    hn::StoreU(hn::Or(p.of[i], hn::ShiftLeftBytes<12>(bytes, q.of[i])), bytes, to);
    hn::StoreU(
        hn::Or(hn::ShiftRightBytes<4>(bytes, q.of[i]), hn::ShiftLeftBytes<8>(bytes, r.of[i])),
        bytes, to + 16);
    hn::StoreU(
        hn::Or(hn::ShiftRightBytes<8>(bytes, r.of[i]), hn::ShiftLeftBytes<4>(bytes, s.of[i])),
        bytes, to + 32);
  }
}

// Whole blocks only; returns by reference how far they reach.
void TurnBlocks(const PixelRows& source, INT width, INT height, const PixelRows& target,
                INT& columns, INT& rows) {
  columns = std::max(width - kReadPx + kBlockColumns, 0) / kBlockColumns * kBlockColumns;
  rows = height / kBlockRows * kBlockRows;
  for (INT top = 0; top < rows; top += kTilePx) {
    const INT bottom = std::min(top + kTilePx, rows);
    for (INT left = 0; left < columns; left += kTilePx) {
      const INT right = std::min(left + kTilePx, columns);
      for (INT x = left; x < right; x += kBlockColumns) {
        for (INT y = bottom; y > top; y -= kBlockRows) {
          TurnBlock(source, x, y - 1, target.Row(x) + 3 * (height - y), target.strideBytes);
        }
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

struct Area {
  INT left, top, right, bottom;
};

void TurnArea(const PixelRows& source, INT height, const PixelRows& target, const Area& area) {
  for (INT x = area.left; x < area.right; ++x) {
    BYTE* to = target.Row(x) + 3 * (height - area.bottom);
    for (INT y = area.bottom - 1; y >= area.top; --y, to += 3) {
      std::memcpy(to, source.Row(y) + 3 * x, 3);
    }
  }
}

}  // namespace

void TurnClockwise(const PixelRows& source, INT width, INT height, const PixelRows& target) {
  INT columns = 0;
  INT rows = 0;
  HWY_DYNAMIC_DISPATCH(TurnBlocks)(source, width, height, target, columns, rows);
  TurnArea(source, height, target, {columns, 0, width, height});
  TurnArea(source, height, target, {0, rows, columns, height});
}

}  // namespace Gdiplus
#endif
