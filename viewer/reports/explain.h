// A job stream line by line, in plain words and units.
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
  std::string text;     // the line for people; data is not shown
  std::string command;  // its name: "label size", "image data", "passed on", "blank"
  std::string words;
  std::vector<std::pair<std::string, std::string>> values;  // as they stand in the job
};

// Calls back with every piece of the job, from the first to the last.
void ExplainJob(std::string_view job, const std::function<void(const Explanation&)>& each);

}  // namespace viewer
