// Every platform call, request for memory and spool write fails in turn.

#include <algorithm>

#include "tests/torture/torture.h"

namespace {

constexpr const char* kNoStocks = "no papers defined";

// Calls that the plug-in can do without. If one fails, the job's writes may differ; if another one
// fails, a write may only be missing.
constexpr std::string_view kMayChange =
    "|CoCreateGuid|GdipAlloc|GdipBitmapLockBits|GdipCreateBitmapFromScan0|GdipDrawImageI|"
    "GdipDrawImageRectRectI|GdipGetImageGraphicsContext|GdipGraphicsClear|GdipImageRotateFlip|"
    "GdipRotateWorldTransform|GdipTranslateWorldTransform|GetPrinterW|GlobalAlloc|"
    "MultiByteToWideChar|RegEnumKeyExW|RegOpenKeyExW|RegQueryValueExW|WideCharToMultiByte|_fsopen|";

// Whether the log has one of the lines, which '|' separates.
bool HasLine(const std::string& log, std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('|'), lines.size());
    if (log.find(lines.substr(0, end)) != log.npos) return true;
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
  return false;
}

bool IsOfDownload(const std::string& write) {
  return write.starts_with("dPNG;") || write.starts_with("\x89PNG") || write.starts_with("\x1B");
}

// Counts the writes that are not the good job's, in its order. An image may be sent again.
std::size_t CountChanged(const Outcome& good, const Outcome& job) {
  std::size_t at = 0, changed = 0;
  for (const std::string& write : job.writes) {
    const bool anywhere = IsOfDownload(write);
    const auto found =
        std::find(good.writes.begin() + (anywhere ? 0 : at), good.writes.end(), write);
    if (found == good.writes.end()) {
      ++changed;
    } else if (!anywhere) {
      at = found - good.writes.begin() + 1;
    }
  }
  return changed;
}

// Runs one scenario with each call of one domain failing in turn.
class FaultRun {
 public:
  FaultRun(Report& report, const TempHome& home, const Scenario& scenario, Domain domain)
      : m_report(report), m_home(home), m_scenario(scenario), m_domain(domain) {
    Run(scenario, home);  // what is kept for the process's life is made here
    m_good = Run(scenario, home);
    m_report.Try(scenario.name);
    if (!m_good.failed.empty()) m_report.Find("the job fails by itself");
  }

  // Stops once a run is through before its n-th call.
  void FailFrom(int share, bool onwards) {
    for (long n = 1;; n += std::max(100 / share, 1)) {
      m_report.Try(std::string(m_scenario.name) + ", failure " + std::to_string(n) +
                   (onwards ? " and all that follow" : ""));
      std::filesystem::resize_file(m_home.Path("log.txt"), 0);
      const long before = LiveBlocks();
      {
        const auto driver = Prepare(m_scenario, m_home);
        Arm(m_domain, n, onwards);
        const Outcome job = Run(*driver, m_scenario, m_home);
        Disarm();
        if (!HasFailed()) return m_report.Find(Difference(m_good, job));
        Judge(job);
      }
      ForgetFailed();
      m_report.Find(Leak(before));
      const std::string wrong = Difference(m_good, Run(m_scenario, m_home));
      if (!wrong.empty()) m_report.Find("the next job: " + wrong);
    }
  }

 private:
  void Judge(const Outcome& job) {
    if (Plugin::CanUnloadNow() != S_OK) m_report.Find("an object is left");
    if (job.writes == m_good.writes) return;
    if (!DownloadsAreWhole(job.writes)) m_report.Find("a download is written in part");
    std::ifstream file(m_home.Path("log.txt"), std::ios::binary);
    const std::string log{std::istreambuf_iterator<char>(file), {}};
    const std::size_t changed = CountChanged(m_good, job);
    const bool mayChange = MayChange(job) || HasLine(log, kNoStocks);
    if (changed != 0 && !mayChange) {
      m_report.Find(std::to_string(changed) + " writes are changed (" + FailedNames() + ")");
    }
    const std::string_view told = "END (0|= 0 &&|E_FAIL|page image";
    if (changed == 0 && !mayChange && job.failed.empty() && !HasLine(log, told)) {
      m_report.Find("a write is missing and nothing tells so (" + FailedNames() + ")");
    }
  }

  bool MayChange(const Outcome& job) const {
    if (m_domain == Domain::Memory) {
      if (m_scenario.degrades != nullptr) return true;
      // These may differ: the header without the model, a page without its drawing, margins or
      // bounds, an image that is sent again or encoded in another way, and with that the line end
      // that keeps the job's length off the multiples of 512.
      return std::all_of(job.writes.begin(), job.writes.end(), [this](const std::string& write) {
        return write.starts_with(";Created") || IsOfDownload(write) || write == "\r\n" ||
               write.find(" Image") != write.npos || write.find(":Image") != write.npos ||
               std::find(m_good.writes.begin(), m_good.writes.end(), write) != m_good.writes.end();
      });
    }
    return std::any_of(Failed().begin(), Failed().end(), [](const std::string& name) {
      return kMayChange.find("|" + name + "|") != kMayChange.npos;
    });
  }

  static std::string FailedNames() {
    std::string list;
    for (const std::string& name : Failed()) list += (list.empty() ? "" : ", ") + name;
    return list;
  }

  Report& m_report;
  const TempHome& m_home;
  const Scenario& m_scenario;
  const Domain m_domain;
  Outcome m_good;
};

void FailEach(Domain domain, Report& report, const TempHome& home, int share) {
  for (const Scenario& scenario : Scenarios()) {
    FaultRun run(report, home, scenario, domain);
    run.FailFrom(share, false);
    run.FailFrom(share, true);
  }
}

}  // namespace

void FailEachCall(Report& report, const TempHome& home, int share) {
  FailEach(Domain::Calls, report, home, share);
}
void FailEachRequest(Report& report, const TempHome& home, int share) {
  FailEach(Domain::Memory, report, home, share);
}

// The plug-in ignores the spooler's answer: it offers the same writes, byte for byte.
void FailEachWrite(Report& report, const TempHome& home, int) {
  for (const Scenario& scenario : Scenarios()) {
    const Outcome good = Run(scenario, home);
    for (const WriteFault fault : {WriteFault::Nothing, WriteFault::Short, WriteFault::Raise}) {
      for (std::size_t k = 1; k <= good.writes.size(); ++k) {
        report.Try(std::string(scenario.name) + ", write " + std::to_string(k) + " fails");
        const auto driver = Prepare(scenario, home);
        driver->FailWriteNumber(static_cast<long>(k), fault);
        report.Find(Difference(good, Run(*driver, scenario, home)));
      }
    }
  }
}
