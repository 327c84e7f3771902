#include "tools/job_options.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "host/driver/printer.h"
#include "host/file.h"
#include "host/pages/page_ahead.h"
#include "host/pages/page_files.h"
#include "host/pages/page_formats.h"
#include "host/pages/selected_pages.h"
#include "host/targets/file_target.h"
#include "tools/interrupted_files.h"
#include "tools/progress.h"

namespace {

void Warn(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

void SaveDevMode(const std::string& path, const OEMDEV& devmode) {
  const std::unique_ptr<JobTarget> file = OpenFileTarget(path, InterruptedFiles());
  file->Write({reinterpret_cast<const char*>(&devmode), sizeof devmode});
  file->Finish();
}

std::string DocumentName(const JobOptions& options) {
  if (!options.name.empty()) return options.name;
  const std::string& first = options.files.front();
  return first == "-" ? "standard input" : std::filesystem::path(first).filename().string();
}

Place PlaceOfName(std::string_view name) {
  if (name == "top-right") return Place::TopRight;
  if (name == "bottom-left") return Place::BottomLeft;
  if (name == "bottom-right") return Place::BottomRight;
  return name == "centre" ? Place::Centre : Place::TopLeft;
}

std::unique_ptr<PageSource> OpenJobPages(const JobOptions& options, int dpi) {
  if (options.pages.empty()) return std::make_unique<PageFiles>(options.files, dpi);
  return std::make_unique<SelectedPages>(options.files, dpi, ParsePageRanges(options.pages));
}

// Whether the paper size is given, or pages are scaled to the default one.
bool NamesPaper(const JobRequest& request) {
  return request.settings.NamesPaper() || request.record || request.fit != Fit::None;
}

void TakePaperFromPage(PageAhead& pages, Settings& settings, Spool& spool) {
  const StageClock::Scope time(spool.Clock(), Stage::Read);
  const PageImage* page = pages.First();
  if (page == nullptr) return;
  const std::optional<PaperSize> paper =
      PaperFor(*page, settings.Page().dpi, settings.Page().landscape);
  if (paper) settings.Set("paper.size", FormatPaperSize(*paper));
}

// The files that the job sends with its custom command blocks.
void AddBlockFiles(const JobRequest& request, std::vector<NamedFile>& inputs) {
  OEMDEV devmode = {};
  if (request.record && request.record->bytes.size() == sizeof devmode) {
    std::memcpy(&devmode, request.record->bytes.data(), sizeof devmode);
  }
  request.settings.ApplyTo(devmode);
  for (int i = 0; i < kCustomBlockCount; ++i) {
    const CustomBlock block = GetCustomBlock(devmode, i);
    if (block.kind == kBlockFile) {
      inputs.push_back({"the file of command block " + std::to_string(i), block.text});
    }
  }
}

// How the options appear in --help: their group, and a name for the value where its choices are not
// listed.
struct OptionLayout {
  const char* option;
  const char* group;
  const char* value = "";
};
constexpr OptionLayout kLayout[] = {
    {"--printer", "Where to", "NAME"},
    {"--save-devmode", "Where to", "FILE"},
    {"--force", "Where to"},
    {"--pages", "Pages", "LIST"},
    {"--paper", "Pages", "SIZE"},
    {"--dpi", "Pages", "N"},
    {"--orientation", "Pages"},
    {"--fit", "Pages"},
    {"--place", "Pages"},
    {"--settings", "Settings", "FILE"},
    {"--set", "Settings", "KEY=VALUE"},
    {"--devmode", "Settings", "FILE"},
    {"--copies", "Settings", "N"},
    {"--collate", "Settings"},
    {"--name", "Settings", "TEXT"},
    {"--band-rows", "Settings", "N"},
    {"--quiet", "Output"},
    {"--json", "Output"},
};

}  // namespace

void AddSetOption(CLI::App& command, std::vector<std::string>& sets) {
  command
      .add_option("--set", sets, "One setting, as vlx settings keys lists them; may be repeated")
      ->option_text("KEY=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddJobOptions(CLI::App& command, JobOptions& options) {
  command.add_option("FILE", options.files, PageFormatNames() + " files; - is standard input")
      ->required();
  command.add_option("--settings", options.settingsFile, "Settings file (TOML)");
  AddSetOption(command, options.sets);
  command.add_option("--devmode", options.devmodeFile, "Start from this raw settings record");
  command.add_option("--save-devmode", options.saveDevmodeFile, "Save the raw settings record");
  command.add_option("--printer", options.printer, "Printer named in system.toml [the first]");
  command.add_option(
      "--pages", options.pages,
      "Pages to print, such as 3-7,1,12-, in this order; counted over all files [all]");
  command.add_option("--paper", options.paper, "Paper size, such as 4x6in [the first page's]");
  command
      .add_option("--dpi", options.dpi,
                  "Resolution of the printer and of the pages in dots per inch [300]")
      ->check(CLI::Range(100, 1200));
  command.add_option("--orientation", options.orientation, "How pages lie [portrait]")
      ->check(CLI::IsMember({"portrait", "landscape"}));
  command
      .add_option(
          "--fit", options.fit,
          "none: a page larger than the paper is an error; shrink: scale it down; fit: also "
          "scale a smaller one up [none]")
      ->check(CLI::IsMember({"none", "shrink", "fit"}));
  command
      .add_option("--place", options.place, "Where a page smaller than the paper lies [top-left]")
      ->check(CLI::IsMember({"top-left", "top-right", "bottom-left", "bottom-right", "centre"}));
  command.add_option("--copies", options.copies, "Copies of each label [1]")
      ->check(CLI::Range(1, 32767));
  command.add_flag("--collate", options.collate,
                   "The application repeats the whole job itself: print each label once");
  command.add_option("--name", options.name, "Name of the job [that of the first file]");
  command
      .add_option("--band-rows", options.bandRows, "Rows that the driver passes on at a time [256]")
      ->check(CLI::Range(1, 1000000));
  command.add_flag("--force", options.force, "Overwrite a file of another kind");
  command.add_flag("--quiet", options.quiet, "Show only warnings and errors");
  command.add_flag("--json", options.json, "Show the result as JSON");
  for (const OptionLayout& row : kLayout) {
    if (CLI::Option* option = command.get_option_no_throw(row.option)) {
      option->group(row.group)->option_text(row.value);
    }
  }
}

OutputGuard GuardOutputs(const JobOptions& options, const PrinterProfile& profile,
                         const JobRequest& request) {
  if (std::count(options.files.begin(), options.files.end(), "-") > 1) {
    throw HostError(kExitUsage, "Standard input, -, is named more than once",
                    "it can be read once only: name it once, or use files");
  }
  std::vector<NamedFile> inputs;
  for (const std::string& file : options.files) inputs.push_back({"the page", file});
  inputs.push_back({"--settings", options.settingsFile});
  inputs.push_back({"--devmode", options.devmodeFile});
  inputs.push_back({"the printer's settings", profile.settingsFile});
  inputs.push_back({"the list of printers", SystemFilePath()});
  AddBlockFiles(request, inputs);
  OutputGuard guard(std::move(inputs), options.force);
  guard.Add({"--save-devmode", options.saveDevmodeFile}, kRecordOutput);
  return guard;
}

DevModeRecord ReadDevModeFile(const std::string& path) {
  const std::string content = ReadWholeFile(path, "settings record");
  return {{content.begin(), content.end()}, path};
}

Settings ReadSettings(const JobOptions& options, const PrinterProfile& profile) {
  Settings settings;
  if (!profile.settingsFile.empty()) settings.ReadFile(profile.settingsFile);
  if (!profile.paper.empty()) settings.Set("paper.size", "'" + profile.paper + "'");
  if (profile.dpi != 0) settings.Set("paper.dpi", std::to_string(profile.dpi));
  if (!options.settingsFile.empty()) settings.ReadFile(options.settingsFile);
  for (const std::string& set : options.sets) settings.Set(set);
  // The options with a name of their own override both.
  const auto quoted = [](const std::string& text) { return "'" + text + "'"; };
  if (!options.paper.empty()) {
    settings.Set("paper.size", FormatPaperSize(ParsePaperSize(options.paper, "--paper")));
  }
  if (!options.orientation.empty()) settings.Set("paper.orientation", quoted(options.orientation));
  if (options.dpi != 0) settings.Set("paper.dpi", std::to_string(options.dpi));
  if (options.copies != 0) settings.Set("print.copies", std::to_string(options.copies));
  if (options.collate) settings.Set("print.collate", "true");
  return settings;
}

JobRequest MakeRequest(const JobOptions& options, const Settings& settings) {
  JobRequest request;
  request.name = DocumentName(options);
  request.printer = options.printer;
  request.settings = settings;
  if (!options.devmodeFile.empty()) request.record = ReadDevModeFile(options.devmodeFile);
  request.fit = options.fit == "shrink" ? Fit::Shrink
                : options.fit == "fit"  ? Fit::Scale
                                        : Fit::None;
  request.place = PlaceOfName(options.place);
  request.bandRows = options.bandRows;
  return request;
}

PrintedFiles PrintFiles(const JobOptions& options, JobRequest request, Spool& spool) {
  TerminalObserver observer(options.quiet);
  PageAhead pages(OpenJobPages(options, request.settings.Page().dpi));
  if (!NamesPaper(request)) TakePaperFromPage(pages, request.settings, spool);
  LabelJob job(request, spool, observer);
  if (!options.saveDevmodeFile.empty()) SaveDevMode(options.saveDevmodeFile, job.DevMode());
  PrintPages(pages, job);
  return {job.PagesPrinted(), job.DevMode()};
}

void WarnOfSystemFile() {
  if (const std::string warning = SystemFileWarning(); !warning.empty()) Warn(warning);
}
