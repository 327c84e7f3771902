#include "tools/print_command.h"

#include <algorithm>
#include <cstdio>

#include "host/driver/printer.h"
#include "host/error.h"
#include "host/pages/selected_pages.h"
#include "host/targets/file_target.h"
#include "tools/interrupted_files.h"
#include "tools/job_options.h"
#include "tools/job_report.h"

namespace {

constexpr const char* kPrintExamples = R"(Examples:
  vlx print label.png -o label.job --paper 100x150mm --dpi 300
  vlx print label.png --to tcp://192.0.2.7 --settings two-colour.toml
  vlx print page-*.png -o - --copies 3 --set print.speed=150
  vlx print labels.pdf -o labels.job --paper 4x6in --dpi 203
  vlx print --printer line3 labels.pdf      # system.toml says where that is
  vlx print labels.pdf --dry-run            # what it would cost
  produce-pages | vlx print - -o labels.job --fit shrink

Exit codes: 0 done, 2 usage, 3 input unreadable, 4 settings conflict,
5 target unreachable, 7 partly sent, 70 internal)";

struct PrintOptions {
  JobOptions job;
  std::string output;
  std::string to;
  bool timing = false;
  bool dryRun = false;
};

std::vector<std::unique_ptr<JobTarget>> OpenTargets(const PrintOptions& options) {
  std::vector<std::unique_ptr<JobTarget>> targets;
  if (options.dryRun) return targets;
  if (options.output.empty() && options.to.empty()) {
    throw HostError(kExitUsage, "The job has no target",
                    "add -o FILE, -o - or --to tcp://HOST, or name a target for the printer in " +
                        SystemFilePath());
  }
  if (!options.output.empty()) {
    targets.push_back(OpenFileTarget(options.output, InterruptedFiles()));
  }
  if (!options.to.empty()) targets.push_back(OpenTarget(options.to));
  return targets;
}

std::vector<std::string> TargetNames(const PrintOptions& options) {
  if (options.dryRun) return {"dry run"};
  std::vector<std::string> names;
  if (!options.output.empty()) {
    names.push_back(options.output == "-" ? "standard output" : options.output);
  }
  if (!options.to.empty()) names.push_back(options.to);
  return names;
}

// The number of the page that was printed last, and the list of those that were not.
struct Rest {
  std::size_t last = 0;
  std::string pages;  // as --pages takes it; empty if nothing is left
};

Rest RestAfter(std::size_t printed, const std::string& pagesOption) {
  std::vector<PageRange> ranges = {{1, PageRange::kOpen}};
  if (!pagesOption.empty()) ranges = ParsePageRanges(pagesOption);
  Rest rest;
  for (PageRange range : ranges) {
    const std::size_t taken =
        range.last == PageRange::kOpen ? printed : std::min(printed, range.last - range.first + 1);
    printed -= taken;
    range.first += taken;
    if (taken > 0) rest.last = range.first - 1;
    if (range.first > range.last) continue;
    if (!rest.pages.empty()) rest.pages += ",";
    rest.pages += std::to_string(range.first);
    if (range.last == range.first) continue;
    rest.pages += "-";
    if (range.last != PageRange::kOpen) rest.pages += std::to_string(range.last);
  }
  return rest;
}

// What a network printer has received cannot be taken back. Reports how much that is and how to
// print the rest. allPages: 0 if more may follow.
[[noreturn]] void FailPartly(const std::string& pagesOption, const HostError& error,
                             const JobCost& cost, std::size_t allPages) {
  const auto* partly = dynamic_cast<const PartlySentError*>(&error);
  const std::uint64_t bytes = partly != nullptr ? partly->TakenBytes() : cost.Bytes();
  const JobCost::Printed sent = cost.PrintedWithin(bytes);
  const Rest rest = RestAfter(sent.pages, pagesOption);
  const std::string last = std::to_string(rest.last);
  std::string remedy = error.Remedy().empty() ? "" : error.Remedy() + ", then ";
  if (sent.pages == 0) {
    remedy += "print the job again";
  } else if (sent.pages == allPages || rest.pages.empty()) {
    remedy += "see whether page " + last + " came out: it was the last one";
  } else {
    remedy += "if page " + last + " came out last, print the rest with --pages " + rest.pages;
  }
  throw HostError(kExitPartlySent,
                  error.Fact() + "; it has received " + std::to_string(sent.labels) +
                      (sent.labels == 1 ? " label, " : " labels, ") + std::to_string(bytes) +
                      " bytes of the job",
                  remedy);
}

int RunPrint(PrintOptions options) {
  const PrinterProfile profile = ProfileOf(options.job.printer);
  if (options.output.empty() && options.to.empty()) options.to = profile.target;
  if (options.dryRun) options.job.saveDevmodeFile.clear();
  const JobRequest request = MakeRequest(options.job, ReadSettings(options.job, profile));
  OutputGuard guard = GuardOutputs(options.job, profile, request);
  if (!options.dryRun) guard.Add({"-o", options.output}, kJobOutput);
  Spool spool(OpenTargets(options));
  std::size_t pages = 0;
  try {
    pages = PrintFiles(options.job, request, spool).pages;
    spool.Finish();
  } catch (const HostError& error) {
    const bool begun = spool.Cost().Bytes() > 0 && !options.to.empty() && !options.dryRun;
    if (!begun && error.Code() != kExitPartlySent) throw;
    FailPartly(options.job.pages, error, spool.Cost(), pages);
  }
  const bool outputTaken = options.output == "-" && !options.dryRun;
  PrintReport(options.job, {TargetNames(options), pages, {}}, spool.Cost(), outputTaken);
  if (options.timing) {
    std::fputs(spool.Clock().Table(pages).c_str(), outputTaken ? stderr : stdout);
  }
  return kExitDone;
}

}  // namespace

Command PrintCommand(CLI::App& program) {
  const auto options = std::make_shared<PrintOptions>();
  CLI::App* print = program.add_subcommand("print", "Print images and PDF files");
  print->add_option("-o,--output", options->output, "File for the job, - for standard output")
      ->option_text("FILE")
      ->group("Where to");
  print->add_option("--to", options->to, "Network printer [port 9100]")
      ->option_text("tcp://HOST[:PORT]")
      ->group("Where to");
  print->add_flag("--dry-run", options->dryRun, "Do everything but send the job, and show its cost")
      ->group("Where to");
  AddJobOptions(*print, options->job);
  print->add_flag("--timing", options->timing, "Show how long each stage of the job took")
      ->group("Output");
  print->footer(kPrintExamples);
  return {print, [options] { return RunPrint(*options); }};
}
