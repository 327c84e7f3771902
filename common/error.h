// What stops a command or a job, with the exit code that tells a script why.
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

// The fact names the thing and the value, the remedy says what to do about it. They are separate
// because a remedy depends on where the user is: a front end may replace it with one in its own
// terms.
class CommandError : public std::runtime_error {
 public:
  explicit CommandError(ExitCode code, const std::string& fact, const std::string& remedy = {})
      : std::runtime_error(remedy.empty() ? fact : fact + "; " + remedy),
        m_code(code),
        m_fact(fact),
        m_remedy(remedy) {}

  // what() is both: "FACT; REMEDY".
  ExitCode Code() const { return m_code; }
  const std::string& Fact() const { return m_fact; }
  const std::string& Remedy() const { return m_remedy; }  // empty if there is none to give

 private:
  ExitCode m_code;
  std::string m_fact;
  std::string m_remedy;
};
