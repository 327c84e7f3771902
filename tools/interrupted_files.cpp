#include "tools/interrupted_files.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

namespace {

// The paths of the temporary files; an empty one is free. A job has two at most, its own and that
// of its settings record.
volatile char g_paths[4][4096];

void RemoveFiles(int signal) {
  for (const volatile char* path : g_paths) {
    if (path[0] != '\0') unlink(const_cast<const char*>(path));
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void CatchSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // Signals that were ignored from the start (nohup) stay ignored.
    if (std::signal(signal, RemoveFiles) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

class FileTable final : public TemporaryFiles {
 public:
  void Made(const std::string& path) override {
    if (path.size() >= sizeof g_paths[0]) return;
    for (volatile char* place : g_paths) {
      if (place[0] != '\0') continue;
      // The first byte is written last: a signal in between must not find half a path.
      for (std::size_t i = path.size(); i > 0; --i) place[i] = i == path.size() ? '\0' : path[i];
      std::atomic_signal_fence(std::memory_order_release);
      place[0] = path[0];
      break;
    }
    CatchSignals();
  }
  void Gone(const std::string& path) override {
    for (volatile char* place : g_paths) {
      if (path == const_cast<const char*>(place)) place[0] = '\0';
    }
  }
};

}  // namespace

TemporaryFiles* InterruptedFiles() {
  static FileTable table;
  return &table;
}
