// Options that several of the viewer's commands share.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "viewer/image/png.h"

namespace viewer {

// --dpi; stays 0 when it is not given.
void AddDpiOption(CLI::App& command, double& dpi);

// "#RRGGBB". Throws CommandError (usage).
Colour ReadColour(const std::string& text);

}  // namespace viewer
