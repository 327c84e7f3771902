// Formats that are not read, so that a refusal can name them and say how to convert them.
#pragma once

#include <string>
#include <string_view>

#include "host/error.h"

// The refusal of an input by its first bytes. name: of the input; readable: names of the formats
// that are read.
HostError ForeignFormatError(std::string_view head, const std::string& name,
                             const std::string& readable);
