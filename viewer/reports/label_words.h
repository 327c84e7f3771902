// A drawn label in words, for users who cannot see its picture.
#pragma once

#include <string>

#include "viewer/codes/codes.h"
#include "viewer/drawing/job_view.h"

namespace viewer {

// Width and height of the upright label in millimetres.
struct UprightSize {
  double widthMm = 0;
  double heightMm = 0;
  std::string Text() const;  // "100 × 60 mm"
};
UprightSize SizeOf(const DrawnLabel& drawn);

// "100 × 60 mm, black and a second colour, 2 bar codes, 1 square code". Codes are looked for while
// dotsToSearch lasts; start with kMostDotsSearched for a job.
std::string LabelWords(const DrawnLabel& drawn, double& dotsToSearch);

}  // namespace viewer
