// Formatted log lines of the plug-in, through g_logClient. The format is the narrow printf one, its
// texts are UTF-8; nothing is formatted for a level that is not written. Nothing throws: without
// memory a line longer than the stack buffer is cut.
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

// Texts as UTF-8, for a %s above: a wide one, and one in the thread's ANSI code page. Null and what
// cannot be converted give an empty text.
std::string LogText(LPCWSTR text) noexcept;
std::string LogTextFromAnsi(const char* text) noexcept;
