#pragma once

#include "common/command.h"

// vlx help [COMMAND...]
Command HelpCommand(CLI::App& program);

// vlx version
Command VersionCommand(CLI::App& program);

// Prints what vlx version and vlx --version print. Throws HostError (internal).
int ShowVersion();

// The layout of every help text: values have names and choices instead of the parser's types.
std::shared_ptr<CLI::FormatterBase> HelpLayout();
