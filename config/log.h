// Formatted log lines of the plug-in, through g_logClient. The format is that of the narrow printf;
// its texts are UTF-8. Never throws: without memory a line longer than the stack buffer is cut. The
// last error stays as it was.
#pragma once

#include <string>

#include "config/process.h"

inline constexpr LPCWSTR kRendering = WTEXT("Rendering");
inline constexpr LPCWSTR kRenderingPaper = WTEXT("Rendering#Paper");
inline constexpr LPCWSTR kNoCategory = nullptr;

void LogTrace(LPCWSTR category, const char* format, ...) noexcept PLATFORM_PRINTF(2, 3);
void LogInfo(LPCWSTR category, const char* format, ...) noexcept PLATFORM_PRINTF(2, 3);
void LogWarning(LPCWSTR category, const char* format, ...) noexcept PLATFORM_PRINTF(2, 3);
void LogError(LPCWSTR category, const char* format, ...) noexcept PLATFORM_PRINTF(2, 3);

// Text as UTF-8, for a %s above: wide text, and text in the thread's ANSI code page. Empty for null
// and for text that cannot be converted.
std::string LogText(LPCWSTR text) noexcept;
std::string LogTextFromAnsi(const char* text) noexcept;
