// Where the bytes of a job go, and the schemes of the addresses that name such places.
#pragma once

#include <memory>
#include <string>
#include <string_view>

// Used by one thread at a time. Destroying a target without Finish gives the job up.
class JobTarget {
 public:
  virtual ~JobTarget() = default;

  // Takes the next bytes of the job. Throws HostError (target or partly sent) if it cannot.
  virtual void Write(std::string_view bytes) = 0;

  // The job is whole: makes it final. Throws like Write.
  virtual void Finish() = 0;
};

// Opens the place that an address names. Throws HostError: usage if the address is malformed,
// target if the place cannot be opened.
using TargetOpener = std::unique_ptr<JobTarget>(const std::string& address);
TargetOpener OpenTcpTarget;  // see tcp_target.cpp

// A new kind of target is a row of this table and a function that opens it, in a file of its own.
struct TargetScheme {
  std::string_view scheme;  // the address begins with it, in any case
  const char* form;         // of the address, for people
  TargetOpener* open;
};
inline constexpr TargetScheme kTargetSchemes[] = {
    {"tcp://", "tcp://HOST[:PORT]", OpenTcpTarget},
};

// Opens an address by its scheme. Throws HostError (usage) that lists the forms if none matches.
std::unique_ptr<JobTarget> OpenTarget(const std::string& address);
