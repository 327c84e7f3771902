// One command of vlx: its place on the command line, and what it does.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

struct Command {
  CLI::App* app;
  std::function<int()> run;  // returns an ExitCode; throws CommandError
};
