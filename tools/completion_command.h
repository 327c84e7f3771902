#pragma once

#include <string>
#include <vector>

#include "common/command.h"

// vlx completion: prints the script that makes a shell complete command lines of vlx.
Command CompletionCommand(CLI::App& program);

// Answers "vlx completion words WORD...", which the scripts call: prints the words that complete
// the last one, one a line, and nothing where only a file name can stand. words: those after "vlx".
int PrintCompletions(const CLI::App& program, const std::vector<std::string>& words);
