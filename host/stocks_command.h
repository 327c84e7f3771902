// The command `vlx stocks`: the paper stocks of a printer, as the plug-in reads them.
#pragma once

#include "common/command.h"

Command StocksCommand(CLI::App& program);
