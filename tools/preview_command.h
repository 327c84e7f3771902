// The command `vlx preview`: the pages as the printer would print them, without paper.
#pragma once

#include "common/command.h"

Command PreviewCommand(CLI::App& program);
