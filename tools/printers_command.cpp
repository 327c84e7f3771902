#include "tools/printers_command.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "common/error.h"
#include "host/driver/printer.h"
#include "tools/job_options.h"
#include "tools/printer_list.h"
#include "viewer/reports/label_json.h"

namespace {

constexpr const char* kPrintersExamples = R"(Examples:
  vlx printers
  vlx printers --json
  vlx print --printer line3 labels.pdf

A printer is a [[printer]] of system.toml. vlx connects to each one that has a target, and sends it
nothing.)";

void ShowPrinter(const ListedPrinter& printer, bool first) {
  const PrinterProfile& profile = printer.profile;
  std::string line = profile.name + (first ? " (used when none is named)" : "") + ": ";
  line += profile.target.empty() ? "no target" : profile.target;
  if (profile.dpi != 0) line += ", " + std::to_string(profile.dpi) + " dpi";
  if (!profile.paper.empty()) line += ", paper " + profile.paper;
  if (!profile.settingsFile.empty()) line += ", settings " + profile.settingsFile;
  if (profile.dotGainPercent) {
    line += ", dot gain " + std::to_string(*profile.dotGainPercent) + " %";
  }
  if (printer.fault) line += printer.fault->empty() ? ", answers" : ": " + *printer.fault;
  std::printf("%s\n", line.c_str());
}

nlohmann::ordered_json ToJson(const ListedPrinter& printer) {
  const PrinterProfile& profile = printer.profile;
  nlohmann::ordered_json json = {{"name", profile.name}};
  if (!profile.target.empty()) json["target"] = profile.target;
  if (profile.dpi != 0) json["dpi"] = profile.dpi;
  if (!profile.paper.empty()) json["paper"] = profile.paper;
  if (!profile.settingsFile.empty()) json["settings"] = profile.settingsFile;
  if (profile.dotGainPercent) json["dotGain"] = *profile.dotGainPercent;
  if (printer.fault) {
    json["answers"] = printer.fault->empty();
    if (!printer.fault->empty()) json["fault"] = *printer.fault;
  }
  return json;
}

int RunPrinters(bool asJson) {
  WarnOfSystemFile();
  const std::vector<ListedPrinter> printers = ListPrinters();
  auto json = nlohmann::ordered_json::array();
  for (const ListedPrinter& printer : printers) {
    if (asJson) {
      json.push_back(ToJson(printer));
    } else {
      ShowPrinter(printer, &printer == &printers.front());
    }
  }
  if (asJson) viewer::PrintJson(json);
  return kExitDone;
}

}  // namespace

Command PrintersCommand(CLI::App& program) {
  const auto json = std::make_shared<bool>(false);
  CLI::App* printers =
      program.add_subcommand("printers", "List the printers, and whether they answer");
  printers->add_flag("--json", *json, "Print JSON");
  printers->footer(kPrintersExamples);
  return {printers, [json] { return RunPrinters(*json); }};
}
