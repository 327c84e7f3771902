// Records that no honest application writes. A sanitizer ends the run at the first wrong access;
// here each small job must end in bounded time with bounded output.

#include <algorithm>
#include <cstring>
#include <ctime>

#include "tests/support/record.h"
#include "tests/torture/torture.h"

namespace {

constexpr std::size_t kMostWritten = 1 << 20;
constexpr long kLongestSeconds = 10;  // of processor time

// A driver that prints job after job; only its settings change.
class Victim {
 public:
  explicit Victim(Report& report) : m_report(report) {
    driver.widthPx = 24;
    driver.heightPx = 8;
    RunScript(driver, "OV");
  }
  // One whole job, from a new device context to its end.
  void Print() {
    driver.writes.clear();
    const std::clock_t start = std::clock();
    RunScript(driver, "NSaED");
    if (std::clock() - start > kLongestSeconds * CLOCKS_PER_SEC) m_report.Find("it takes too long");
    std::size_t bytes = 0;
    for (const std::string& write : driver.writes) bytes += write.size();
    if (bytes > kMostWritten) m_report.Find(std::to_string(bytes) + " bytes are written");
  }

  Driver driver;

 private:
  Report& m_report;
};

// A record in which every feature is on.
OEMDEV FullRecord(const TempHome& home) {
  Driver driver;
  for (const char* wanted : {"text blocks", "options"}) {
    for (const Scenario& scenario : Scenarios()) {
      if (scenario.name == std::string_view(wanted)) scenario.prepare(driver, home);
    }
  }
  driver.devmode->dwColorMode = 2;
  return *driver.devmode;
}

}  // namespace

void EachByteOfTheRecord(Report& report, const TempHome& home, int share) {
  Victim victim(report);
  const OEMDEV base = FullRecord(home);
  const int step = std::max(100 / share, 1);
  auto* bytes = reinterpret_cast<BYTE*>(victim.driver.devmode.get());
  for (std::size_t offset = 0; offset < sizeof base; ++offset) {
    for (int value = static_cast<int>(offset) % step; value < 256; value += step) {
      report.Try("byte " + std::to_string(offset) + " is " + std::to_string(value));
      *victim.driver.devmode = base;
      bytes[offset] = static_cast<BYTE>(value);
      victim.Print();
    }
  }
}

// Every length of a record, in a block of exactly that size, with heads that say something else.
void HostileLengths(Report& report, const TempHome& home, int share) {
  Victim victim(report);
  OEMDEV base = FullRecord(home);
  base.dwInitialCutSent = 0;  // each new record is
  const std::size_t step = std::max(100 / share, 1);
  for (std::size_t length = 0; length <= sizeof base; length += step) {
    for (const std::size_t said : {std::size_t{0}, std::size_t{11}, std::size_t{12}, length,
                                   sizeof base, std::size_t{0xFFFFFFFF}}) {
      report.Try("length " + std::to_string(length) + ", said to be " + std::to_string(said));
      const std::unique_ptr<BYTE[]> record(new BYTE[length]);
      OEMDEV given = base;
      given.header.dwSize = static_cast<DWORD>(said);
      std::memcpy(record.get(), &given, length);
      for (const DWORD mode : {OEMDM_CONVERT, OEMDM_MERGE}) {
        OEMDEV& taken = *victim.driver.devmode;
        DevModeCall call(length == 0 ? nullptr : record.get(), taken, length);
        if (victim.driver.Object()->DevMode(mode, &call.block) != S_OK) continue;
        given.header = taken.header;
        if (std::memcmp(&taken, &given, std::min({said, length, sizeof given})) != 0) {
          report.Find("the record is passed on otherwise");
        }
        victim.Print();
      }
    }
  }
}
