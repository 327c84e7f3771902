// Names formats that are not read, and says how to convert them.
#pragma once

#include <string>
#include <string_view>

#include "host/error.h"

// The error for an input in no format that is read. head: its first bytes, kPageHeadBytes at most.
// name: of the input. readable: names of the formats that are read.
HostError ForeignFormatError(std::string_view head, const std::string& name,
                             const std::string& readable);
