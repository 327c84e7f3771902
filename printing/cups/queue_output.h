// Standard output, where the queue's backend reads the job. It is held back until it is let go or
// finished: the cost of a one-label job is then known before the printer gets any of it.
#pragma once

#include <string>

#include "host/error.h"
#include "host/targets/job_target.h"

// The backend has hung up. It reports the reason itself.
class BackendGoneError final : public HostError {
 public:
  BackendGoneError() : HostError(kExitTarget, "The backend has ended before the job was sent") {}
};

class QueueOutput final : public JobTarget {
 public:
  // Both throw BackendGoneError or HostError (target).
  void Write(std::string_view bytes) override;
  void Finish() override;

  // Sends the held bytes with the next write.
  void LetGo() noexcept { m_holds = false; }
  bool Holds() const { return m_holds; }
  std::string_view Held() const { return m_held; }

 private:
  static void Send(std::string_view bytes);

  std::string m_held;
  bool m_holds = true;
};
