// The command `vlx settings`: what a settings file or a raw settings record amounts to.
#pragma once

#include "common/command.h"

Command SettingsCommand(CLI::App& program);
