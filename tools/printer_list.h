// The printers of system.toml, and whether they answer.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/settings/printer_profiles.h"

struct ListedPrinter {
  PrinterProfile profile;
  // Why the target does not answer; empty if it does, nullopt if the printer has no target.
  std::optional<std::string> fault;
};

// Asks all printers at once; takes about two seconds if one does not answer. Without a system.toml
// the list holds the default printer. Throws HostError (settings) if a profile is malformed.
std::vector<ListedPrinter> ListPrinters();
