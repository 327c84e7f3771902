// Where the bytes of a job go, and the schemes of the addresses that name such targets.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/error.h"

// Used by one thread at a time. Destroying a target without Finish abandons the job.
class JobTarget {
 public:
  virtual ~JobTarget() = default;

  // Takes the next bytes of the job. Throws HostError (target or partly sent) if it cannot.
  virtual void Write(std::string_view bytes) = 0;

  // Called once after the last Write: makes the job final. Throws like Write.
  virtual void Finish() = 0;
};

// A printer has received only a part of the job.
class PartlySentError : public HostError {
 public:
  // takenBytes: how much of the job the printer has acknowledged.
  PartlySentError(const std::string& fact, std::uint64_t takenBytes)
      : HostError(kExitPartlySent, fact), m_takenBytes(takenBytes) {}
  std::uint64_t TakenBytes() const { return m_takenBytes; }

 private:
  std::uint64_t m_takenBytes;
};

// Opens the target that an address names. Throws HostError: usage if the address is malformed,
// target if the target cannot be opened.
using TargetOpener = std::unique_ptr<JobTarget>(const std::string& address);
TargetOpener OpenTcpTarget;  // see tcp_target.cpp

// Tries to reach the target, for two seconds at most for each of its network addresses, and sends
// nothing. Returns what is wrong, empty if nothing is. Throws HostError (usage) if the address is
// malformed.
using TargetProbe = std::string(const std::string& address);
TargetProbe ProbeTcpTarget;

// A new kind of target is a row of this table and a function that opens it, in a file of its own.
struct TargetScheme {
  std::string_view scheme;  // what the address begins with, in upper or lower case
  const char* form;         // of the address, for messages
  TargetOpener* open;
  TargetProbe* probe;
};
inline constexpr TargetScheme kTargetSchemes[] = {
    {"tcp://", "tcp://HOST[:PORT]", OpenTcpTarget, ProbeTcpTarget},
};

// The row for an address. Throws HostError (usage) that lists the forms if none matches.
const TargetScheme& SchemeOf(const std::string& address);

// Opens an address by its scheme. Throws as above.
std::unique_ptr<JobTarget> OpenTarget(const std::string& address);
