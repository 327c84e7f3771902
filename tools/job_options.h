// The options that the printing commands share.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/label_job.h"
#include "host/settings/printer_profiles.h"
#include "tools/output_guard.h"

struct JobOptions {
  std::vector<std::string> files;
  std::string settingsFile;
  std::vector<std::string> sets;
  std::string devmodeFile;
  std::string saveDevmodeFile;
  std::string printer;
  std::string paper;
  std::string pages;
  std::string orientation;
  int dpi = 0;     // 0: not given
  int copies = 0;  // 0: not given
  bool collate = false;
  std::string fit = "none";
  std::string place = "top-left";
  std::string name;
  int bandRows = 256;
  bool force = false;
  bool quiet = false;
  bool json = false;
};

// Add the files and the options, or --set alone, to a command.
void AddJobOptions(CLI::App& command, JobOptions& options);
void AddSetOption(CLI::App& command, std::vector<std::string>& sets);

// Reads the printer's profile, the settings file, --set and the options with a name of their own;
// the later ones override the earlier. Throws HostError.
Settings ReadSettings(const JobOptions& options, const PrinterProfile& profile = {});

// Returns a guard over everything that the job reads, with --save-devmode already added. Throws
// HostError (usage), also if standard input is named twice.
OutputGuard GuardOutputs(const JobOptions& options, const PrinterProfile& profile,
                         const JobRequest& request);

// Reads a raw settings record. Throws HostError (input).
DevModeRecord ReadDevModeFile(const std::string& path);

// The job that the options describe. Throws HostError.
JobRequest MakeRequest(const JobOptions& options, const Settings& settings);

struct PrintedFiles {
  std::size_t pages;
  OEMDEV devmode;  // the record that the plug-in used
};

// Prints the files' pages, with progress on a terminal. Finishing the spool is left to the caller.
// Throws HostError.
PrintedFiles PrintFiles(const JobOptions& options, JobRequest request, Spool& spool);

// Prints a warning that system.toml is ignored, if it is.
void WarnOfSystemFile();
