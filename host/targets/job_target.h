// Where the bytes of a job go, and the schemes of the addresses that name such places.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/error.h"

// Used by one thread at a time. Destroying a target without Finish gives the job up.
class JobTarget {
 public:
  virtual ~JobTarget() = default;

  // Takes the next bytes of the job. Throws HostError (target or partly sent) if it cannot.
  virtual void Write(std::string_view bytes) = 0;

  // The job is whole: makes it final. Throws like Write.
  virtual void Finish() = 0;
};

// A printer has received only a part of the job.
class PartlySentError : public HostError {
 public:
  // takenBytes: of the job, that the printer has acknowledged.
  PartlySentError(const std::string& fact, std::uint64_t takenBytes)
      : HostError(kExitPartlySent, fact), m_takenBytes(takenBytes) {}
  std::uint64_t TakenBytes() const { return m_takenBytes; }

 private:
  std::uint64_t m_takenBytes;
};

// Opens the place that an address names. Throws HostError: usage if the address is malformed,
// target if the place cannot be opened.
using TargetOpener = std::unique_ptr<JobTarget>(const std::string& address);
TargetOpener OpenTcpTarget;  // see tcp_target.cpp

// Asks whether the place can be reached, within two seconds; sends nothing. Returns what is wrong,
// empty if nothing is. Throws HostError (usage) if the address is malformed.
using TargetProbe = std::string(const std::string& address);
TargetProbe ProbeTcpTarget;

// A new kind of target is a row of this table and a function that opens it, in a file of its own.
struct TargetScheme {
  std::string_view scheme;  // the address begins with it, in any case
  const char* form;         // of the address, for people
  TargetOpener* open;
  TargetProbe* probe;
};
inline constexpr TargetScheme kTargetSchemes[] = {
    {"tcp://", "tcp://HOST[:PORT]", OpenTcpTarget, ProbeTcpTarget},
};

// The row of an address. Throws HostError (usage) that lists the forms if none matches.
const TargetScheme& SchemeOf(const std::string& address);

// Opens an address by its scheme. Throws as above.
std::unique_ptr<JobTarget> OpenTarget(const std::string& address);
