#include "host/targets/spool.h"

#include <utility>

Spool::Spool(std::vector<std::unique_ptr<JobTarget>> targets) : m_targets(std::move(targets)) {}

Spool::Spool(std::unique_ptr<JobTarget> target) { m_targets.push_back(std::move(target)); }

void Spool::Write(std::string_view bytes) {
  const StageClock::Scope time(m_clock, Stage::Write);
  for (const auto& target : m_targets) target->Write(bytes);
  m_cost.Count(bytes);
}

void Spool::Finish() {
  const StageClock::Scope time(m_clock, Stage::Write);
  for (auto target = m_targets.rbegin(); target != m_targets.rend(); ++target) (*target)->Finish();
}
