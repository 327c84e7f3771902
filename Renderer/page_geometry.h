// Fits the device's page geometry to the paper and the non-printable margins.
#pragma once

#include <string>

#include "platform/driver.h"

// Micrometres.
struct Margins {
  DWORD left = 0;
  DWORD right = 0;
  DWORD top = 0;
  DWORD bottom = 0;
};

// The geometry of a page in pixels, sizes in micrometres.
struct PageGeometry {
  LONG printableWidthUm;
  LONG printableHeightUm;
  LONG printableWidthPx;
  LONG printableHeightPx;
  LONG physicalWidthPx;
  LONG physicalHeightPx;
  LONG offsetXPx;
  LONG offsetYPx;
};

// The margins of a landscape page, turned by a quarter.
Margins TurnedForLandscape(const Margins& margins);

// Paper size in micrometres, resolution in dots per inch. Single precision throughout: the driver's
// other components round the same way.
PageGeometry ComputePageGeometry(LONG paperWidthUm, LONG paperLengthUm, const Margins& margins,
                                 ULONG dpiX, ULONG dpiY);

// Replaces the fields that differ from the geometry by more than rounding does: 200 micrometres or
// more, or more than 2 pixels. Returns the replacements as text for the log; empty if there are
// none.
std::string UpdateGdiInfo(GDIINFO& gdiInfo, const PageGeometry& geometry);
