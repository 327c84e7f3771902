// Labels and faults as JSON, with the keys that docs/commands.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "viewer/drawing/job_view.h"

namespace viewer {

nlohmann::ordered_json ToJson(const DrawnLabel& drawn);
nlohmann::ordered_json ToJson(const Fault& fault);
nlohmann::ordered_json ToJson(const JobNotes& notes);

// Prints to standard output. Job text that is not valid UTF-8 is replaced.
void PrintJson(const nlohmann::ordered_json& json);

}  // namespace viewer
