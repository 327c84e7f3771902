#include "tools/print_command.h"

#include <cstdio>

#include "host/error.h"
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
  std::string tcp;
  bool timing = false;
};

std::vector<std::unique_ptr<SpoolTarget>> OpenTargets(const PrintOptions& options) {
  if (options.output.empty() && options.tcp.empty()) {
    throw HostError(kExitUsage, "Say where the job goes: -o FILE, -o - or --to tcp://HOST");
  }
  std::vector<std::unique_ptr<SpoolTarget>> targets;
  if (!options.output.empty()) targets.push_back(OpenFileTarget(options.output));
  if (!options.tcp.empty()) targets.push_back(OpenTcpTarget(options.tcp));
  return targets;
}

void ReportJob(const PrintOptions& options, std::size_t pages, Spool& spool) {
  const bool toOutput = options.output == "-";
  const std::string target =
      options.output.empty() || toOutput
          ? (options.tcp.empty() ? std::string("standard output") : options.tcp)
          : options.output;
  std::FILE* report = toOutput ? stderr : stdout;
  std::fprintf(report, "%s: %s\n", target.c_str(), spool.Cost().Line().c_str());
  if (options.timing) std::fputs(spool.Clock().Table(pages).c_str(), report);
}

int RunPrint(const PrintOptions& options) {
  const Settings settings = ReadSettings(options.job);
  Spool spool(OpenTargets(options));
  std::size_t pages = 0;
  try {
    pages = RunJob(options.job, settings, spool).pages;
    spool.Finish();
  } catch (const HostError& error) {
    // What a printer on the network has got cannot be taken back.
    if (options.tcp.empty() || spool.Cost().Bytes() == 0 || error.Code() == kExitPartlySent) throw;
    throw HostError(kExitPartlySent, std::string(error.what()) + "; a part of the job was sent");
  }
  ReportJob(options, pages, spool);
  return kExitDone;
}

}  // namespace

Command PrintCommand(CLI::App& program) {
  const auto options = std::make_shared<PrintOptions>();
  CLI::App* print =
      program.add_subcommand("print", "Print images and PDF files through the printer driver");
  print->add_option("-o,--output", options->output, "File for the job, - for standard output");
  print->add_option("--to", options->tcp, "Network printer, tcp://HOST[:9100]");
  AddJobOptions(*print, options->job);
  print->add_flag("--timing", options->timing, "Show where the time of the job went");
  print->footer(kPrintExamples);
  return {print, [options] { return RunPrint(*options); }};
}
