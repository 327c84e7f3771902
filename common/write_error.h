// The error for a file that cannot be written.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>

#include "common/error.h"

struct ErrnoRemedy {
  int error;
  const char* remedy;
};
inline constexpr ErrnoRemedy kWriteRemedies[] = {
    {ENOENT, "make its folder first"},
    {ENOTDIR, "part of its path is not a folder: choose another one"},
    {EACCES, "choose a folder that you may write to"},
    {EPERM, "choose a folder that you may write to"},
    {EROFS, "choose a folder that you may write to"},
    {ENOSPC, "free some space or choose another folder"},
    {EDQUOT, "free some space or choose another folder"},
    {EISDIR, "name a file in it"},
};

// error: an errno.
[[noreturn]] inline void FailToWrite(const std::string& path, int error) {
  const auto* row =
      std::find_if(std::begin(kWriteRemedies), std::end(kWriteRemedies),
                   [error](const ErrnoRemedy& remedy) { return remedy.error == error; });
  throw CommandError(kExitTarget, path + ": cannot be written: " + std::strerror(error),
                     row == std::end(kWriteRemedies) ? "check where it goes" : row->remedy);
}
