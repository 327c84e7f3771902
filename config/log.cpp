#include "config/log.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>

#include "config/wide_text.h"
#include "platform/text.h"

namespace {

constexpr int kShortLine = 512;  // units; nearly every line fits

// The shared library decides which lines are written, so every line is formatted. Each band of a
// page logs a few: a line must cost little.
using LevelFunction = void(CLoggerClient&, LPCWSTR, LPCWSTR);

// Widens length bytes of UTF-8 into wide, which has room for as many units and a terminator.
void Widen(const char* text, int length, WCHAR* wide) {
  unsigned char allBits = 0;
  for (int i = 0; i < length; ++i) {
    wide[i] = static_cast<unsigned char>(text[i]);
    allBits |= static_cast<unsigned char>(text[i]);
  }
  INT units = 0;
  if (allBits >= 0x80) units = MultiByteToWideChar(CP_UTF8, 0, text, length, wide, length);
  // Pure ASCII is done. So is a line that cannot be converted: it must not be lost.
  wide[units != 0 ? units : length] = 0;
}

void Log(LevelFunction* write, LPCWSTR category, const char* format, va_list arguments) noexcept {
  const DWORD lastError = GetLastError();
  va_list again;
  va_copy(again, arguments);
  char line[kShortLine];
  int length = std::vsnprintf(line, sizeof line, format, arguments);
  if (length < 0) length = 0;
  std::unique_ptr<char[]> longLine;
  std::unique_ptr<WCHAR[]> longWide;
  if (length >= kShortLine) {
    longLine.reset(new (std::nothrow) char[length + 1]);
    longWide.reset(new (std::nothrow) WCHAR[length + 1]);
  }
  if (longLine && longWide) {
    std::vsnprintf(longLine.get(), length + 1, format, again);
    Widen(longLine.get(), length, longWide.get());
    write(g_logClient, longWide.get(), category);
  } else {
    WCHAR wide[kShortLine];
    Widen(line, length < kShortLine ? length : kShortLine - 1, wide);
    write(g_logClient, wide, category);
  }
  va_end(again);
  SetLastError(lastError);
}

}  // namespace

#define DEFINE_LOG(name, write)                                   \
  void name(LPCWSTR category, const char* format, ...) noexcept { \
    va_list arguments;                                            \
    va_start(arguments, format);                                  \
    Log(write, category, format, arguments);                      \
    va_end(arguments);                                            \
  }

DEFINE_LOG(LogTrace, CLogger::LOG_TRACE)
DEFINE_LOG(LogInfo, CLogger::LOG_INFO)
DEFINE_LOG(LogWarning, CLogger::LOG_WARNING)
DEFINE_LOG(LogError, CLogger::LOG_ERROR)
#undef DEFINE_LOG

std::string LogText(LPCWSTR text) noexcept try {
  if (text == nullptr) return {};
  const INT size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string narrow(size, '\0');
  if (WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr) != size) {
    return {};
  }
  narrow.resize(size - 1);
  return narrow;
} catch (const std::bad_alloc&) {
  return {};
}

std::string LogTextFromAnsi(const char* text) noexcept try {
  if (text == nullptr) return {};
  const INT size = MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, nullptr, 0);
  if (size <= 1) return {};
  WideText wide(size, WCHAR{0});
  if (MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, wide.data(), size) != size) return {};
  return LogText(wide.c_str());
} catch (const std::bad_alloc&) {
  return {};
}
