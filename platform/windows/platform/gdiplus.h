// GDI+: the system's own.
#pragma once

#include <algorithm>

#include "platform/com.h"

namespace Gdiplus {
// gdiplus.h calls the macros of windows.h, which are turned off.
using std::max;
using std::min;
}  // namespace Gdiplus

#include <gdiplus.h>
