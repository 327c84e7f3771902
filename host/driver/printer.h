// The system's printers and the files that describe them.
#pragma once

#include <string>

#include "platform/types.h"

// What is wrong with system.toml; empty if nothing is. Malformed entries count as missing.
std::string SystemFileWarning();

// The folder of the user's system.toml and registry.reg.
std::string StateFolder();

// The paths of the two files: in that folder, or in /etc/vlx if VLX_HOME is not set and only
// /etc/vlx has the file.
std::string SystemFilePath();
std::string RegistryFilePath();

// An open printer.
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
