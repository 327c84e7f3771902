// Reads files in text mode: a stdio stream whose cookie translates line ends.

#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "platform/extensions.h"
#include "platform/linux/text/code_page.h"
#include "platform/linux/text/unicode.h"
#include "platform/text.h"

namespace {

constexpr char kEndOfText = 0x1A;

struct TextFile {
  int descriptor;
  bool textMode;
  bool ended = false;
  bool heldReturn = false;  // the last read ended in CR; the next byte decides
};

// Turns CR LF into LF in place and stops at the end mark. Returns the number of bytes that remain.
std::size_t Translate(TextFile& file, char* bytes, std::size_t size) {
  const char* end = static_cast<char*>(std::memchr(bytes, kEndOfText, size));
  if (end != nullptr) {
    file.ended = true;
    size = end - bytes;
  }
  std::size_t kept = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const bool lineEnd = bytes[i] == '\r' && i + 1 < size && bytes[i + 1] == '\n';
    if (!lineEnd) bytes[kept++] = bytes[i];
  }
  return kept;
}

ssize_t ReadCookie(void* cookie, char* buffer, std::size_t size) {
  auto& file = *static_cast<TextFile*>(cookie);
  if (!file.textMode) return read(file.descriptor, buffer, size);
  while (!file.ended && size > 1) {
    std::size_t held = 0;
    if (file.heldReturn) buffer[held++] = '\r';
    file.heldReturn = false;
    const ssize_t count = read(file.descriptor, buffer + held, size - held);
    if (count < 0) return count;
    std::size_t bytes = held + static_cast<std::size_t>(count);
    if (count == 0) {
      file.ended = true;
      return static_cast<ssize_t>(held);
    }
    if (buffer[bytes - 1] == '\r') {
      file.heldReturn = true;
      --bytes;
    }
    bytes = Translate(file, buffer, bytes);
    if (file.ended) file.heldReturn = false;
    if (bytes != 0) return static_cast<ssize_t>(bytes);
  }
  return 0;
}

int CloseCookie(void* cookie) {
  const std::unique_ptr<TextFile> file(static_cast<TextFile*>(cookie));
  return close(file->descriptor);
}

std::string NativePath(const char* filename) {
  const auto wide = DecodeText(ResolveCodePage(CP_ACP), filename);
  std::string path = wide ? Utf8FromUtf16(*wide) : std::string(filename);
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// Opens a regular file; -1 for anything else. Never waits, not even for a pipe.
int OpenRegularFile(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  struct stat status;
  if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
    close(descriptor);
    return -1;
  }
  return descriptor;
}

}  // namespace

std::FILE* _fsopen(const char* filename, const char* mode, int) try {
  if (filename == nullptr || mode == nullptr || mode[0] != 'r' || std::strchr(mode, '+')) {
    errno = EINVAL;
    return nullptr;
  }
  if (PlatformShouldFail("_fsopen")) return nullptr;
  auto file = std::make_unique<TextFile>(TextFile{-1, std::strchr(mode, 'b') == nullptr});
  file->descriptor = OpenRegularFile(NativePath(filename));
  if (file->descriptor < 0) return nullptr;
  std::FILE* stream = fopencookie(file.get(), "r", {ReadCookie, nullptr, nullptr, CloseCookie});
  if (stream == nullptr) {
    close(file->descriptor);
    return nullptr;
  }
  static_cast<void>(file.release());  // the stream owns it now
  return stream;
} catch (const std::bad_alloc&) {
  return nullptr;
}
