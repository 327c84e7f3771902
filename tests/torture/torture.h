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

// share: of the whole, in percent, that is tried.
template <Domain domain>
void FailEach(Report& report, const TempHome& home, int share);
void FailEachWrite(Report& report, const TempHome& home, int share);
void EachByteOfTheRecord(Report& report, const TempHome& home, int share);
void ManyRecords(Report& report, const TempHome& home, int share);
void HostileLengths(Report& report, const TempHome& home, int share);
void HostilePages(Report& report, const TempHome& home, int share);
void HostileFiles(Report& report, const TempHome& home, int share);
void CallOrders(Report& report, const TempHome& home, int share);
void ManyAtOnce(Report& report, const TempHome& home, int share);
void SoakPages(Report& report, const TempHome& home, int share);
void SoakDocuments(Report& report, const TempHome& home, int share);
// Prints a line for every write of every scenario, images as pixels.
void PrintStreams(const TempHome& home);
// Commits one fault on purpose; returns when nothing noticed.
void Plant(Report& report, const TempHome& home, const std::string& fault);
