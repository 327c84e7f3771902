// The result of print and preview, for people or as JSON.
#pragma once

#include <string>
#include <vector>

#include "host/targets/job_cost.h"
#include "tools/job_options.h"

struct JobReport {
  std::vector<std::string> targets;  // where the job went; one line each
  std::size_t pages = 0;
  std::vector<std::string> pictures;  // paths; of a preview
};

// Prints the report to standard output, or to standard error if that is taken by the job. With
// --quiet nothing is printed; --json wins over it.
void PrintReport(const JobOptions& options, const JobReport& report, const JobCost& cost,
                 bool outputTaken);
