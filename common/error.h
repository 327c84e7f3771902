// What stops a command of vlx, with the exit code that tells a script why.
#pragma once

#include <stdexcept>
#include <string>

enum ExitCode : int {
  kExitDone = 0,
  kExitFound = 1,  // a check has found something
  kExitUsage = 2,
  kExitInput = 3,
  kExitSettings = 4,
  kExitTarget = 5,
  kExitPartlySent = 7,
  kExitInternal = 70,
};

// The text names the thing, the value and the remedy.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& what) : std::runtime_error(what), m_code(code) {}
  ExitCode Code() const { return m_code; }

 private:
  ExitCode m_code;
};
