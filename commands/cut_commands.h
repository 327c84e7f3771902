// The cut commands of a page and the cut line at the end of a job, from the two cut groups.
#pragma once

#include <string>

#include "config/oemdev.h"

// The cut commands of a page, possibly none. The first call for a record also gives the initial
// ones and sets dwInitialCutSent, even if there are none.
std::string BuildCutCommands(OEMDEV& devmode);

// The cut line at the end of the job, possibly empty. It does not end with a line end.
std::string BuildEndCutCommand(const OEMDEV& devmode);
