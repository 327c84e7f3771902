// From the captured 24-bit page to the images that the printer receives.
#pragma once

#include "platform/driver.h"

// Runs at every page boundary: emits the captured page, if there is one, and prepares the set-up
// commands and devmode copies of the coming page. Returns 0 when an argument is missing or a stage
// before the emission failed, what SendImageToPrinter returned after it, and 1 when there was no
// image to send.
INT ProcessImageData(SURFOBJ* pso);
