// Jobs as files.
#pragma once

#include <memory>
#include <string>

#include "host/targets/job_target.h"

// Is told of the temporary file that a file target writes until the job is whole. A program that
// may be ended by a signal can then remove it first.
class TemporaryFiles {
 public:
  virtual ~TemporaryFiles() = default;
  virtual void Made(const std::string& path) = 0;
  virtual void Gone(const std::string& path) = 0;  // it has been renamed or removed
};

// A regular file appears under its name when the job is whole, or not at all; a link stays a link,
// what it points to is replaced. A device or named pipe gets the bytes as they come, as does "-",
// standard output. temporaries may be null; otherwise it must outlive the target. Throws HostError
// (target) that names the path and the reason.
std::unique_ptr<JobTarget> OpenFileTarget(const std::string& path,
                                          TemporaryFiles* temporaries = nullptr);
