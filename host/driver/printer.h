// An open printer of the system.
#pragma once

#include <string>

#include "platform/types.h"

// Says on standard error that the system's file of printers is malformed and counts as missing; for
// the beginning of a command that looks into it.
void WarnOfSystemFile();

class Printer {
 public:
  // Opens the printer of that name, the default one for an empty name. Throws HostError (settings)
  // for a printer that there is not.
  explicit Printer(const std::string& name);
  ~Printer();
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

  HANDLE Handle() const { return m_handle; }
  const std::u16string& Name() const { return m_name; }

 private:
  std::u16string m_name;
  HANDLE m_handle = nullptr;
};
