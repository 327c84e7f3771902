// The command vlx.

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "common/command.h"
#include "common/error.h"
#include "host/pages/page_raster.h"
#include "tools/completion_command.h"
#include "tools/doctor_command.h"
#include "tools/help_command.h"
#include "tools/preview_command.h"
#include "tools/print_command.h"
#include "tools/printers_command.h"
#include "tools/settings_command.h"
#include "tools/stocks_command.h"
#include "tools/test_label_command.h"
#include "tools/usage.h"
#include "viewer/commands/commands.h"

namespace {

constexpr const char* kExamples = R"(Examples:
  vlx preview label.png -o seen.png --paper 100x150mm
  vlx print label.png --to tcp://192.0.2.7 --paper 100x150mm
  vlx print --help

Every command has its own --help with examples.)";

// Every command, in the order of the help.
constexpr Command (*kCommands[])(CLI::App& program) = {
    PrintCommand,    PreviewCommand, TestLabelCommand, AddViewCommand,  AddExplainCommand,
    AddLintCommand,  AddDiffCommand, AddServeCommand,  SettingsCommand, StocksCommand,
    PrintersCommand, DoctorCommand,  HelpCommand,      VersionCommand,  CompletionCommand,
};

int Run(int argc, char** argv) {
  CLI::App program("The label printer driver on the command line", "vlx");
  program.formatter(HelpLayout());
  program.require_subcommand(0, 1);
  program.footer(kExamples);
  bool version = false;
  program.add_flag("--version", version, "Show the versions of the program and its libraries");
  std::vector<Command> commands;
  for (const auto add : kCommands) commands.push_back(add(program));
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() >= 2 && arguments[0] == "completion" && arguments[1] == "words") {
    return PrintCompletions(program, {arguments.begin() + 2, arguments.end()});
  }
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return program.exit(error);  // help
    throw CommandError(kExitUsage, UsageMessage(program, arguments, error));
  }
  if (version) return ShowVersion();
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  std::fputs(program.help().c_str(), stderr);
  return kExitUsage;
}

int Report(const CommandError& error) {
  const std::string text = error.what();
  std::fprintf(stderr, "%s%s\n", text.starts_with("vlx") ? "" : "vlx: ", text.c_str());
  return error.Code();
}

// If standard output could not be written the command has failed, whatever it returned.
int WithOutput(int code) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  const std::string why = errno != 0 ? std::string(": ") + std::strerror(errno) : "";
  return Report(CommandError(kExitTarget, "Standard output cannot be written" + why +
                                              "; check where it goes and the space there"));
}

}  // namespace

int main(int argc, char** argv) {
  // If the reader of a pipe hangs up, report an error instead of dying of the signal.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);  // the exit status of helper programs is needed
  try {
    return WithOutput(Run(argc, argv));
  } catch (const PageTooLargeError& error) {
    const std::optional<PaperSize>& paper = error.FittingPaper();
    return Report(CommandError(error.Code(), error.Fact(),
                               (paper ? "choose --paper " + FormatPaperSize(*paper)
                                      : std::string("make the page smaller")) +
                                   ", another --dpi or --orientation, or --fit shrink"));
  } catch (const CommandError& error) {
    return Report(error);
  } catch (const std::bad_alloc&) {
    std::fputs("vlx: there is not enough memory\n", stderr);
    return kExitInternal;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vlx: internal error: %s\n", error.what());
    return kExitInternal;
  }
}
