// Writes one page to the printer: the images that it does not hold already, and the commands that
// set up the page and place the images.
#pragma once

#include "platform/driver.h"
#include "platform/gdiplus.h"

// pbmpBackground and pbmpHighlight are the page's 1-bit images and stay the caller's; pbmpHighlight
// is null in one-colour mode. Returns 0 if an argument is missing, with last error
// ERROR_INVALID_PARAMETER and nothing written. Otherwise returns 1, even if an image could not be
// encoded or memory ran out; the log's END line then says 0.
INT SendImageToPrinter(SURFOBJ* pso, Gdiplus::Bitmap* pbmpBackground,
                       Gdiplus::Bitmap* pbmpHighlight, bool bBackgroundEmpty, bool bHighlightEmpty);
