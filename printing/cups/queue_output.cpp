#include "printing/cups/queue_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

void QueueOutput::Write(std::string_view bytes) {
  m_heldBytes += bytes;
  if (!m_isHolding) Finish();
}

void QueueOutput::Finish() {
  Send(m_heldBytes);
  m_heldBytes.clear();
}

void QueueOutput::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EPIPE) {
      throw BackendGoneError();
    } else if (errno != EINTR) {
      throw HostError(kExitTarget,
                      std::string("The job cannot be sent to the printer: ") + std::strerror(errno),
                      errno == ENOSPC ? "free some space, then print again" : "");
    }
  }
}
