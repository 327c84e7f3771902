// vlx explain and vlx lint: what the lines of a job mean, and what is wrong with it.

#include <algorithm>
#include <cstdio>

#include "common/error.h"
#include "viewer/commands/commands.h"
#include "viewer/commands/job_file.h"
#include "viewer/commands/options.h"
#include "viewer/files.h"
#include "viewer/language/text.h"
#include "viewer/reports/contact_sheet.h"
#include "viewer/reports/explain.h"
#include "viewer/reports/label_json.h"
#include "viewer/reports/lint.h"

namespace {

using namespace viewer;
using Json = nlohmann::ordered_json;

constexpr std::size_t kLineShown = 200;

int Explain(const std::string& path, bool json) {
  const std::string job = ReadJob(path);
  if (!json) {
    ExplainJob(job, [](const Explanation& it) {
      std::size_t shown = std::min(it.text.size(), kLineShown);
      while (shown < it.text.size() && (it.text[shown] & 0xC0) == 0x80)
        --shown;  // end at a whole character
      const std::string text = it.text.substr(0, shown) + (shown < it.text.size() ? "..." : "");
      std::printf("%6zu  %s\n        %s\n", it.place.line, text.c_str(), it.words.c_str());
    });
    return kExitDone;
  }
  Json lines = Json::array();
  ExplainJob(job, [&lines](const Explanation& it) {
    Json line = {{"line", it.place.line}, {"offset", it.place.offset}, {"bytes", it.bytes},
                 {"text", it.text},       {"command", it.command},     {"words", it.words}};
    line["values"] = Json::object();
    for (const auto& [name, value] : it.values) line["values"][name] = value;
    lines.push_back(std::move(line));
  });
  PrintJson(lines);
  return kExitDone;
}

int Lint(const std::string& path, double dpi, bool json) {
  const std::string job = ReadJob(path);
  const LintResult result = LintJob(job, dpi);
  if (json) {
    Json faults = Json::array();
    for (const Fault& fault : result.faults) faults.push_back(ToJson(fault));
    PrintJson({{"job", path}, {"count", result.count}, {"faults", std::move(faults)}});
  } else {
    for (const Fault& fault : result.faults) {
      std::printf("%s:%zu: byte %zu: %s\n", path.c_str(), fault.place.line, fault.place.offset,
                  fault.text.c_str());
    }
    if (result.count > result.faults.size()) {
      std::printf("%s: and %s more\n", path.c_str(),
                  Grouped(result.count - result.faults.size()).c_str());
    }
    if (result.count == 0) std::printf("%s: nothing found\n", path.c_str());
  }
  return result.count == 0 ? kExitDone : kExitFound;
}

}  // namespace

Command AddExplainCommand(CLI::App& program) {
  struct Options {
    std::string job;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* explain = program.add_subcommand("explain", "Explain each line of a job");
  explain->add_option("JOB", options->job, "Job file, - for standard input")->required();
  explain->add_flag("--json", options->json, "Write JSON");
  explain->footer(
      "Examples:\n"
      "  vlx explain label.job\n"
      "  vlx print label.png -o - | vlx explain -\n\n"
      "Exit codes: 0 done, 2 usage, 3 unreadable or no job");
  return {explain, [options] { return Explain(options->job, options->json); }};
}

Command AddLintCommand(CLI::App& program) {
  struct Options {
    std::string job;
    double dpi = 0;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* lint = program.add_subcommand("lint", "Check a job for mistakes before it is printed");
  lint->add_option("JOB", options->job, "Job file, - for standard input")->required();
  AddDpiOption(*lint, options->dpi);
  lint->add_flag("--json", options->json, "Write JSON");
  lint->footer(
      "Examples:\n"
      "  vlx lint label.job\n"
      "  vlx lint label.job --dpi 203 --json\n\n"
      "Exit codes: 0 nothing found, 1 something found, 2 usage, 3 unreadable or no job");
  return {lint, [options] { return Lint(options->job, options->dpi, options->json); }};
}
