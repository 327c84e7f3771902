// Jobs as files.
#pragma once

#include <memory>
#include <string>

#include "host/targets/job_target.h"

// Learns of the temporary file that a file target writes until the job is complete, so that a
// program that is ended by a signal can remove it. The functions must not throw.
class TemporaryFiles {
 public:
  virtual ~TemporaryFiles() = default;
  virtual void Made(const std::string& path) = 0;
  virtual void Gone(const std::string& path) = 0;  // after it was renamed or removed
};

// A regular file appears under its name when the job is complete, or not at all. If the path is a
// link, the file that it points to is replaced. A device or a named pipe gets the bytes as they
// come, and so does standard output, "-". temporaries may be null; otherwise it must outlive the
// target. Throws HostError (target) that names the path and the reason.
std::unique_ptr<JobTarget> OpenFileTarget(const std::string& path,
                                          TemporaryFiles* temporaries = nullptr);
