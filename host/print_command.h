// The command `vlx print`: image files through the real plug-in into a job.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/error.h"

struct PrintOptions {
  std::vector<std::string> files;
  std::string output;
  std::string tcp;
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

// Adds the command and its options to the program's.
CLI::App* AddPrintCommand(CLI::App& program, PrintOptions& options);

// Prints. Returns kExitDone; throws HostError.
int RunPrint(const PrintOptions& options);
