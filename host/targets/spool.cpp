#include "host/targets/spool.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "host/error.h"

namespace {

// What to do about it, by the error.
struct Remedy {
  int error;
  const char* remedy;
};
constexpr Remedy kRemedies[] = {
    {ENOENT, "; make its folder first"},
    {EACCES, "; choose a folder that you may write to"},
    {EROFS, "; choose a folder that you may write to"},
    {ENOSPC, "; free some space or choose another folder"},
    {EISDIR, "; name a file in it"},
};

[[noreturn]] void Fail(const std::string& target) {
  const int error = errno;
  const auto* remedy = std::find_if(std::begin(kRemedies), std::end(kRemedies),
                                    [error](const Remedy& row) { return row.error == error; });
  throw HostError(kExitTarget, target + ": cannot be written: " + std::strerror(error) +
                                   (remedy == std::end(kRemedies) ? "" : remedy->remedy));
}

// The temporary files at hand, which an interrupted vlx takes with it; an empty path is a free
// place. A job has two at most, its own and that of its settings record.
char g_temporaries[4][4096];

void RemoveTemporaries(int signal) {
  for (const char* path : g_temporaries) {
    if (path[0] != '\0') unlink(path);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// Keeps a file in the table above while it lives.
class TemporaryGuard {
 public:
  explicit TemporaryGuard(const std::string& path) {
    for (char* place : g_temporaries) {
      if (place[0] != '\0' || path.size() >= sizeof g_temporaries[0]) continue;
      // The first byte comes last: a signal in between must not find half a path.
      path.copy(place + 1, path.npos, 1);
      place[path.size()] = '\0';
      std::atomic_signal_fence(std::memory_order_release);
      m_place = place;
      *m_place = path[0];
      break;
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      // What was ignored from the start (nohup) stays ignored.
      if (std::signal(signal, RemoveTemporaries) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
  }
  ~TemporaryGuard() {
    if (m_place != nullptr) *m_place = '\0';
  }
  TemporaryGuard(const TemporaryGuard&) = delete;
  TemporaryGuard& operator=(const TemporaryGuard&) = delete;

 private:
  volatile char* m_place = nullptr;
};

class FileTarget final : public SpoolTarget {
 public:
  explicit FileTarget(const std::string& path)
      : m_path(LinkedFile(path)), m_file(OpenTemporary()), m_guard(m_temporary) {}
  ~FileTarget() override {
    if (m_file == nullptr) return;
    std::fclose(m_file);
    std::remove(m_temporary.c_str());
  }
  void Write(std::string_view bytes) override {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file) != bytes.size()) Fail(m_path);
  }
  void Finish() override {
    const bool written = std::fflush(m_file) == 0 && fsync(fileno(m_file)) == 0;
    if (!written) Fail(m_path);
    std::fclose(m_file);
    m_file = nullptr;
    if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
      const int error = errno;
      std::remove(m_temporary.c_str());
      errno = error;
      Fail(m_path);
    }
  }

 private:
  // A link stays one: what it points to is replaced.
  static std::string LinkedFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    return error ? path : file.string();
  }

  // A killed run may have left its file, and a container gives every run the same process id.
  std::FILE* OpenTemporary() {
    const std::string own = m_path + "." + std::to_string(getpid());
    m_temporary = own + ".part";
    for (int i = 2;; ++i) {
      std::FILE* file = std::fopen(m_temporary.c_str(), "wbxe");
      if (file != nullptr) return file;
      if (errno != EEXIST) Fail(m_path);
      m_temporary = own + "-" + std::to_string(i) + ".part";
    }
  }

  const std::string m_path;
  std::string m_temporary;
  std::FILE* m_file;
  const TemporaryGuard m_guard;
};

// Standard output, a device, a named pipe: what takes bytes as they come and must not be replaced
// by a file.
class StreamTarget final : public SpoolTarget {
 public:
  StreamTarget(const std::string& name, std::FILE* file) : m_name(name), m_file(file) {
    if (m_file == nullptr) Fail(m_name);
  }
  ~StreamTarget() override {
    if (m_file != stdout) std::fclose(m_file);
  }
  void Write(std::string_view bytes) override {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file) != bytes.size()) Fail(m_name);
  }
  void Finish() override {
    if (std::fflush(m_file) != 0) Fail(m_name);
  }

 private:
  const std::string m_name;
  std::FILE* m_file;
};

}  // namespace

std::unique_ptr<SpoolTarget> OpenFileTarget(const std::string& path) {
  if (path == "-") return std::make_unique<StreamTarget>("standard output", stdout);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return std::make_unique<StreamTarget>(path, std::fopen(path.c_str(), "wbe"));
  }
  return std::make_unique<FileTarget>(path);
}

Spool::Spool(std::vector<std::unique_ptr<SpoolTarget>> targets) : m_targets(std::move(targets)) {}

void Spool::Write(std::string_view bytes) {
  const StageClock::Scope time(m_clock, Stage::Write);
  m_cost.Count(bytes);
  for (const auto& target : m_targets) target->Write(bytes);
}

void Spool::Finish() {
  const StageClock::Scope time(m_clock, Stage::Write);
  for (auto target = m_targets.rbegin(); target != m_targets.rend(); ++target) (*target)->Finish();
}
