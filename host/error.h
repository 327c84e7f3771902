// The errors of the driver's side.
#pragma once

#include "common/error.h"

using HostError = CommandError;
