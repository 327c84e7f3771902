// The printers of system.toml, and whether they answer.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/settings/printer_profiles.h"

struct ListedPrinter {
  PrinterProfile profile;
  std::optional<std::string>
      fault;  // why its target does not answer, empty: it does; nullopt: none
};

// Asks all printers at once; takes about two seconds if one does not answer. Without a system.toml
// it is the one printer that there is. Throws HostError (settings) if a profile is malformed.
std::vector<ListedPrinter> ListPrinters();
