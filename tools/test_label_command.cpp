#include "tools/test_label_command.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "host/driver/printer.h"
#include "host/error.h"
#include "host/settings/settings_text.h"
#include "host/targets/file_target.h"
#include "tools/interrupted_files.h"
#include "tools/job_options.h"
#include "tools/job_report.h"
#include "tools/label_pictures.h"
#include "tools/test_label/test_page.h"
#include "viewer/files.h"

namespace {

constexpr const char* kTestLabelNotes =
    R"(The label shows offset and size in millimetres, heat, dot gain, bar codes of 1 to 4 dots a module
and, in two colours, the register. Parts that do not fit are left out and named.

Examples:
  vlx test-label -o seen.png --paper 100x150mm --dpi 300
  vlx test-label --to tcp://192.0.2.7 --settings two-colour.toml
  vlx test-label -o test.job --set print.darkness=5

Exit codes: 0 done, 2 usage, 3 settings unreadable, 4 settings conflict,
5 target unreachable, 7 partly sent, 70 internal)";

struct TestLabelOptions {
  JobOptions job;
  std::string output;
  std::string to;

  bool Draws() const { return output.ends_with(".png"); }
};

// The settings that the label names; vlx settings show lists all of them.
constexpr const char* kShownSettings[] = {
    "paper.size",   "paper.dpi",      "paper.offset_x",  "paper.offset_y",
    "paper.gap",    "paper.sensor",   "print.speed",     "print.darkness",
    "print.method", "print.model",    "colour.ditherer", "colour.ditherer_parameter",
    "colour.mode",  "print.darkness2"};

// "size 100x150mm", "dpi 300", ...: the settings by the names of their keys.
std::vector<std::string> ShownSettings(const PageSettings& page, const OEMDEV& devmode) {
  std::istringstream document(SettingsText({&page, devmode}));
  std::vector<std::string> shown;
  std::string group;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with('[')) group = line.substr(1, line.find(']') - 1);
    const std::size_t equals = line.find(" = ");
    if (equals == line.npos) continue;
    const std::string key = line.substr(0, equals);
    const auto is = [&](const std::string& name) { return name == group + "." + key; };
    if (std::none_of(std::begin(kShownSettings), std::end(kShownSettings), is)) continue;
    std::string value = line.substr(equals + 3, line.find(" #") - equals - 3);
    value.erase(value.find_last_not_of(' ') + 1);
    if (value == "\"\"") continue;
    std::erase(value, '"');
    shown.push_back(key + " " + value);
  }
  return shown;
}

TestLabelJob LabelJobOf(const LabelJob& job, const Settings& settings) {
  TestLabelJob label;
  label.dpi = job.Page().dpi;
  const COLORREF colour = job.DevMode().crHighlightColor;
  if (job.DevMode().dwColorMode == 2) {
    label.highlight = Ink{static_cast<std::uint8_t>(colour), static_cast<std::uint8_t>(colour >> 8),
                          static_cast<std::uint8_t>(colour >> 16)};
  }
  label.settings = ShownSettings(settings.Page(), job.DevMode());
  return label;
}

class TestObserver final : public JobObserver {
 public:
  void Warning(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }
};

std::vector<std::unique_ptr<JobTarget>> OpenTargets(const TestLabelOptions& options,
                                                    std::string& drawn) {
  if (options.output.empty() && options.to.empty()) {
    throw HostError(
        kExitUsage, "The test label has no target",
        "add -o FILE.png to see it, --to tcp://HOST to print it, or name a target for the "
        "printer in " +
            SystemFilePath());
  }
  std::vector<std::unique_ptr<JobTarget>> targets;
  if (options.Draws()) {
    targets.push_back(std::make_unique<MemoryTarget>(drawn));
  } else if (!options.output.empty()) {
    targets.push_back(OpenFileTarget(options.output, InterruptedFiles()));
  }
  if (!options.to.empty()) targets.push_back(OpenTarget(options.to));
  return targets;
}

int RunTestLabel(TestLabelOptions options) {
  const PrinterProfile profile = ProfileOf(options.job.printer);
  if (options.output.empty() && options.to.empty()) options.to = profile.target;
  options.job.name = "test label";
  const Settings settings = ReadSettings(options.job, profile);
  const JobRequest request = MakeRequest(options.job, settings);
  GuardOutputs(options.job, profile, request)
      .Add({"-o", options.output}, options.Draws() ? kPictureOutput : kJobOutput);
  std::string drawn;
  Spool spool(OpenTargets(options, drawn));
  TestObserver observer;
  LabelJob job(request, spool, observer);
  TestPage page(job.Page(), LabelJobOf(job, settings));
  PrintPages(page, job);
  spool.Finish();
  if (options.Draws()) {
    DrawLabels(drawn, settings.Page(), job.DevMode(),
               [&](const std::string& png) { viewer::WriteWholeFile(options.output, png); });
  }
  for (const std::string& title : page.LeftOut()) {
    std::fprintf(stderr, "There is no room for: %s\n", title.c_str());
  }
  std::vector<std::string> targets;
  if (!options.output.empty()) {
    targets.push_back(options.output == "-" ? "standard output" : options.output);
  }
  if (!options.to.empty()) targets.push_back(options.to);
  PrintReport(options.job, {targets, 1, {}}, spool.Cost(), options.output == "-");
  return kExitDone;
}

}  // namespace

Command TestLabelCommand(CLI::App& program) {
  const auto options = std::make_shared<TestLabelOptions>();
  JobOptions& job = options->job;
  CLI::App* test = program.add_subcommand("test-label", "Print a label that tests the settings");
  test->add_option("-o,--output", options->output,
                   "Picture (.png) of the label, or file for the job, - for standard output")
      ->option_text("FILE");
  test->add_option("--to", options->to, "Network printer")->option_text("tcp://HOST[:PORT]");
  test->add_option("--settings", job.settingsFile, "Settings file (TOML)")->option_text("FILE");
  AddSetOption(*test, job.sets);
  test->add_option("--printer", job.printer, "Printer named in system.toml [the first]")
      ->option_text("NAME");
  test->add_option("--paper", job.paper, "Paper size, such as 4x6in [100x150mm]")
      ->option_text("WIDTHxLENGTH");
  test->add_option("--dpi", job.dpi, "Resolution of the printer in dots per inch [300]")
      ->option_text("N")
      ->check(CLI::Range(100, 1200));
  test->add_option("--orientation", job.orientation, "How the page lies [portrait]")
      ->option_text("portrait|landscape")
      ->check(CLI::IsMember({"portrait", "landscape"}));
  test->add_flag("--force", job.force, "Overwrite a file of another kind");
  test->add_flag("--json", job.json, "Show the result as JSON");
  test->footer(kTestLabelNotes);
  return {test, [options] { return RunTestLabel(*options); }};
}
