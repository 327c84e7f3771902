// The command `vlx settings`: shows settings files and raw settings records.
#pragma once

#include "common/command.h"

Command SettingsCommand(CLI::App& program);
