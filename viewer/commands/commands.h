// The virtual printer's commands of vlx. Each function adds one to the command line.
#pragma once

#include "common/command.h"

Command AddViewCommand(CLI::App& program);
Command AddExplainCommand(CLI::App& program);
Command AddLintCommand(CLI::App& program);
Command AddDiffCommand(CLI::App& program);
Command AddServeCommand(CLI::App& program);
