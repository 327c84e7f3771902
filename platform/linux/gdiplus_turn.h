// A quarter turn of 24-bit pixels.
#pragma once

#include "platform/linux/gdiplus_geometry.h"

namespace Gdiplus {

// Turns width x height pixels clockwise: source (x, y) lands at target (height - 1 - y, x). The two
// must not overlap. readable: pixels of each source row that may be read, width or more. In vectors
// where the processor has them.
void TurnClockwise(const PixelRows& source, INT width, INT height, INT readable,
                   const PixelRows& target);

}  // namespace Gdiplus
