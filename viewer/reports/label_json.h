// Labels and faults for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <span>

#include "viewer/drawing/job_view.h"

namespace viewer {

nlohmann::ordered_json ToJson(const DrawnLabel& drawn);
nlohmann::ordered_json ToJson(const Fault& fault);
nlohmann::ordered_json ToJson(const JobNotes& notes);

// Prints to standard output; text of a job that is no UTF-8 does not stop it.
void PrintJson(const nlohmann::ordered_json& json);

}  // namespace viewer
