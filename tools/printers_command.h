#pragma once

#include "common/command.h"

// vlx printers
Command PrintersCommand(CLI::App& program);
