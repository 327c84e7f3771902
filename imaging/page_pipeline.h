// The page pipeline: from the captured 24-bit page to the images that the printer receives.
#pragma once

#include "platform/driver.h"

// Runs at every page boundary: emits the captured page, if there is one, and prepares the set-up
// commands and devmode copies of the coming page. Returns 0 if an argument is missing, with last
// error ERROR_INVALID_PARAMETER, or if a stage before the emission fails; the result of
// SendImageToPrinter if an image was sent; otherwise 1.
INT ProcessImageData(SURFOBJ* pso);
