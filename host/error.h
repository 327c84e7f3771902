// The errors of the host: a fact, a remedy and an exit code. "Throws HostError (input)" in a
// comment means that the code is kExitInput.
#pragma once

#include "common/error.h"

using HostError = CommandError;
