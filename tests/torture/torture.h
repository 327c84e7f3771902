// Whole jobs that between them take every road through the plug-in, what a job came to, and the
// parts of the torture run that they are for.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tests/support/temp_home.h"
#include "tests/torture/faults.h"
#include "tests/torture/machine.h"

struct Scenario {
  const char* name;
  const char* document;     // verbs between the enabled device context and its end
  const char* fields = "";  // of the record, as SetFields takes them
  void (*prepare)(Machine& machine, const TempHome& home) = nullptr;
  // Why its commands, not only its images, may read otherwise when there is no memory; else null.
  const char* degrades = nullptr;
};

std::span<const Scenario> Scenarios();

// Lays down the state files and block files that the scenarios use.
void FillHome(const TempHome& home);

struct Outcome {
  std::vector<std::string> writes;
  std::string results;  // the verbs that failed
};

// A machine with the scenario's settings, not yet run.
std::unique_ptr<Machine> Prepare(const Scenario& scenario, const TempHome& home);
// Runs the whole job from the object's creation to its release.
Outcome Run(Machine& machine, const Scenario& scenario);
Outcome Run(const Scenario& scenario, const TempHome& home);

// The first difference of two outcomes as text, empty when there is none.
std::string Difference(const Outcome& expected, const Outcome& found);

// A download is written whole or not at all.
bool DownloadsAreWhole(const std::vector<std::string>& writes);

// The parts of the torture run. Each counts what it tried and what it found.
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
