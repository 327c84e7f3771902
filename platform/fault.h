// The one seam through which a test makes platform calls fail. Every fallible call of the platform
// asks ShouldFail with its own name before it does anything; without a hook that is one relaxed load.
#pragma once

#include "platform/types.h"

// Asked before each fallible call, from the calling thread. Returns true to make the call fail in the
// way its contract documents for "no memory" (or its general failure when it has none of that kind).
using PlatformFaultHook = bool (*)(const char* call, void* context);

// Installs the hook (null: none). The caller sees to it that no platform call runs meanwhile.
PLATFORM_API void PlatformSetFaultHook(PlatformFaultHook hook, void* context);

// For the platform's own use, and for allocations of the libraries built on it.
PLATFORM_API bool PlatformShouldFail(const char* call);
