// What a printer would stumble over in a job.
#pragma once

#include <string_view>
#include <vector>

#include "viewer/language/stream_reader.h"

namespace viewer {

// All that the reading of the job finds, and what would be lost at the labels' edges, in the order
// of the job. dpi 0: the resolution is guessed.
struct LintResult {
  std::vector<Fault> faults;
  std::uint64_t count = 0;  // also those beyond the list
};
LintResult LintJob(std::string_view job, double dpi);

}  // namespace viewer
