#include "host/targets/stage_clock.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

constexpr std::array<const char*, kStageCount> kNames = {
    "settings and start", "read the pages", "take the bands", "make the images", "write the job"};

}  // namespace

Stage StageClock::Enter(Stage stage) {
  const Clock::time_point now = Clock::now();
  m_spent[static_cast<std::size_t>(m_stage)] += now - m_since;
  m_since = now;
  return std::exchange(m_stage, stage);
}

std::string StageClock::Table(std::size_t pages) {
  Enter(m_stage);
  const auto seconds = [](Clock::duration time) {
    return std::chrono::duration<double>(time).count();
  };
  double all = 0;
  for (const Clock::duration spent : m_spent) all += seconds(spent);
  const double divisor = static_cast<double>(std::max<std::size_t>(pages, 1));
  std::string table;
  const auto add = [&](const char* name, double spent) {
    char line[128];
    std::snprintf(line, sizeof line, "  %-18s %9.3f s %5.1f %% %9.3f ms a page\n", name, spent,
                  all > 0 ? 100 * spent / all : 0, 1000 * spent / divisor);
    table += line;
  };
  for (std::size_t i = 0; i < kStageCount; ++i) add(kNames[i], seconds(m_spent[i]));
  add("in all", all);
  char rate[64];
  std::snprintf(rate, sizeof rate, "  %.1f pages a second\n", all > 0 ? divisor / all : 0);
  return table + rate;
}
