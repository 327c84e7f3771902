#include "tools/job_options.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "host/driver/printer.h"
#include "host/error.h"
#include "host/file.h"
#include "host/pages/page_reader.h"

namespace {

void SaveDevMode(const std::string& path, const OEMDEV& devmode) {
  const std::unique_ptr<SpoolTarget> file = OpenFileTarget(path);
  file->Write({reinterpret_cast<const char*>(&devmode), sizeof devmode});
  file->Finish();
}

std::string DocumentName(const JobOptions& options) {
  if (!options.name.empty()) return options.name;
  const std::string& first = options.files.front();
  return first == "-" ? "standard input" : std::filesystem::path(first).filename().string();
}

// "17/200" on a terminal while a long job runs; nothing in a pipe.
class Progress {
 public:
  explicit Progress(std::size_t total) : m_total(total), m_shown(total != 1 && isatty(2) == 1) {}
  ~Progress() {
    if (m_shown) std::fputs("\r\x1B[K", stderr);
  }
  void Show(std::size_t page) const {
    if (!m_shown) return;
    const std::string total = m_total == 0 ? "" : "/" + std::to_string(m_total);
    std::fprintf(stderr, "\r%zu%s", page, total.c_str());
    std::fflush(stderr);
  }

 private:
  const std::size_t m_total;
  const bool m_shown;
};

// Turns page after page of the files into the device's surface, in the same two buffers.
class SurfaceReader {
 public:
  SurfaceReader(const JobOptions& options, const DevicePage& device)
      : m_reader(options.files, device.dpi),
        m_device(device),
        m_fit(options.fit == "shrink" ? Fit::Shrink : Fit::None) {}

  // False after the last page. Says what the printer cannot reach.
  bool Next(StageClock& clock) {
    const StageClock::Scope time(clock, Stage::Read);
    if (!m_reader.Next(m_page)) return false;
    const std::string name = "Page " + std::to_string(++m_number);
    FitPage(m_page, m_device, m_fit, name);
    if (LosesContent(m_page, m_device)) {
      std::fprintf(stderr, "%s has content in the margins that the printer does not reach\n",
                   name.c_str());
    }
    RasterPage(m_page, m_device, m_surface);
    return true;
  }
  const PageImage& Surface() const { return m_surface; }
  std::size_t KnownCount() const { return m_reader.KnownCount(); }

 private:
  PageReader m_reader;
  const DevicePage m_device;
  const Fit m_fit;
  std::size_t m_number = 0;
  PageImage m_page;
  PageImage m_surface;
};

// Prints all pages and returns their number. Nothing is written before the first page is ready.
std::size_t PrintPages(LabelDriver& driver, const JobOptions& options, StageClock& clock) {
  const DevicePage device = driver.Page();
  CheckPrintable(device);
  SurfaceReader pages(options, device);
  std::size_t count = 0;
  bool more = pages.Next(clock);
  const Progress progress(pages.KnownCount());
  driver.StartDocument(DocumentName(options), 1);
  try {
    for (; more; more = pages.Next(clock)) {
      driver.PrintPage(pages.Surface(), options.bandRows);
      progress.Show(++count);
    }
    driver.EndDocument();
  } catch (...) {
    driver.AbortDocument();
    throw;
  }
  return count;
}

}  // namespace

void AddSetOption(CLI::App& command, std::vector<std::string>& sets) {
  command.add_option("--set", sets, "One setting, KEY=VALUE; may be repeated (vlx settings keys)")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddJobOptions(CLI::App& command, JobOptions& options) {
  command
      .add_option("FILE", options.files, "PNG, PBM, PGM, PPM and PDF files; - reads standard input")
      ->required();
  command.add_option("--settings", options.settingsFile, "Settings file (TOML)");
  AddSetOption(command, options.sets);
  command.add_option("--devmode", options.devmodeFile, "Start from a raw settings record");
  command.add_option("--save-devmode", options.saveDevmodeFile, "Write the raw settings record");
  command.add_option("--printer", options.printer, "Printer of system.toml, the first by default");
  command.add_option("--paper", options.paper, "Paper size, as 100x150mm");
  command.add_option("--dpi", options.dpi, "Dots per inch of the printer and of the pages")
      ->check(CLI::Range(100, 1200));
  command.add_option("--orientation", options.orientation, "portrait or landscape")
      ->check(CLI::IsMember({"portrait", "landscape"}));
  command.add_option("--fit", options.fit, "none: a page that is too large is an error; or shrink")
      ->check(CLI::IsMember({"none", "shrink"}));
  command.add_option("--copies", options.copies, "Copies of each label")
      ->check(CLI::Range(1, 32767));
  command.add_flag("--collate", options.collate, "The application repeats the job by itself");
  command.add_option("--name", options.name, "Name of the job");
  command.add_option("--band-rows", options.bandRows, "Rows that the driver renders at a time")
      ->check(CLI::Range(1, 1000000));
}

std::vector<BYTE> ReadDevModeFile(const std::string& path) {
  const std::string content = ReadWholeFile(path, "settings record");
  return {content.begin(), content.end()};
}

OEMDEV MakeDevMode(LabelDriver& driver, const JobOptions& options, const Settings& settings) {
  OEMDEV devmode =
      options.devmodeFile.empty()
          ? driver.DefaultDevMode()
          : driver.MergeDevMode(ReadDevModeFile(options.devmodeFile), options.devmodeFile);
  settings.ApplyTo(devmode);
  std::vector<BYTE> record(sizeof devmode);
  std::memcpy(record.data(), &devmode, sizeof devmode);
  devmode = driver.MergeDevMode(record, "The settings");
  settings.CheckKept(devmode);
  return devmode;
}

Settings ReadSettings(const JobOptions& options) {
  WarnOfSystemFile();
  Settings settings;
  if (!options.settingsFile.empty()) settings.ReadFile(options.settingsFile);
  for (const std::string& set : options.sets) settings.Set(set);
  // Options of their own stand above both.
  const auto quoted = [](const std::string& text) { return "'" + text + "'"; };
  if (!options.paper.empty()) settings.Set("paper.size", quoted(options.paper));
  if (!options.orientation.empty()) settings.Set("paper.orientation", quoted(options.orientation));
  if (options.dpi != 0) settings.Set("paper.dpi", std::to_string(options.dpi));
  if (options.copies != 0) settings.Set("print.copies", std::to_string(options.copies));
  if (options.collate) settings.Set("print.collate", "true");
  return settings;
}

JobResult RunJob(const JobOptions& options, const Settings& settings, Spool& spool) {
  LabelDriver driver(FindPlugin(), spool);
  const OEMDEV devmode = MakeDevMode(driver, options, settings);
  if (!options.saveDevmodeFile.empty()) SaveDevMode(options.saveDevmodeFile, devmode);
  driver.Open(options.printer, settings.Page(), devmode);
  return {PrintPages(driver, options, spool.Clock()), devmode};
}
