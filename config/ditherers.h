// The ditherers, which turn grey into dots; docs/image_quality.md shows each. A new one is a row
// here and a row of the shared library's table (vlx_shared/halftone.cpp).
#pragma once

#include <string_view>

#include "platform/types.h"

// Values not listed mean eFloydSteinberg. Parameter 0 is the default, which suits most labels; a
// parameter beyond its range counts as the range's end. Black and white pixels of the page come out
// as they are, whatever the ditherer.
enum eBitmapDitherer : WORD {
  eThreshold = 0,           // parameter: the level below which a pixel is black, 0 means 128
  eFloydSteinberg = 1,      // error diffusion; parameter: levels of noise on the threshold
  eOrdered = 2,             // Bayer's 8 x 8 pattern; parameter: dots of a step, 1 to 8, 0 means 1
  eClusteredDot = 3,        // round dots at 45 degrees; parameter: cell, 2 to 16 dots, 0 means 4
  eBlueNoise = 4,           // a blue-noise mask; parameter: dots of a step, 1 to 4, 0 means 1
  eClusteredDiffusion = 5,  // error diffusion that keeps dots together; parameter: how strongly,
                            // 1 to 255, 0 means 192
};

// Their names in settings, at the index of their number.
inline constexpr std::string_view kDithererNames[] = {
    "threshold", "floyd-steinberg", "ordered", "clustered-dot", "blue-noise", "clustered-diffusion",
};
