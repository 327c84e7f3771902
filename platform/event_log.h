// The log file that the environment variable VLX_LOG names: one line an entry, with time, thread,
// level, category and text separated by tabs; control characters in the texts are escaped.
// VLX_LOG_LEVEL is trace, info (the default), warning or error. Without VLX_LOG nothing is written.
#pragma once

#include "platform/types.h"

enum class EventLevel : int { Trace = 0, Info = 1, Warning = 2, Error = 3, Off = 4 };

// Reads both variables and opens the file for appending. Calls are counted; the last close closes.
PLATFORM_API void PlatformOpenEventLog();
PLATFORM_API void PlatformCloseEventLog();

// The lowest level written, Off when the log is closed. Cheap: one relaxed load.
PLATFORM_API EventLevel PlatformEventLogLevel();

// Writes one line with one write call, from any thread; category may be null (an empty column).
// Texts are UTF-16; an entry below the level is dropped before anything is formatted. Never throws.
PLATFORM_API void PlatformWriteEvent(EventLevel level, const WCHAR* text, const WCHAR* category);
