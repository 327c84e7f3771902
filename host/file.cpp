#include "host/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/file.h"
#include "host/error.h"

namespace {

constexpr std::size_t kMostBytes = std::size_t{16} << 20;

}  // namespace

std::string ReadWholeFile(const std::string& path, const std::string& what) {
  std::string content;
  errno = 0;
  const FilePtr file(std::fopen(path.c_str(), "rbe"));
  if (file != nullptr) {
    char buffer[4096];
    for (std::size_t size; (size = std::fread(buffer, 1, sizeof buffer, file.get())) > 0;) {
      content.append(buffer, size);
      if (content.size() <= kMostBytes) continue;
      throw HostError(kExitInput,
                      "The " + what + " " + path + " cannot be read: it is longer than 16 MiB",
                      "check its name");
    }
    if (!std::ferror(file.get())) return content;
  }
  throw HostError(kExitInput,
                  "The " + what + " " + path + " cannot be read: " + std::strerror(errno),
                  errno == ENOENT ? "check its name" : "check what it is and who may read it");
}
