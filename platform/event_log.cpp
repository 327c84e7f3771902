#include <fcntl.h>
#ifdef _WIN32
#include <io.h>
#else
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <mutex>
#include <string>

#include "platform/extensions.h"
#include "platform/text.h"

namespace {

#ifdef _WIN32
constexpr int kOpenFlags = O_WRONLY | O_CREAT | O_APPEND | O_BINARY | O_NOINHERIT;
long ThreadId() { return static_cast<long>(GetCurrentThreadId()); }
#else
constexpr int kOpenFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
long ThreadId() { return static_cast<long>(syscall(SYS_gettid)); }
#endif

constexpr const char* kLevelNames[] = {"trace", "info", "warning", "error"};

std::mutex logMutex;
int openCount = 0;
int logDescriptor = -1;
std::atomic<EventLevel> lowestLevel{EventLevel::Off};

EventLevel LevelFromEnvironment() {
  const char* wanted = std::getenv("VLX_LOG_LEVEL");
  for (std::size_t i = 0; wanted != nullptr && i < std::size(kLevelNames); ++i) {
    if (std::strcmp(wanted, kLevelNames[i]) == 0) return static_cast<EventLevel>(i);
  }
  return EventLevel::Info;
}

std::string Utf8Of(const WCHAR* text) {
  const INT size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.resize(utf8.size() - 1);
  return utf8;
}

void AppendEscaped(std::string& line, const WCHAR* text) {
  for (const char c : Utf8Of(text)) {
    if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) {
      line += c;
    } else if (c == '\n') {
      line += "\\n";
    } else if (c == '\r') {
      line += "\\r";
    } else if (c == '\t') {
      line += "\\t";
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
      line += escape;
    }
  }
}

std::string FormatLine(EventLevel level, const WCHAR* text, const WCHAR* category) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char head[96];
  std::snprintf(head, sizeof head, "%04d-%02d-%02dT%02d:%02d:%02d.%03d\t%ld\t%s\t", now.wYear,
                now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                ThreadId(), kLevelNames[static_cast<int>(level)]);
  std::string line(head);
  if (category != nullptr) AppendEscaped(line, category);
  line += '\t';
  if (text != nullptr) AppendEscaped(line, text);
  line += '\n';
  return line;
}

}  // namespace

void PlatformOpenEventLog() {
  const std::lock_guard locked(logMutex);
  if (openCount++ > 0) return;
  const char* path = std::getenv("VLX_LOG");
  if (path == nullptr || *path == '\0') return;
  logDescriptor = open(path, kOpenFlags, 0666);
  if (logDescriptor < 0) {
    std::fprintf(stderr, "The log file %s (VLX_LOG) cannot be opened: %s\n", path,
                 std::strerror(errno));
    return;
  }
  lowestLevel.store(LevelFromEnvironment());
}

void PlatformCloseEventLog() {
  const std::lock_guard locked(logMutex);
  if (openCount == 0 || --openCount > 0) return;
  lowestLevel.store(EventLevel::Off);
  if (logDescriptor >= 0) close(logDescriptor);
  logDescriptor = -1;
}

void PlatformWriteEvent(EventLevel level, const WCHAR* text, const WCHAR* category) try {
  if (level < lowestLevel.load(std::memory_order_relaxed) || level >= EventLevel::Off) return;
  const std::string line = FormatLine(level, text, category);
  const std::lock_guard locked(logMutex);
  if (logDescriptor < 0) return;
  // One write a line keeps the lines of several processes whole; a full disk loses the line.
  if (write(logDescriptor, line.data(), static_cast<UINT>(line.size())) < 0) return;
} catch (const std::exception&) {
  // A line without memory is lost; logging never disturbs a job.
}
