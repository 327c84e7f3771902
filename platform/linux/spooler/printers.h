// The printers that system.toml describes.
#pragma once

#include <vector>

#include "platform/extensions.h"
#include "platform/linux/state/system_toml.h"

SystemPart<std::vector<PlatformPrinter>>& Printers();
