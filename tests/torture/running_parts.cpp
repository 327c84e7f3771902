// Many jobs at once, long runs, and the jobs as text.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <thread>

#include "tests/torture/torture.h"

namespace {

// What this process holds: bytes of the heap, bytes of address space (mapped blocks included),
// descriptors.
std::array<long, 3> Held() {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return {LiveBytes(), pages * 4096, std::distance(begin(all), end(all))};
}

// Runs many steps and compares what is held during the second half with the first.
void Soak(Report& report, const char* what, long steps, const std::function<void(long)>& step) {
  constexpr const char* kNames[] = {"the heap", "the address space", "the number of descriptors"};
  constexpr long kAllowed[] = {64 * 1024, 64 * 1024, 0};
  std::array<long, 3> most[2] = {};
  for (long i = 0; i < steps; ++i) {
    report.Try(what + std::to_string(i));
    step(i);
    const auto held = Held();
    auto& half = most[i < steps / 2 ? 0 : 1];
    for (int k = 0; k < 3; ++k) half[k] = std::max(half[k], held[k]);
  }
  for (int k = 0; k < 3; ++k) {
    if (most[1][k] <= most[0][k] + kAllowed[k]) continue;
    report.Find(kNames[k] + (" grows from " + std::to_string(most[0][k])) + " to " +
                std::to_string(most[1][k]));
  }
}

constexpr int kThreads = 16;

void AtOnce(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

// Each thread prints a job of its own.
Outcome JobOfThread(int thread, const TempHome& home) {
  const auto scenarios = Scenarios();
  Scenario scenario = scenarios[thread % scenarios.size()];
  scenario.start = nullptr;
  const auto driver = Prepare(scenario, home);
  driver->devmode->dwSpeed = 50u + static_cast<DWORD>(thread);
  driver->jobId = static_cast<DWORD>(thread);
  driver->widthPx = 140 + 8 * thread;
  return Run(*driver, scenario, home);
}

}  // namespace

void ManyAtOnce(Report& report, const TempHome& home, int share) {
  std::vector<Outcome> alone, together(kThreads);
  for (int i = 0; i < kThreads; ++i) alone.push_back(JobOfThread(i, home));
  for (int round = 0; round < std::max(share / 10, 1); ++round) {
    AtOnce(kThreads, [&](int i) { together[i] = JobOfThread(i, home); });
    for (int i = 0; i < kThreads; ++i) {
      report.Try("thread " + std::to_string(i));
      report.Find(Difference(alone[i], together[i]));
    }
  }
  std::atomic<long> failed{0};
  const int cycles = 100 * share;
  AtOnce(8, [&](int) {
    for (int cycle = 0; cycle < cycles; ++cycle) {
      Driver driver;
      failed += RunScript(driver, "LOVvoU").empty() ? 0 : 1;
    }
  });
  report.Try("start and stop");
  report.tried += 8L * cycles - 1;
  if (failed != 0 || Plugin::CanUnloadNow() != S_OK) report.Find("a cycle leaves something");
}

void SoakPages(Report& report, const TempHome&, int share) {
  Driver driver;
  driver.widthPx = 812;  // 4 x 6 inches at 203 dots an inch
  driver.heightPx = 1218;
  driver.bandPx = 128;
  driver.devmode->dwColorMode = 2;
  std::string failed = RunScript(driver, "OVNS");
  Soak(report, "page ", 100L * share, [&](long page) {
    failed += RunScript(driver, std::string(1, "abc"[page % 3]));
    driver.writes.clear();
  });
  failed += RunScript(driver, "E");
  if (!failed.empty()) report.Find("a page fails");
}

void SoakDocuments(Report& report, const TempHome& home, int share) {
  const auto scenarios = Scenarios();
  for (const Scenario& scenario : scenarios) Run(scenario, home);
  Soak(report, "document ", 20L * share, [&](long i) {
    if (!Run(scenarios[i % scenarios.size()], home).failed.empty()) report.Find("the job fails");
  });
}

void PrintStreams(const TempHome& home) {
  const std::hash<std::string> hash;
  for (const Scenario& scenario : Scenarios()) {
    std::size_t index = 0;
    for (const std::string& write : Run(scenario, home).writes) {
      std::printf("%s %zu %zx\n", scenario.name, index++, hash(write));
    }
  }
}

// Plants a fault for the check that must find it.
void Plant(Report& report, const TempHome& home, const std::string& fault) {
  volatile int zero = 0;
  volatile float large = 1e20f;
  std::unique_ptr<char[]> block(new char[16]);
  report.Try("planted " + fault);
  if (fault == "overrun") block[16 + zero] = 1;
  if (fault == "overflow") zero = zero + 0x7FFFFFFF + (zero + 1);
  if (fault == "float-cast") zero = static_cast<int>(large);
  if (fault == "float-division") large = large / static_cast<float>(zero);
  if (fault == "race") {
    std::thread other([&] { block[0] = 1; });
    block[0] = 2;
    other.join();
  }
  if (fault == "heap") {
    std::vector<std::unique_ptr<char[]>> kept;
    Soak(report, "planted heap ", 100, [&](long) { kept.emplace_back(new char[10000]); });
  }
  if (fault == "leak") {
    const long before = LiveBlocks();
    block = std::make_unique<char[]>(20);
    const std::unique_ptr<std::string> kept(new std::string(1000, 'x'));
    report.Find(Leak(before));
  }
  Outcome job = Run(Scenarios()[0], home);
  const Outcome good = job;
  if (fault == "stream") {
    job.writes.back() += ' ';
    report.Find(Difference(good, job));
  }
  if (fault == "download") {
    const auto driver = Prepare(Scenarios()[0], home);
    Run(*driver, Scenarios()[0], home);
    for (std::string& write : driver->writes) {
      if (write.starts_with("\x89PNG")) write.resize(write.size() / 2);
    }
    if (!DownloadsAreWhole(Comparable(driver->writes))) {
      report.Find("a download is written in part");
    }
  }
}
