// Quarter turns of blocks of 16 x 16 bytes, one block in every 16 bytes of a vector.

#include "platform/linux/gdiplus/turn.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/linux/gdiplus/turn.cpp"
#include <hwy/foreach_target.h>
// Must follow foreach_target.h.
#include <hwy/highway.h>

#include "platform/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Gdiplus::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE

bool TurnBlocks(const TurnBand&, INT, const PixelRows&) { return false; }

#else

constexpr INT kBlock = TurnBand::kRows;
using Bytes = hn::FixedTag<uint8_t, HWY_MAX_BYTES >= 64 ? 64 : HWY_MAX_BYTES>;
using Vector = hn::Vec<Bytes>;

// Stores the 16 bytes of each block of a vector, 16 rows below those of the block before. Stores
// only rows below the number rows.
template <class Tag>
HWY_INLINE void StoreBlocks(Tag tag, hn::Vec<Tag> blocks, INT rows, BYTE* to,
                            std::ptrdiff_t strideBytes) {
  if constexpr (hn::MaxLanes(tag) == kBlock) {
    if (rows > 0) hn::StoreU(blocks, tag, to);
  } else {
    const hn::Half<Tag> half;
    constexpr INT kHalf = static_cast<INT>(hn::MaxLanes(half));
    StoreBlocks(half, hn::LowerHalf(half, blocks), rows, to, strideBytes);
    StoreBlocks(half, hn::UpperHalf(half, blocks), rows - kHalf, to + kHalf * strideBytes,
                strideBytes);
  }
}

bool TurnBlocks(const TurnBand& band, INT columns, const PixelRows& target) {
  const Bytes bytes;
  constexpr INT kStep = static_cast<INT>(hn::MaxLanes(bytes));
  for (INT x = 0; x < columns; x += kStep) {
    Vector rows[kBlock];
#pragma GCC unroll 16
    for (INT i = 0; i < kBlock; ++i) rows[i] = hn::Load(bytes, band.bytes[i] + x);
    vlx::HWY_NAMESPACE::Transpose16x16(bytes, rows);
#pragma GCC unroll 16
    for (INT i = 0; i < kBlock; ++i) {
      StoreBlocks(bytes, rows[i], columns - x - i, target.Row(x + i), target.strideBytes);
    }
  }
  return true;
}

#endif

}  // namespace Gdiplus::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Gdiplus {

HWY_EXPORT(TurnBlocks);

void TurnClockwise(const TurnBand& band, INT count, INT columns, const PixelRows& target) {
  if (count == TurnBand::kRows && HWY_DYNAMIC_DISPATCH(TurnBlocks)(band, columns, target)) return;
  for (INT x = 0; x < columns; ++x) {
    for (INT i = 0; i < count; ++i) target.Row(x)[i] = band.bytes[i][x];
  }
}

}  // namespace Gdiplus
#endif
