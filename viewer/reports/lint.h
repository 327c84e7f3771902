// Checks a job for mistakes before it is printed.
#pragma once

#include <string_view>
#include <vector>

#include "viewer/language/stream_reader.h"

namespace viewer {

// All faults in job order: what the job reader reports, dots lost at the edges of labels, colours
// out of register and bar codes that do not scan. Codes are looked for on the first labels only, a
// thousand of common size. dpi 0: guessed from the job.
struct LintResult {
  std::vector<Fault> faults;
  std::uint64_t count = 0;  // may exceed faults.size()
};
LintResult LintJob(std::string_view job, double dpi);

}  // namespace viewer
