// Shows a job's progress on a terminal.
#pragma once

#include <chrono>
#include <string>

#include "host/job_observer.h"

// Prints warnings to standard error. If that is a terminal, a job that takes longer than a moment
// also shows labels, speed and time left.
class TerminalObserver final : public JobObserver {
 public:
  // quiet: warnings only.
  explicit TerminalObserver(bool quiet);
  ~TerminalObserver() override { EraseProgress(); }
  TerminalObserver(const TerminalObserver&) = delete;
  TerminalObserver& operator=(const TerminalObserver&) = delete;

  void Warning(const std::string& text) override;
  void Progress(std::size_t printed, std::optional<std::size_t> count) override;

 private:
  using Clock = std::chrono::steady_clock;
  void EraseProgress();

  const bool m_wanted;
  const Clock::time_point m_start = Clock::now();
  Clock::time_point m_next;  // time of the next line
  bool m_shown = false;
};

// "120 of 1000 labels, 85 pages a second, 10 s left"; seconds: since the first page.
std::string ProgressLine(std::size_t printed, std::optional<std::size_t> count, double seconds);
