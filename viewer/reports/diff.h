// Compares what two jobs print.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "viewer/drawing/job_view.h"

namespace viewer {

// A rectangle on the upright label, in dots from its top left corner.
struct DiffBox {
  std::uint32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom are exclusive
};

struct LabelDiff {
  std::uint64_t number = 0;
  std::vector<std::string> texts;  // the differences in words; empty if there are none
  std::uint64_t dots = 0;          // that differ
  DiffBox box;                     // around those dots
  std::string png;  // picture of the difference with its legend underneath; empty if no dot differs
};

// The colours of a difference picture, in the order of its legend.
struct DiffMark {
  const char* words;
  const char* colour;  // for pages
};
inline constexpr DiffMark kDiffMarks[] = {{"both jobs", "#babec4"},
                                          {"first job only", "#0b62d6"},
                                          {"second job only", "#e8590c"},
                                          {"another colour", "#9c27b0"},
                                          {"one label only", "#e2e4e8"}};

struct JobDiff {
  double dpi = 0;
  std::uint64_t labels = 0;     // of the longer job
  std::uint64_t different = 0;  // labels that differ
};

// Compares label by label and calls `each` for every one that differs. dpi 0: guessed from the
// jobs.
JobDiff DiffJobs(std::string_view a, std::string_view b, double dpi,
                 const std::function<void(const LabelDiff&)>& each);

}  // namespace viewer
