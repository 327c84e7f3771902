// Pictures of the labels that a job prints, for commands that show instead of sending.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/settings/settings.h"
#include "host/targets/job_target.h"

// Keeps the job in memory: it is small compared with its pages.
class MemoryTarget final : public JobTarget {
 public:
  // job: takes the bytes; it must outlive the target.
  explicit MemoryTarget(std::string& job) : m_job(job) {}
  void Write(std::string_view bytes) override { m_job += bytes; }
  void Finish() override {}

 private:
  std::string& m_job;
};

// Calls `each` with a PNG file of every label, turned as its page was given, in the highlight
// colour of the record. Throws CommandError (settings) if one cannot be drawn.
void DrawLabels(std::string_view job, const PageSettings& page, const OEMDEV& devmode,
                const std::function<void(const std::string& png)>& each);
