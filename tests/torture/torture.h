// Jobs that between them reach every path of the plug-in, the outcome of a job, and the parts of
// the torture run.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tests/driver/script.h"
#include "tests/support/temp_home.h"
#include "tests/torture/faults.h"

struct Scenario {
  const char* name;
  const char* document;     // verbs between the enabled device context and its end
  const char* fields = "";  // of the record, as SetFields takes them
  void (*prepare)(Driver& driver, const TempHome& home) = nullptr;
  // Why a lack of memory may change its commands and not only its images; null if it may not.
  const char* degrades = nullptr;
  // Changes files or the environment just before the job; not for jobs on several threads.
  void (*start)(const TempHome& home) = nullptr;
};

std::span<const Scenario> Scenarios();

// Lays down the state files and block files that the scenarios use.
void FillHome(const TempHome& home);

struct Outcome {
  std::vector<std::string> writes;
  std::string failed;  // the verbs that failed
};

// A driver with the scenario's settings, before its first call.
std::unique_ptr<Driver> Prepare(const Scenario& scenario, const TempHome& home);
// Runs the whole job from the object's creation to its release.
Outcome Run(Driver& driver, const Scenario& scenario, const TempHome& home);
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
PartFunction EachByteOfTheRecord, HostileLengths;
PartFunction ManyAtOnce, SoakPages, SoakDocuments;
// Prints a line for every write of every scenario, images as pixels.
void PrintStreams(const TempHome& home);
// Commits one fault on purpose; returns when nothing noticed.
void Plant(Report& report, const TempHome& home, const std::string& fault);
