// An open printer of the system.
#pragma once

#include <string>

#include "platform/types.h"

// What is wrong with system.toml, the file of printers: a malformed one counts as missing. Empty if
// it is missing or right.
std::string SystemFileWarning();

class Printer {
 public:
  // Opens the printer of that name; an empty name is the default printer. Throws HostError
  // (settings) if no such printer exists.
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
