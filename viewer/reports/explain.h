// Explains a job stream line by line, in words and units.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "viewer/language/stream_reader.h"

namespace viewer {

struct Explanation {
  Place place;
  std::size_t bytes = 0;
  std::string text;     // the line as printable text; data is not shown
  std::string command;  // name of the command, or "image data", "passed on", "blank"
  std::string words;
  std::vector<std::pair<std::string, std::string>> values;  // as written in the job
};

// Calls `each` for every line and block of the job, in order.
void ExplainJob(std::string_view job, const std::function<void(const Explanation&)>& each);

}  // namespace viewer
