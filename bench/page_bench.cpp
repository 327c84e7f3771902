// Measures a page on its way through the plug-in: the capture of its bands, the whole path to PNG
// and job bytes, memory. Times are CPU times. bench/compare makes a chart and a table of them.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>

#include "bench/job.h"
#include "bench/page.h"
#include "bench/peers.h"
#include "bench/units.h"
#include "config/vlx_shared.h"
#include "platform/extensions.h"

namespace {

struct Size {
  int widthPx;
  int heightPx;
  std::string Name() const { return std::to_string(widthPx) + "x" + std::to_string(heightPx); }
};
constexpr Size kSizes[] = {{799, 399}, {1200, 1800}, {2400, 3600}};

struct Path {
  const char* label;
  const char* mode;
  bool twoColors;
  WORD ditherer;
};
constexpr Path kPaths[] = {{"crisp", "threshold", false, eThreshold},
                           {"crisp", "floyd-steinberg", false, eFloydSteinberg},
                           {"photo", "threshold", false, eThreshold},
                           {"photo", "ordered", false, eOrdered},
                           {"photo", "floyd-steinberg", false, eFloydSteinberg},
                           {"two-colour", "floyd-steinberg", true, eFloydSteinberg}};

std::string SampleOf(const std::string& label) { return label == "crisp" ? "shipping" : label; }

// Printed pages are read once.
const Raster& Label(const std::string& label, const Size& size) {
  static std::map<std::string, Raster> labels;
  auto [at, isNew] = labels.try_emplace(label + size.Name());
  if (isNew) at->second = ReadLabel(SampleOf(label), size.widthPx, size.heightPx);
  return at->second;
}

// Two pages that differ in both colours, so that no image is re-used.
std::vector<Raster> TwoPages(const std::string& label, const Size& size, bool landscape) {
  std::vector<Raster> pages;
  for (int page = 0; page < 2; ++page) {
    Raster printed = Label(label, size);
    std::memset(printed.Row(0), page == 0 ? 0xFF : 0, 24);
    for (int x = 0; x < 8; ++x) printed.Row(1)[3 * x + 2] = page == 0 ? 0xFF : 0;
    pages.push_back(landscape ? TurnedBack(printed) : printed);
  }
  return pages;
}

void Textbook(benchmark::State& state, Size size) {
  const std::vector<std::uint8_t> grey = GreyOf(Label("photo", size));
  std::vector<std::uint8_t> levels(grey);
  for (auto _ : state) {
    state.PauseTiming();
    levels = grey;
    state.ResumeTiming();
    TextbookFloydSteinberg(levels, size.widthPx);
    benchmark::ClobberMemory();
  }
}

void Memcpy(benchmark::State& state, Size size) {
  const Raster& page = Label("photo", size);
  std::vector<std::uint8_t> copy(page.pixels.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), page.pixels.data(), copy.size());
    benchmark::ClobberMemory();
  }
}

void Append(benchmark::State& state, Size size) {
  JobSettings settings;
  settings.landscape = false;
  settings.bands = 100;
  settings.flagBlankBands = false;
  Job job(settings, TwoPages("photo", size, false));
  job.CaptureAndAbort();  // the first page gets its memory from the kernel
  for (auto _ : state) job.CaptureAndAbort();
}

JobSettings SettingsOf(const Path& path) {
  JobSettings settings;
  settings.twoColors = path.twoColors;
  settings.ditherer = path.ditherer;
  return settings;
}

void WholePage(benchmark::State& state, Path path, Size size) {
  Job job(SettingsOf(path), TwoPages(path.label, size, true));
  const auto page = [&job] {
    job.SendBands();
    job.EmitPage();
  };
  page();  // the first page of a job opens it
  for (auto _ : state) page();
  std::size_t bytes = 0;
  for (const std::string& image : job.Images()) bytes += image.size();
  state.counters["png_bytes"] = static_cast<double>(bytes);
}

void CountStages(benchmark::State& state, const StageTimes& times) {
  const auto perPage = [](double sum) {
    return benchmark::Counter(sum, benchmark::Counter::kAvgIterations);
  };
  state.counters["turn_us"] = perPage(times.turn);
  state.counters["dots_us"] = perPage(times.dots);
  state.counters["png_us"] = perPage(times.png);
}

// The same by stage: the capture of the bands, turn and dots, PNG and job bytes.
void Stages(benchmark::State& state, Path path, Size size) {
  Job job(SettingsOf(path), TwoPages(path.label, size, true));
  job.SendBands();
  job.EmitPage();
  struct Split {
    StageTimes times;
    StageClock clock;
  } split;
  // Every platform call runs this hook; encoding begins with the call named here.
  PlatformSetFaultHook(
      [](const char* call, void* context) {
        auto& [times, clock] = *static_cast<Split*>(context);
        if (std::string_view(call) == "GdipGetImageEncodersSize") times.dots += clock.Lap();
        return false;
      },
      &split);
  for (auto _ : state) {
    split.clock.Lap();
    job.SendBands();
    split.times.turn += split.clock.Lap();
    job.EmitPage();
    split.times.png += split.clock.Lap();
  }
  PlatformSetFaultHook(nullptr, nullptr);
  CountStages(state, split.times);
}

// PNG bytes against libpng's level 9.
void PngSize(benchmark::State& state, Path path, Size size) {
  Job job(SettingsOf(path), TwoPages(path.label, size, true));
  for (auto _ : state) {
    job.SendBands();
    job.EmitPage();
  }
  double bytes = 0;
  double reference = 0;
  for (const std::string& image : job.Images()) {
    bytes += static_cast<double>(image.size());
    reference += static_cast<double>(LibpngLevel9Bytes(image));
  }
  state.counters["png_bytes"] = bytes;
  state.counters["to_libpng9"] = bytes / reference;
}

double StatusKiB(const char* name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name)) return std::stod(line.substr(std::strlen(name) + 1));
  }
  return 0;
}

long MinorFaults() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

// Twenty pages: page faults after the first, and the most memory above the start in 24-bit pages.
void Memory(benchmark::State& state, Path path, Size size) {
  Job job(SettingsOf(path), TwoPages(path.label, size, true));
  malloc_trim(0);  // what making the pages has left in the heap would hide the job's needs
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts over
  const double startKiB = StatusKiB("VmRSS");
  for (auto _ : state) {
    long faults = 0;
    for (int page = 0; page < 20; ++page) {
      job.SendBands();
      job.EmitPage();
      if (page == 0) faults = MinorFaults();
    }
    faults = MinorFaults() - faults;
    state.counters["faults"] = static_cast<double>(faults);
  }
  const double pageKiB = static_cast<double>(Label(path.label, size).pixels.size()) / 1024;
  state.counters["peak_pages"] = (StatusKiB("VmHWM") - startKiB) / pageKiB;
}

void Peer(benchmark::State& state, const PeerCall* call, Path path, Size size) {
  const Raster page = TurnedBack(Label(path.label, size));
  const PeerPage input(*call, page);
  StageTimes times;
  std::size_t bytes = 0;
  for (auto _ : state) bytes = input.Run(path.ditherer != eThreshold, times);
  state.counters["png_bytes"] = static_cast<double>(bytes);
  CountStages(state, times);
}

void RegisterAll() {
  using benchmark::RegisterBenchmark;
  const auto add = [](const std::string& name, auto function, auto... arguments) {
    RegisterBenchmark(name.c_str(), function, arguments...)
        ->Unit(benchmark::kMicrosecond)
        ->MeasureProcessCPUTime();
  };
  for (const Size& size : kSizes) {
    add("unit/textbook/" + size.Name(), Textbook, size);
    add("unit/memcpy/" + size.Name(), Memcpy, size);
    add("append/100-bands/" + size.Name(), Append, size);
    for (const Path& path : kPaths) {
      const std::string name = std::string(path.label) + "/" + path.mode + "/" + size.Name();
      add("page/" + name, WholePage, path, size);
      add("stages/" + name, Stages, path, size);
      RegisterBenchmark(("size/" + name).c_str(), PngSize, path, size)->Iterations(1);
      RegisterBenchmark(("memory/" + name).c_str(), Memory, path, size)->Iterations(1);
      if (path.twoColors || path.ditherer == eOrdered) continue;  // the peers have no equivalent
      for (const PeerCall& peer : Peers()) add(peer.name + ("/" + name), Peer, &peer, path, size);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const BenchHome home;
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
