// The command `vlx test-label`: prints or draws a label that shows what a printer's settings do.
#pragma once

#include "common/command.h"

Command TestLabelCommand(CLI::App& program);
