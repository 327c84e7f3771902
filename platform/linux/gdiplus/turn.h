// Quarter turns of bytes.
#pragma once

#include "platform/linux/gdiplus/geometry.h"

namespace Gdiplus {

// The bytes turned at a time; the first row is the lowest.
struct TurnBand {
  static constexpr INT kRows = 16;
  static constexpr INT kColumns = 128;  // rows of the turned page that fit the second-level cache
  alignas(64) BYTE bytes[kRows][kColumns];
};

// Turns the first count rows and columns of the band clockwise: byte [i][x] goes to place i of the
// target's row x. Uses vectors if the processor has them.
void TurnClockwise(const TurnBand& band, INT count, INT columns, const PixelRows& target);

}  // namespace Gdiplus
