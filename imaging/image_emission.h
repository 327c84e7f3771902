// Writing one page to the printer: its images, as far as the printer does not hold them already,
// and the commands that set up the page and place them.
#pragma once

#include "platform/driver.h"
#include "platform/gdiplus.h"

// pbmpBackground and pbmpHighlight are 1-bit images of the page and stay the caller's;
// pbmpHighlight is null in one-colour mode. Returns 0, last error ERROR_INVALID_PARAMETER and
// nothing written, when an argument is missing; else 1, also when the images could not be encoded
// or the memory ran out (the log tells).
INT SendImageToPrinter(SURFOBJ* pso, Gdiplus::Bitmap* pbmpBackground,
                       Gdiplus::Bitmap* pbmpHighlight, bool bBackgroundEmpty, bool bHighlightEmpty);
