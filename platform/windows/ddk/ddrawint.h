// winddi.h includes this header, which the compiler's headers lack. A printer driver has no drawing
// surfaces in video memory, so opaque names will do.
#pragma once

struct DD_CALLBACKS;
struct DD_DIRECTDRAW_GLOBAL;
struct DD_HALINFO;
struct DD_PALETTECALLBACKS;
struct DD_SURFACE_LOCAL;
struct DD_SURFACECALLBACKS;
struct VIDEOMEMORY;
using PDD_SURFACE_LOCAL = DD_SURFACE_LOCAL*;
