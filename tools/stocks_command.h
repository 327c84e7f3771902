// The command `vlx stocks`: lists the paper stocks of a printer.
#pragma once

#include "common/command.h"

Command StocksCommand(CLI::App& program);
