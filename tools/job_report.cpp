#include "tools/job_report.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

void PrintReport(const JobOptions& options, const JobReport& report, const JobCost& cost,
                 bool outputTaken) {
  std::FILE* to = outputTaken ? stderr : stdout;
  if (!options.json) {
    if (options.quiet) return;
    for (const std::string& target : report.targets) {
      std::fprintf(to, "%s: %s\n", target.c_str(), cost.Line().c_str());
    }
    return;
  }
  nlohmann::ordered_json json = {{"targets", report.targets},
                                 {"pages", report.pages},
                                 {"labels", cost.Labels()},
                                 {"cuts", cost.Cuts()},
                                 {"mediaMm", std::llround(cost.MediaMm())},
                                 {"bytes", cost.Bytes()},
                                 {"images", cost.Images()},
                                 {"savedPercent", cost.SavedPercent()}};
  if (!report.pictures.empty()) json["pictures"] = report.pictures;
  using Json = nlohmann::ordered_json;
  std::fprintf(to, "%s\n", json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}
