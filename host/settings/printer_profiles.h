// What system.toml says about printers for those who print on them: how to reach a printer, what it
// prints on, and how. The driver's own entries are the platform's.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct PrinterProfile {
  std::string name;
  std::string target;        // an address, as tcp://HOST; empty if there is none
  int dpi = 0;               // 0: not stated
  std::string paper;         // as in paper.size; empty: not stated
  std::string settingsFile;  // empty if there is none; relative to the folder of system.toml there
  std::optional<int> dotGainPercent;  // 0 to 25; nullopt: the one of all printers
};

// Every [[printer]] of system.toml, in its order; empty without the file, or if it is no TOML. The
// path of a settings file is absolute. Throws HostError (settings) that names the file, the line
// and what is expected.
std::vector<PrinterProfile> PrinterProfiles();

// The printer of that name, in upper or lower case; the first one if the name is empty. A printer
// that the file does not name has an empty profile. Throws as above.
PrinterProfile ProfileOf(const std::string& name);
