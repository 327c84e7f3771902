// Where the time of a job goes.
#pragma once

#include <array>
#include <chrono>
#include <string>

enum class Stage { Prepare, Read, Bands, Pages, Write };
inline constexpr std::size_t kStageCount = 5;

// Time runs for one stage at a time.
class StageClock {
 public:
  // Lets the time run for the stage until the scope ends, then for the one before again.
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

  // A table: time, share and time a page for every stage, and the pages a second.
  std::string Table(std::size_t pages);

 private:
  using Clock = std::chrono::steady_clock;
  // Returns the stage whose time ran so far.
  Stage Enter(Stage stage);

  std::array<Clock::duration, kStageCount> m_spent = {};
  Stage m_stage = Stage::Prepare;
  Clock::time_point m_since = Clock::now();
};
