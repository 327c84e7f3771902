// What system.toml tells front ends about printers: how to reach one, and its paper and settings.
// The platform reads the entries that the driver needs.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct PrinterProfile {
  std::string name;
  std::string target;                 // an address, as tcp://HOST; empty if there is none
  int dpi = 0;                        // 0: not stated
  std::string paper;                  // a value of paper.size; empty: not stated
  std::string settingsFile;           // an absolute path; empty if there is none
  std::optional<int> dotGainPercent;  // 0 to 25; nullopt: that of all printers
};

// Every [[printer]] of system.toml, in the file's order; empty if there is no such file or it is
// not TOML (see SystemFileWarning). Throws HostError (settings) for a wrong value, with the file,
// the line and what is expected.
std::vector<PrinterProfile> PrinterProfiles();

// The printer of that name, in any case; the first one if the name is empty. An empty profile if
// the file does not name the printer. Throws as above.
PrinterProfile ProfileOf(const std::string& name);
