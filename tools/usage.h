// What is wrong with a command line, said so that the next try succeeds.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

// program: as it was when parsing failed. arguments: without the program's name.
std::string UsageMessage(const CLI::App& program, const std::vector<std::string>& arguments,
                         const CLI::ParseError& error);
