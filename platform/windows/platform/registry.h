// The registry: all of it in windows.h.
#pragma once

#include "platform/types.h"
