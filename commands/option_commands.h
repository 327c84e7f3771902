// The option line (command O) and the P command of a page.
#pragma once

#include <string>

#include "config/oemdev.h"

// Returns the option line; empty if no option is set. *pAndCutText receives the P command, if any,
// and the page's cut commands, which may set the record's dwInitialCutSent.
std::string BuildOptionCommands(OEMDEV& devmode, std::string* pAndCutText);
