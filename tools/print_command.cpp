#include "tools/print_command.h"

#include <cstdio>

#include "host/driver/printer.h"
#include "host/error.h"
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

// What a network printer has received cannot be taken back: tells how much that is, and how to
// print the rest.
[[noreturn]] void FailPartly(const HostError& error, const JobCost& cost) {
  const auto* partly = dynamic_cast<const PartlySentError*>(&error);
  const std::uint64_t bytes = partly != nullptr ? partly->TakenBytes() : cost.Bytes();
  const JobCost::Printed sent = cost.PrintedWithin(bytes);
  const std::string rest = "with --pages " + std::to_string(sent.pages + 1) + "-";
  throw HostError(kExitPartlySent,
                  error.Fact() + "; a part of the job was sent: " + std::to_string(sent.labels) +
                      (sent.labels == 1 ? " label, " : " labels, ") + std::to_string(bytes) +
                      " bytes",
                  (error.Remedy().empty() ? "" : error.Remedy() + ", then ") +
                      "look at the last label and print the rest " + rest);
}

int RunPrint(PrintOptions options) {
  const PrinterProfile profile = ProfileOf(options.job.printer);
  if (options.output.empty() && options.to.empty()) options.to = profile.target;
  if (options.dryRun) options.job.saveDevmodeFile.clear();
  OutputGuard guard = GuardOutputs(options.job);
  if (!options.dryRun) guard.Add({"-o", options.output}, kJobOutput);
  const Settings settings = ReadSettings(options.job, profile);
  Spool spool(OpenTargets(options));
  std::size_t pages = 0;
  try {
    pages = PrintFiles(options.job, MakeRequest(options.job, settings), spool).pages;
    spool.Finish();
  } catch (const HostError& error) {
    const bool begun = spool.Cost().Bytes() > 0 && !options.to.empty() && !options.dryRun;
    if (!begun && error.Code() != kExitPartlySent) throw;
    FailPartly(error, spool.Cost());
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
