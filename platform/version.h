// The version of the platform library.
#pragma once

#include "platform/types.h"

// Static text, "1.0.0".
PLATFORM_API const char* PlatformVersion();
