#include "tools/output_guard.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>

#include "common/error.h"
#include "common/file.h"

namespace {

// The regular file at a path; nullopt for anything else. Devices and pipes lose nothing.
std::optional<struct stat> RegularFile(const std::string& path, int standardStream) {
  struct stat status = {};
  const int failed = path == "-" ? fstat(standardStream, &status) : stat(path.c_str(), &status);
  if (failed != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status;
}

// The path without links, "." and "..", whether the file exists or not.
std::string Canonical(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  const auto canonical = std::filesystem::weakly_canonical(absolute, error);
  return error ? path : canonical.string();
}

bool SameFile(const NamedFile& output, const NamedFile& taken) {
  const auto one = RegularFile(output.path, STDOUT_FILENO);
  const auto other = RegularFile(taken.path, STDIN_FILENO);
  if (one && other) return one->st_dev == other->st_dev && one->st_ino == other->st_ino;
  if (one || other || output.path == "-" || taken.path == "-") return false;
  // Two outputs that do not exist yet; a device may take both.
  struct stat status;
  return stat(output.path.c_str(), &status) != 0 && Canonical(output.path) == Canonical(taken.path);
}

bool IsOfKind(const std::string& path, const OutputKind& kind) {
  const FilePtr file(std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) return false;
  char start[16] = {};
  const std::string_view found(start, std::fread(start, 1, sizeof start, file.get()));
  return found.substr(std::min(kind.offset, found.size())).starts_with(kind.bytes);
}

}  // namespace

void OutputGuard::Add(const NamedFile& output, const OutputKind& kind) {
  if (output.path.empty()) return;
  const std::string shown = output.option + " " + output.path;
  for (const NamedFile& taken : m_taken) {
    if (!SameFile(output, taken)) continue;
    throw CommandError(kExitUsage,
                       shown + " is the same file as " + taken.option + " " + taken.path,
                       "name another file: nothing was written");
  }
  const auto existing = RegularFile(output.path, STDOUT_FILENO);
  if (output.path != "-" && existing && existing->st_size > 0 && !m_force &&
      !IsOfKind(output.path, kind)) {
    throw CommandError(kExitUsage, shown + " exists and is not a " + kind.what,
                       "name another file, or replace it with --force");
  }
  m_taken.push_back(output);
}
