#include "host/spool.h"

#include <unistd.h>

#include <algorithm>
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

// The temporary file at hand, which an interrupted vlx takes with it.
char g_temporary[4096];

void RemoveTemporary(int signal) {
  unlink(g_temporary);
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void GuardTemporary(const std::string& path) {
  g_temporary[0] = '\0';
  if (path.size() >= sizeof g_temporary) return;
  path.copy(g_temporary, path.size());
  g_temporary[path.size()] = '\0';
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // What was ignored from the start (nohup) stays ignored.
    if (std::signal(signal, RemoveTemporary) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

class FileTarget final : public SpoolTarget {
 public:
  explicit FileTarget(const std::string& path) : m_path(LinkedFile(path)) {
    m_temporary = m_path + "." + std::to_string(getpid()) + ".part";
    m_file = std::fopen(m_temporary.c_str(), "wbxe");
    if (m_file == nullptr) Fail(m_path);
    GuardTemporary(m_temporary);
  }
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

  const std::string m_path;
  std::string m_temporary;
  std::FILE* m_file;
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
  for (const auto& target : m_targets) target->Finish();
}
