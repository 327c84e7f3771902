// The command `vlx preview`: draws what the printer would print.
#pragma once

#include "common/command.h"

Command PreviewCommand(CLI::App& program);
