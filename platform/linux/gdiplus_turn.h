// A quarter turn of 24-bit pixels.
#pragma once

#include <cstddef>

#include "platform/types.h"

namespace Gdiplus {

// Rows of 24-bit pixels.
struct PixelRows {
  BYTE* first;
  std::ptrdiff_t strideBytes;
  BYTE* Row(INT y) const { return first + y * strideBytes; }
};

// Turns width x height pixels clockwise: source (x, y) lands at target (height - 1 - y, x). The two
// must not overlap. In vectors where the processor has them.
void TurnClockwise(const PixelRows& source, INT width, INT height, const PixelRows& target);

}  // namespace Gdiplus
