// Captures the bands of a page into the page buffer. Portrait bands are appended in the order they
// arrive. Landscape bands are strips that arrive from right to left; each is written at its own x
// offset, into a buffer whose size the first strip gives. Rows are 24-bit pixels padded to 4 bytes
// and are neither flipped nor reordered.
#pragma once

#include "config/device_state.h"

struct Band {
  const BYTE* pixels;  // may be null for a blank band
  const BITMAPINFOHEADER* header;
  DWORD format;  // code of the bits per pixel: 1 is 1, 2 is 4, 3 is 8, 5 is 24
  POINT offset;  // pixels in the page
  bool blank;
  SHORT orientation;  // of the public devmode
};

// Adds the band to the state's page. Returns false and logs the failure if there is no memory or
// the page size is impossible. If the page could not grow it is dropped, and the next band starts a
// new one.
bool CaptureBand(COemPDEV& state, const Band& band);
