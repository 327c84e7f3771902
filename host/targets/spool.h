// Passes the writes of one job to its targets, and measures what the job costs and how long it
// takes.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/targets/job_cost.h"
#include "host/targets/job_target.h"
#include "host/targets/stage_clock.h"

// Used by one thread at a time. All targets get the same bytes.
class Spool {
 public:
  Spool() = default;  // has no target and only measures
  explicit Spool(std::vector<std::unique_ptr<JobTarget>> targets);
  explicit Spool(std::unique_ptr<JobTarget> target);

  // Throws what a target throws; the job is then lost.
  void Write(std::string_view bytes);

  // Finishes the targets, the last one first. List a file before a printer: then a job that is
  // lost on its way to the printer leaves no file.
  void Finish();

  const JobCost& Cost() const { return m_cost; }
  StageClock& Clock() { return m_clock; }

 private:
  std::vector<std::unique_ptr<JobTarget>> m_targets;
  JobCost m_cost;
  StageClock m_clock;
};
