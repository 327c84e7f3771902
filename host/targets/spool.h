// Where a job goes: a file that appears whole or not at all, standard output, a printer on the
// network. Several targets get the same bytes.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/job_cost.h"
#include "host/stage_clock.h"

class SpoolTarget {
 public:
  virtual ~SpoolTarget() = default;
  // Throws HostError when the bytes cannot be taken.
  virtual void Write(std::string_view bytes) = 0;
  // Makes the job final; without it a file target leaves nothing behind.
  virtual void Finish() = 0;
};

// A file path, a device or named pipe, or "-" for standard output.
std::unique_ptr<SpoolTarget> OpenFileTarget(const std::string& path);

// "tcp://HOST[:PORT]", port 9100 by default. Connecting takes 10 seconds at most, and no write
// waits longer than 30 seconds for the printer. Finish waits until the printer has acknowledged
// all, 30 seconds at most for the next acknowledgement, and then until it ends its side, stays
// silent for a second or has talked for 10. Throws HostError (usage) for another form, (target)
// when nobody answers, (partly sent) when the printer hangs up or stalls.
std::unique_ptr<SpoolTarget> OpenTcpTarget(const std::string& address);

// Takes the writes of one job to all targets; knows what they cost and what time the job takes.
class Spool {
 public:
  explicit Spool(std::vector<std::unique_ptr<SpoolTarget>> targets);
  void Write(std::string_view bytes);
  // The last target first: a job that is lost on its way to a printer leaves no file behind.
  void Finish();
  const JobCost& Cost() const { return m_cost; }
  StageClock& Clock() { return m_clock; }

 private:
  std::vector<std::unique_ptr<SpoolTarget>> m_targets;
  JobCost m_cost;
  StageClock m_clock;
};
