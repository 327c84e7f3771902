// The errors of the host: a fact, a remedy and the exit code of a command that is stopped by it.
#pragma once

#include "common/error.h"

using HostError = CommandError;
