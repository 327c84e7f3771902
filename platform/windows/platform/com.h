// COM: the system's own.
#pragma once

#include "platform/com_ptr.h"
#include "platform/types.h"
// After windows.h.
#include <objbase.h>
#include <objidl.h>
