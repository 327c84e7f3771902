// Options shared by the viewer's commands.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "viewer/image/png.h"

namespace viewer {

// Adds --dpi. dpi stays 0 if the option is not given.
void AddDpiOption(CLI::App& command, double& dpi);

// Parses "#RRGGBB". Throws CommandError (usage).
Colour ReadColour(const std::string& text);

}  // namespace viewer
