#pragma once

#include <string>
#include <vector>

#include "common/command.h"

// vlx completion: prints the script that makes a shell complete command lines of vlx.
Command CompletionCommand(CLI::App& program);

// What the scripts ask, "vlx completion words WORD...": the words that may stand in place of the
// last one and begin with it, one a line. words: after "vlx". Nothing of ours: files may follow.
int PrintCompletions(const CLI::App& program, const std::vector<std::string>& words);
