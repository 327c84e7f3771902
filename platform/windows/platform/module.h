// The loader calls a module's DllMain by itself.
#pragma once

#include "platform/types.h"

#define PLATFORM_MODULE_ENTRY
