// The cut commands of a page and the cut line at the end of a job, from the two cut groups.
#pragma once

#include <string>

#include "config/oemdev.h"

// The cut commands of a page, possibly none. The record's first call gives the initial ones as well
// and sets dwInitialCutSent, also when there were none to give.
std::string BuildCutCommands(OEMDEV& devmode);

// The cut line at the end of the job, possibly empty. It has no line end of its own.
std::string BuildEndCutCommand(const OEMDEV& devmode);
