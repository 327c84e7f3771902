// A job from files to the spool: what the commands that print have in common.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/driver/driver.h"
#include "host/settings/settings.h"
#include "host/targets/spool.h"

struct JobOptions {
  std::vector<std::string> files;
  std::string settingsFile;
  std::vector<std::string> sets;
  std::string devmodeFile;
  std::string saveDevmodeFile;
  std::string printer;
  std::string paper;
  std::string orientation;
  int dpi = 0;  // 0: not given, as for copies
  int copies = 0;
  bool collate = false;
  std::string fit = "none";
  std::string name;
  int bandRows = 256;
};

// Adds the files and the options to a command.
void AddJobOptions(CLI::App& command, JobOptions& options);
void AddSetOption(CLI::App& command, std::vector<std::string>& sets);

// The settings that the options amount to. Throws HostError.
Settings ReadSettings(const JobOptions& options);

// A file with a raw settings record, as it is. Throws HostError (input).
std::vector<BYTE> ReadDevModeFile(const std::string& path);

// The record for the plug-in: the options' record or the default, with the settings laid over it.
// Throws HostError (settings) for what the plug-in does not take.
OEMDEV MakeDevMode(LabelDriver& driver, const JobOptions& options, const Settings& settings);

struct JobResult {
  std::size_t pages;
  OEMDEV devmode;  // that the plug-in worked with
};

// Sends the pages of the files through the plug-in into the spool. Nothing is written before the
// first page is ready; the spool is not finished. Throws HostError.
JobResult RunJob(const JobOptions& options, const Settings& settings, Spool& spool);
