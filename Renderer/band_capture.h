// The capture of bands into the page buffer. Portrait bands are appended as they come; landscape
// bands are strips from right to left, written beside each other into a buffer that the first one
// sizes. Rows are 24-bit pixels padded to 4 bytes; nothing is flipped or reordered.
#pragma once

#include "config/device_state.h"

struct Band {
  const BYTE* pixels;  // may be null for a blank band
  const BITMAPINFOHEADER* header;
  DWORD format;  // 1, 4, 8 or 24 bits per pixel as 1, 2, 3, 5
  POINT offset;  // pixels in the page
  bool blank;
  SHORT orientation;  // of the public devmode
};

// Takes the band into the state's page. False, with the failure logged, when there is no memory or
// no page of that size; a page that could not grow is given up and the next band starts anew.
bool CaptureBand(COemPDEV& state, const Band& band);
