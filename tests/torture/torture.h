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

// Writes the state files and block files that the scenarios use.
void FillHome(const TempHome& home);

struct Outcome {
  std::vector<std::string> writes;  // as Comparable gives them
  std::string failed;               // the verbs that failed
};

// Writes with the time masked and whole images as their pixels: what the compression library makes
// of an image depends on where its memory lies.
std::vector<std::string> Comparable(std::vector<std::string> writes);

// A driver with the scenario's settings, before its first call.
std::unique_ptr<Driver> Prepare(const Scenario& scenario, const TempHome& home);
// Runs the whole job from the object's creation to its release.
Outcome Run(Driver& driver, const Scenario& scenario, const TempHome& home);
Outcome Run(const Scenario& scenario, const TempHome& home);

// The first difference of two outcomes as text; empty if they are equal.
std::string Difference(const Outcome& expected, const Outcome& found);

// A download is written whole or not at all.
bool DownloadsAreWhole(const std::vector<std::string>& writes);

// The parts of the torture run. Each counts what it tried and what it found.
struct Report {
  const char* part;
  long tried = 0;
  long found = 0;

  // Names the running case, which is printed if the process dies in it.
  void Try(const std::string& name);
  // Reports a finding in that case; an empty text is none.
  void Find(const std::string& what);
};

// Runs share percent of one part.
using PartFunction = void(Report& report, const TempHome& home, int share);
PartFunction FailEachCall, FailEachRequest, FailEachWrite;
PartFunction EachByteOfTheRecord, HostileLengths;
PartFunction ManyAtOnce, SoakPages, SoakDocuments;
// Prints a line for every write of every scenario, images as pixels.
void PrintStreams(const TempHome& home);
// Plants one fault on purpose; returns if nothing noticed it.
void Plant(Report& report, const TempHome& home, const std::string& fault);
