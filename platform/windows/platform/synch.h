// Interlocked counts and the critical section: all of it in windows.h.
#pragma once

#include "platform/types.h"
