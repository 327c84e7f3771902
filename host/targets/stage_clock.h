// Measures where the time of a job goes.
#pragma once

#include <array>
#include <chrono>
#include <string>

enum class Stage { Prepare, Read, Bands, Pages, Write };
inline constexpr std::size_t kStageCount = 5;

// The time always counts for exactly one stage. Used by one thread at a time.
class StageClock {
 public:
  // Counts time for the stage while it lives, then for the previous stage again.
  class Scope {
   public:
    Scope(StageClock& clock, Stage stage) : m_clock(clock), m_before(clock.Enter(stage)) {}
    ~Scope() { m_clock.Enter(m_before); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    StageClock& m_clock;
    const Stage m_before;
  };

  // A table to show: time, share and time per page for every stage, and pages per second.
  std::string Table(std::size_t pages);

 private:
  using Clock = std::chrono::steady_clock;
  // Returns the previous stage.
  Stage Enter(Stage stage);

  std::array<Clock::duration, kStageCount> m_spent = {};
  Stage m_stage = Stage::Prepare;
  Clock::time_point m_since = Clock::now();
};
