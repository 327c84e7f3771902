// The parts of the torture run. Each counts what it tried and what it found.
#pragma once

#include <string>

#include "tests/support/temp_home.h"
#include "tests/torture/faults.h"

struct Report {
  const char* part;
  long tried = 0;
  long found = 0;

  // Names the case that runs now: it is printed should the process die in it.
  void Try(const std::string& name);
  // One finding of that case; an empty text is none.
  void Find(const std::string& what);
};

// Runs one part; share: of the whole, in percent, that is tried.
using PartFunction = void(Report& report, const TempHome& home, int share);
PartFunction FailEachCall, FailEachRequest, FailEachWrite;
PartFunction EachByteOfTheRecord, HostileJobs, HostileLengths, HostileFiles;
PartFunction CallOrders, ManyAtOnce, SoakPages, SoakDocuments;
// Prints a line for every write of every scenario, images as pixels.
void PrintStreams(const TempHome& home);
// Commits one fault on purpose; returns when nothing noticed.
void Plant(Report& report, const TempHome& home, const std::string& fault);
