// The command `vlx print`: prints files to a printer or into a job file.
#pragma once

#include "common/command.h"

Command PrintCommand(CLI::App& program);
