// Explains what is wrong with a command line and what was probably meant.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

// program: in its state after parsing failed. arguments: without the program's name.
std::string UsageMessage(const CLI::App& program, const std::vector<std::string>& arguments,
                         const CLI::ParseError& error);
