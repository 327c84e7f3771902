// Printer handles and printer information: the system's own.
#pragma once

#include "platform/driver.h"
// After windows.h.
#include <winspool.h>
