#include "viewer/commands/options.h"

#include <charconv>

#include "common/error.h"

namespace viewer {

void AddDpiOption(CLI::App& command, double& dpi) {
  command
      .add_option("--dpi", dpi, "Resolution of the printer in dots per inch; guessed if not given")
      ->check(CLI::Range(50, 2400));
}

Colour ReadColour(const std::string& text) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  if (text.size() != 7 || text[0] != '#' ||
      std::from_chars(text.data() + 1, end, number, 16).ptr != end) {
    throw CommandError(kExitUsage, "The colour is \"" + text + "\": write it as #RRGGBB");
  }
  return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
          static_cast<std::uint8_t>(number)};
}

}  // namespace viewer
