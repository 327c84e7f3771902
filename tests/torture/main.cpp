// torture PART [SHARE]: runs one part, or SHARE percent of it, and prints one line. Exit code 1 if
// it found something. "torture streams" prints the jobs, "torture plant FAULT" plants a fault,
// "torture list" names the parts.

#include <sys/resource.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/torture/torture.h"

namespace {

struct Part {
  const char* name;
  PartFunction* run;
  const char* logLevel;
};

constexpr Part kParts[] = {
    {"calls", FailEachCall, "trace"},     {"memory", FailEachRequest, "trace"},
    {"writes", FailEachWrite, "error"},   {"bytes", EachByteOfTheRecord, "error"},
    {"lengths", HostileLengths, "error"}, {"threads", ManyAtOnce, "trace"},
    {"soak-pages", SoakPages, "error"},   {"soak-jobs", SoakDocuments, "error"},
};

constexpr int kMostPrinted = 20;
char currentCase[256] = "the start";

void PrintCase() { std::fprintf(stderr, "while trying: %s\n", currentCase); }

void OnSignal(int number) {
  PrintCase();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace

// A sanitizer prints the case too, returns null without memory, and limits the size of a block. It
// finds these options only under an exported name.
extern "C" void __sanitizer_set_death_callback(void (*)()) __attribute__((weak));
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=128:detect_stack_use_after_return=1";
}

void Report::Try(const std::string& name) {
  ++tried;
  std::snprintf(currentCase, sizeof currentCase, "%s", name.c_str());
}

void Report::Find(const std::string& what) {
  if (what.empty()) return;
  if (++found <= kMostPrinted) std::printf("  %s: %s\n", currentCase, what.c_str());
}

int main(int argc, char** argv) {
  const std::string wanted = argc > 1 ? argv[1] : "list";
  std::setlocale(LC_ALL, "");
  std::setvbuf(stdout, nullptr, _IONBF, 0);  // its buffer would count as a leak
  if (__sanitizer_set_death_callback != nullptr) {
    __sanitizer_set_death_callback(PrintCase);
  } else {
    const rlimit limit = {1u << 30, 1u << 30};  // the sanitizer has a limit of its own
    setrlimit(RLIMIT_AS, &limit);
    for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGTERM}) {
      std::signal(number, OnSignal);
    }
  }
  const TempHome home;
  FillHome(home);
  const Part* part = nullptr;
  for (const Part& known : kParts) {
    if (wanted == known.name) part = &known;
  }
  setenv("VLX_LOG_LEVEL", part == nullptr ? "error" : part->logLevel, 1);
  const Plugin plugin;
  if (wanted == "streams") {
    PrintStreams(home);
    return 0;
  }
  Report report{argv[1]};
  if (wanted == "plant" && argc > 2) {
    Plant(report, home, argv[2]);
  } else if (part == nullptr) {
    for (const Part& known : kParts) std::puts(known.name);
    return wanted == "list" ? 0 : 2;
  } else {
    part->run(report, home, argc > 2 ? std::atoi(argv[2]) : 100);
  }
  std::printf("%s: %ld tried, %ld found\n", wanted.c_str(), report.tried, report.found);
  return report.found == 0 ? 0 : 1;
}
