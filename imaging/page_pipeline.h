// From the captured 24-bit page to the images that the printer receives.
#pragma once

#include "platform/driver.h"

// Runs at every page boundary: emits the captured page, if there is one, and prepares the set-up
// commands and devmode copies of the coming page. Returns 1, or 0 when the page was not emitted.
INT ProcessImageData(SURFOBJ* pso);
