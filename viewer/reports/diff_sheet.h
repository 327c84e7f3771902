// The differences of two jobs as one HTML page, with the pictures in it.
#pragma once

#include <string>

#include "viewer/reports/diff.h"

namespace viewer {

class DiffSheet {
 public:
  // The names of the jobs.
  DiffSheet(std::string first, std::string second)
      : m_first(std::move(first)), m_second(std::move(second)) {}

  void Add(const LabelDiff& diff);
  // The whole page.
  std::string Html(const JobDiff& result) const;

 private:
  const std::string m_first, m_second;
  std::string m_labels;
};

}  // namespace viewer
