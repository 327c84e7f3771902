// The device driver interface: the system's own.
#pragma once

#include "platform/types.h"
// After windows.h.
#include <winddi.h>
