// How rows of grey levels become black and white dots.
#pragma once

#include <memory>
#include <span>

#include "config/vlx_shared.h"

// Goes down a page row by row. Black (0) and white (255) stay what they are: they take no error
// from their neighbours and pass none on, so that text and bar codes keep their edges to the dot.
class RowDitherer {
 public:
  virtual ~RowDitherer() = default;
  // levels: the row's grey levels in, 0 or 255 out; always the same width.
  virtual void Dither(std::span<BYTE> levels) = 0;
};

// The ditherer of that number for rows of a width. Throws std::bad_alloc.
std::unique_ptr<RowDitherer> MakeRowDitherer(eBitmapDitherer ditherer, INT parameter, INT widthPx);
