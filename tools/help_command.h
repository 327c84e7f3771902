#pragma once

#include "common/command.h"

// vlx help [COMMAND...]
Command HelpCommand(CLI::App& program);

// vlx version
Command VersionCommand(CLI::App& program);

// Prints what vlx version and vlx --version print. Throws HostError (internal).
int ShowVersion();

// The layout of all help: values by their names in words, no parser types.
std::shared_ptr<CLI::FormatterBase> HelpLayout();
