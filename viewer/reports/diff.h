// Where two jobs print differently.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "viewer/drawing/job_view.h"

namespace viewer {

// A rectangle of a label as it is read, in dots from its top left corner.
struct DiffBox {
  std::uint32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom are one beyond
};

struct LabelDiff {
  std::uint64_t number = 0;
  std::vector<std::string> texts;  // what is different, for people; empty: nothing
  std::uint64_t dots = 0;          // that print differently
  DiffBox box;                     // around them
  std::string png;                 // of the difference, empty when no dot differs
};

struct JobDiff {
  double dpi = 0;
  std::uint64_t labels = 0;     // of the longer job
  std::uint64_t different = 0;  // labels
};

// Compares label by label and calls back with each that differs. dpi 0: guessed from the jobs.
JobDiff DiffJobs(std::string_view a, std::string_view b, double dpi,
                 const std::function<void(const LabelDiff&)>& each);

}  // namespace viewer
