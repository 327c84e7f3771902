// The transpose of 16 x 16 bytes in vector code, included once for each kind of vector unit.

#if defined(VLX_PLATFORM_TRANSPOSE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VLX_PLATFORM_TRANSPOSE_INL_H
#undef VLX_PLATFORM_TRANSPOSE_INL_H
#else
#define VLX_PLATFORM_TRANSPOSE_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vlx::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// Transposes 16 rows of 16 bytes: one block for every 16 bytes of a vector. Interleaves rows i and
// i + 8 four times, the perfect shuffle of Stone, "Parallel Processing with the Perfect Shuffle",
// 1971.
template <class Tag>
HWY_INLINE void Transpose16x16(Tag tag, hwy::HWY_NAMESPACE::Vec<Tag> (&rows)[16]) {
  namespace hn = hwy::HWY_NAMESPACE;
#pragma GCC unroll 4
  for (int step = 0; step < 4; ++step) {
    hn::Vec<Tag> next[16];
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) {
      next[2 * i] = hn::InterleaveLower(tag, rows[i], rows[i + 8]);
      next[2 * i + 1] = hn::InterleaveUpper(tag, rows[i], rows[i + 8]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) rows[i] = next[i];
  }
}

#endif

}  // namespace vlx::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
