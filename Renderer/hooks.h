// The document and page hooks that replace the driver's own functions. Each does the plug-in's work
// and output first, then calls the driver's function, which the device state keeps. They decide
// when a captured page is printed: one hook late, at the start of the next page or at the end of
// the document.
#pragma once

#include "platform/driver.h"

// All return TRUE on success. Without a device state behind the surface they return FALSE with last
// error ERROR_INVALID_PARAMETER and do nothing. A device object without a devmode fails only the
// work that reads it: the driver's function is called and the document still ends with a clean
// state.
BOOL APIENTRY OEMStartDoc(SURFOBJ* pso, LPWSTR pwszDocName, DWORD dwJobId);
BOOL APIENTRY OEMEndDoc(SURFOBJ* pso, FLONG fl);
BOOL APIENTRY OEMStartPage(SURFOBJ* pso);
BOOL APIENTRY OEMSendPage(SURFOBJ* pso);
BOOL APIENTRY OEMStartBanding(SURFOBJ* pso, POINTL* pptl);
BOOL APIENTRY OEMNextBand(SURFOBJ* pso, POINTL* pptl);
