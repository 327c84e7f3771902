// Standard output, from which the queue's backend reads the job. The first bytes are held back, so
// that the cost of a one-label job is known before the printer gets any of it.
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
  // Both throw BackendGoneError or HostError (target). Finish sends the held bytes.
  void Write(std::string_view bytes) override;
  void Finish() override;

  // From the next Write on, bytes are sent at once, after those that were held back.
  void StopHolding() noexcept { m_isHolding = false; }
  bool IsHolding() const { return m_isHolding; }
  std::string_view HeldBytes() const { return m_heldBytes; }

 private:
  static void Send(std::string_view bytes);

  std::string m_heldBytes;
  bool m_isHolding = true;
};
