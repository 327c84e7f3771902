#include "tools/doctor_command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "common/error.h"
#include "host/driver/driver.h"
#include "host/driver/module.h"
#include "host/driver/printer.h"
#include "host/driver/stocks.h"
#include "host/file.h"
#include "host/unicode.h"
#include "tools/printer_list.h"
#include "viewer/reports/label_json.h"

namespace {

constexpr const char* kDoctorExamples = R"(Examples:
  vlx doctor
  vlx doctor --json
  VLX_HOME=/etc/vlx vlx doctor              # as the print filter sees it

Exit codes: 0 everything works, 1 something is broken)";

enum class State { Works, Note, Broken };

// A line of the report: what was checked, its condition, and what to do about it.
struct Finding {
  State state;
  std::string thing;
  std::string what;
  std::string remedy = {};
};
using Findings = std::vector<Finding>;

// Programs that read pages of a kind.
struct Converter {
  const char* program;
  const char* package;
  const char* pages;
  bool common = true;  // most people need it
};
constexpr Converter kConverters[] = {
    {"pdftoppm", "poppler-utils", "PDF"},
    {"pdfinfo", "poppler-utils", "PDF"},
    {"rsvg-convert", "librsvg2-bin", "SVG", false},
};

std::string FoundInPath(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string file = (folder.empty() ? "." : folder) + "/" + program;
    if (access(file.c_str(), X_OK) == 0) return file;
  }
  return {};
}

void CheckProgram(Findings& findings) {
  findings.push_back({State::Works, "program", std::string("vlx ") + VLX_VERSION});
  try {
    const std::string path = FindPlugin();
    Spool nowhere;
    const LabelDriver driver(path, nowhere);
    findings.push_back(
        {State::Works, "plug-in", path + ", interface " + std::to_string(driver.PluginVersion())});
    findings.push_back({State::Works, "shared library",
                        LibraryPath("libvlx_shared.so") + ", version " + SharedLibraryVersion()});
  } catch (const HostError& error) {
    findings.push_back({State::Broken, "plug-in", error.Fact(), error.Remedy()});
  }
  findings.push_back({State::Works, "platform library",
                      LibraryPath("libvlx_platform.so") + ", version " + PlatformLibraryVersion()});
}

void CheckState(Findings& findings) {
  const std::string folder = StateFolder();
  struct stat status = {};
  if (stat(folder.c_str(), &status) != 0) {
    findings.push_back({State::Note, "state folder", folder + " does not exist: defaults apply"});
  } else if (!S_ISDIR(status.st_mode)) {
    findings.push_back({State::Broken, "state folder", folder + " is not a folder", "remove it"});
  } else if (access(folder.c_str(), R_OK | X_OK) != 0) {
    findings.push_back({State::Broken, "state folder", folder + " may not be read",
                        "give yourself permission with chmod u+rx " + folder});
  } else {
    findings.push_back({State::Works, "state folder", folder});
  }
  const std::string file = SystemFilePath();
  if (const std::string warning = SystemFileWarning(); !warning.empty()) {
    findings.push_back({State::Broken, "system.toml", warning, "correct that line"});
  } else if (access(file.c_str(), F_OK) != 0) {
    findings.push_back({State::Note, "system.toml", "there is none: one printer without a target"});
  } else {
    findings.push_back({State::Works, "system.toml", file});
  }
  findings.push_back({State::Works, "code page",
                      "of texts in jobs, in which bytes 80 and E4 are " + AnsiToUtf8("\x80") +
                          " and " + AnsiToUtf8("\xE4")});
}

void CheckPrinter(const ListedPrinter& printer, Findings& findings) {
  const PrinterProfile& profile = printer.profile;
  const std::string thing = "printer " + profile.name;
  if (!profile.settingsFile.empty()) {
    try {
      Settings().ReadFile(profile.settingsFile);
    } catch (const HostError& error) {
      findings.push_back(
          {State::Broken, thing, error.Fact(),
           error.Remedy().empty() ? "correct the file, or name another one" : error.Remedy()});
    }
  }
  if (!printer.fault) {
    findings.push_back({State::Note, thing, "no target: print with -o or --to"});
  } else if (printer.fault->empty()) {
    findings.push_back({State::Works, thing, profile.target + " answers"});
  } else {
    findings.push_back({State::Broken, thing, *printer.fault});
  }
  const std::size_t stocks = StocksOf(Printer(profile.name)).size();
  findings.push_back({State::Works, "stocks of " + profile.name,
                      stocks == 0 ? "none, the paper is what the settings say"
                                  : std::to_string(stocks) + " in " + RegistryFilePath()});
}

void CheckPrinters(Findings& findings) {
  try {
    for (const ListedPrinter& printer : ListPrinters()) CheckPrinter(printer, findings);
  } catch (const HostError& error) {
    findings.push_back({State::Broken, "printers", error.Fact(), error.Remedy()});
  }
}

void CheckConverters(Findings& findings) {
  for (const Converter& converter : kConverters) {
    const std::string path = FoundInPath(converter.program);
    const std::string thing = std::string(converter.pages) + " pages";
    if (!path.empty()) {
      findings.push_back({State::Works, thing, path});
    } else {
      findings.push_back({converter.common ? State::Broken : State::Note, thing,
                          std::string("the program ") + converter.program + " is not in PATH",
                          std::string("install the package ") + converter.package});
    }
  }
}

std::size_t QueuesOfFilter() {
  std::size_t queues = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/etc/cups/ppd", error)) {
    try {
      queues +=
          entry.path().extension() == ".ppd" &&
          ReadWholeFile(entry.path().string(), "PPD").find("rastertovlx") != std::string::npos;
    } catch (const HostError&) {
      // Some are readable by the administrator only.
    }
  }
  return queues;
}

void CheckFilter(Findings& findings) {
  const std::string filter = "/usr/lib/cups/filter/rastertovlx";
  struct stat status = {};
  if (stat(filter.c_str(), &status) != 0) {
    findings.push_back({State::Note, "print filter", "not installed: other programs cannot print"});
    return;
  }
  const bool safe = status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 &&
                    (status.st_mode & S_IXOTH) != 0;
  findings.push_back(
      {safe ? State::Works : State::Broken, "print filter",
       filter + (safe ? "" : " has permissions that CUPS refuses"),
       safe ? "" : "run chown root:root " + filter + " and chmod 755 " + filter + " as root"});
  const std::string descriptions = "/usr/share/cups/drv/vlx.drv";
  const bool described = access(descriptions.c_str(), R_OK) == 0;
  findings.push_back({described ? State::Works : State::Broken, "printer descriptions",
                      descriptions + (described ? "" : " is missing"),
                      described ? "" : "install the package again"});
  const std::size_t queues = QueuesOfFilter();
  findings.push_back({queues > 0 ? State::Works : State::Note, "print queues",
                      queues > 0 ? std::to_string(queues) + " print through the filter"
                                 : "none prints through the filter, as far as this user may see"});
}

constexpr void (*kChecks[])(Findings&) = {
    CheckProgram, CheckState, CheckPrinters, CheckConverters, CheckFilter,
};

const char* NameOf(State state) {
  return state == State::Works ? "ok" : state == State::Note ? "note" : "BROKEN";
}

int RunDoctor(bool asJson) {
  Findings findings;
  for (const auto check : kChecks) check(findings);
  std::size_t broken = 0;
  auto json = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    broken += finding.state == State::Broken;
    json.push_back({{"state", finding.state == State::Broken ? "broken" : NameOf(finding.state)},
                    {"thing", finding.thing},
                    {"what", finding.what},
                    {"remedy", finding.remedy}});
    if (asJson) continue;
    const std::string remedy = finding.remedy.empty() ? "" : "; " + finding.remedy;
    std::printf("%-6s  %-20s  %s%s\n", NameOf(finding.state), finding.thing.c_str(),
                finding.what.c_str(), remedy.c_str());
  }
  if (asJson) {
    viewer::PrintJson(json);
  } else {
    std::printf(broken == 0 ? "Everything works.\n" : "%zu broken.\n", broken);
  }
  return broken == 0 ? kExitDone : kExitFound;
}

}  // namespace

Command DoctorCommand(CLI::App& program) {
  const auto json = std::make_shared<bool>(false);
  CLI::App* doctor = program.add_subcommand("doctor", "Show what works and what does not");
  doctor->add_flag("--json", *json, "Print JSON");
  doctor->footer(kDoctorExamples);
  return {doctor, [json] { return RunDoctor(*json); }};
}
