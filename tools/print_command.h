// The command `vlx print`: files through the real plug-in to a printer or into a file.
#pragma once

#include "common/command.h"

Command PrintCommand(CLI::App& program);
