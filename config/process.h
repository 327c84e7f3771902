// The process-wide objects of the plug-in. They are defined in the file of the module entry, which
// starts and stops them.
#pragma once

#include "config/vlx_shared.h"

extern CLoggerClient g_logClient;
extern ConfigsCache* g_configsCache;  // null outside attach and detach
