#include "tools/print_command.h"

#include <cstdio>

#include "host/error.h"
#include "host/targets/file_target.h"
#include "tools/interrupted_files.h"
#include "tools/job_options.h"

namespace {

constexpr const char* kPrintExamples = R"(Examples:
  vlx print label.png -o label.job --paper 100x150mm --dpi 300
  vlx print label.png --to tcp://192.0.2.7 --settings two-colour.toml
  vlx print page-*.png -o - --copies 3 --set print.speed=150
  vlx print labels.pdf -o labels.job --paper 4x6in --dpi 203
  produce-pages | vlx print - -o labels.job --fit shrink

Exit codes: 0 done, 2 usage, 3 input unreadable, 4 settings conflict,
5 target unreachable, 7 partly sent, 70 internal)";

struct PrintOptions {
  JobOptions job;
  std::string output;
  std::string to;
  bool timing = false;
};

std::vector<std::unique_ptr<JobTarget>> OpenTargets(const PrintOptions& options) {
  if (options.output.empty() && options.to.empty()) {
    throw HostError(kExitUsage, "The job has no target", "add -o FILE, -o - or --to tcp://HOST");
  }
  std::vector<std::unique_ptr<JobTarget>> targets;
  if (!options.output.empty()) {
    targets.push_back(OpenFileTarget(options.output, InterruptedFiles()));
  }
  if (!options.to.empty()) targets.push_back(OpenTarget(options.to));
  return targets;
}

void ReportJob(const PrintOptions& options, std::size_t pages, Spool& spool) {
  const bool toOutput = options.output == "-";
  const std::string target =
      options.output.empty() || toOutput
          ? (options.to.empty() ? std::string("standard output") : options.to)
          : options.output;
  std::FILE* report = toOutput ? stderr : stdout;
  std::fprintf(report, "%s: %s\n", target.c_str(), spool.Cost().Line().c_str());
  if (options.timing) std::fputs(spool.Clock().Table(pages).c_str(), report);
}

int RunPrint(const PrintOptions& options) {
  GuardOutputs(options.job).Add({"-o", options.output}, kJobOutput);
  const Settings settings = ReadSettings(options.job);
  Spool spool(OpenTargets(options));
  std::size_t pages = 0;
  try {
    pages = PrintFiles(options.job, MakeRequest(options.job, settings), spool).pages;
    spool.Finish();
  } catch (const HostError& error) {
    // What a network printer has received cannot be taken back.
    if (options.to.empty() || spool.Cost().Bytes() == 0 || error.Code() == kExitPartlySent) throw;
    throw HostError(kExitPartlySent, error.Fact() + "; a part of the job was sent", error.Remedy());
  }
  ReportJob(options, pages, spool);
  return kExitDone;
}

}  // namespace

Command PrintCommand(CLI::App& program) {
  const auto options = std::make_shared<PrintOptions>();
  CLI::App* print = program.add_subcommand("print", "Print images and PDF files");
  print->add_option("-o,--output", options->output, "File for the job, - for standard output");
  print->add_option("--to", options->to, "Network printer, tcp://HOST[:PORT]");
  AddJobOptions(*print, options->job);
  print->add_flag("--timing", options->timing, "Show how long each stage of the job took");
  print->footer(kPrintExamples);
  return {print, [options] { return RunPrint(*options); }};
}
