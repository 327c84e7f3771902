// Where a job goes: a file that appears whole or not at all, standard output, a printer on the
// network. Several targets get the same bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class SpoolTarget {
 public:
  virtual ~SpoolTarget() = default;
  // Throws HostError when the bytes cannot be taken.
  virtual void Write(std::string_view bytes) = 0;
  // Makes the job final; without it a file target leaves nothing behind.
  virtual void Finish() = 0;
};

// A file path, a device or named pipe, or "-" for standard output.
std::unique_ptr<SpoolTarget> OpenFileTarget(const std::string& path);

// "tcp://HOST[:PORT]", port 9100 by default. Connecting takes 10 seconds at most, and no write
// waits longer than 30 seconds for the printer. Throws HostError (usage) for another form, (target)
// when nobody answers.
std::unique_ptr<SpoolTarget> OpenTcpTarget(const std::string& address);

// What went through the spool.
struct SpoolCounts {
  std::uint64_t bytes = 0;
  std::uint64_t downloads = 0;  // images sent
  std::uint64_t reused = 0;     // images placed that the printer held already
};

// Takes the writes of one job to all targets and counts what they are.
class Spool {
 public:
  explicit Spool(std::vector<std::unique_ptr<SpoolTarget>> targets);
  void Write(std::string_view bytes);
  void Finish();
  const SpoolCounts& Counts() const { return m_counts; }

 private:
  void Count(std::string_view bytes);

  std::vector<std::unique_ptr<SpoolTarget>> m_targets;
  SpoolCounts m_counts;
  std::uint64_t m_downloadsOfPage = 0;
  bool m_inDownload = false;
};
