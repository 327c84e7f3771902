// A quarter turn of bytes.
#pragma once

#include "platform/linux/gdiplus/geometry.h"

namespace Gdiplus {

// A band of rows that is turned at a time, the first of them the lowest.
struct TurnBand {
  static constexpr INT kRows = 16;
  static constexpr INT kColumns = 128;  // so many rows of a page fit into a second-level cache
  alignas(64) BYTE bytes[kRows][kColumns];
};

// Turns count rows and columns columns of the band clockwise: byte [i][x] goes to place i of the
// target's row x. In vectors where the processor has them.
void TurnClockwise(const TurnBand& band, INT count, INT columns, const PixelRows& target);

}  // namespace Gdiplus
