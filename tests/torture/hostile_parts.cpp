// Records, bands and files as no honest application writes them. Under the sanitizers any wrong
// step ends the run; here it is checked that each small job ends in bounded time with bounded
// output.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iterator>
#include <random>

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
    Run("OV");
  }
  // One whole job, from a new device context to its end.
  void Print(const std::string& document = "SaE", const std::function<void()>& more = {}) {
    driver.writes.clear();
    failed.clear();
    const std::clock_t start = std::clock();
    Run("N" + document);
    if (more) more();
    Run("D");
    if (std::clock() - start > kLongestSeconds * CLOCKS_PER_SEC) m_report.Find("it takes too long");
    std::size_t bytes = 0;
    for (const std::string& write : driver.writes) bytes += write.size();
    if (bytes > kMostWritten) m_report.Find(std::to_string(bytes) + " bytes are written");
  }

  void Run(const std::string& verbs) { failed += RunScript(driver, verbs); }

  Driver driver;
  std::string failed;  // the verbs of the last job that failed

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

namespace {

template <typename Row>
Row Pick(std::mt19937& random, std::initializer_list<Row> rows) {
  return rows.begin()[random() % rows.size()];
}

void ChangeFields(OEMDEV& record, std::mt19937& random) {
  const auto fields = OemDevFields();
  auto* bytes = reinterpret_cast<BYTE*>(&record);
  for (unsigned changes = 1 + random() % 24; changes > 0; --changes) {
    const OemDevField& field = fields[random() % fields.size()];
    const DWORD value = Pick<DWORD>(random, {0, 1, 2, 4, 1000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF,
                                             static_cast<DWORD>(random())});
    for (std::size_t i = 0; i < field.size; ++i) {
      bytes[field.offset + i] = field.size <= sizeof value
                                    ? static_cast<BYTE>(value >> 8 * i)
                                    : static_cast<BYTE>("\\{}nxX07 \xFF"[random() % 10]);
    }
  }
}

void ChangePaper(Driver& driver, std::mt19937& random) {
  DEVMODEW& devmode = driver.publicDevmode;
  devmode.dmOrientation = Pick<SHORT>(random, {-1, 0, 1, 2, 3});
  for (SHORT* field : {&devmode.dmPaperWidth, &devmode.dmPaperLength, &devmode.dmCopies,
                       &devmode.dmYResolution, &devmode.dmCollate}) {
    *field = Pick<SHORT>(random, {-32768, -1, 0, 1, 2, 203, 300, 32767});
  }
  driver.dpi = Pick<LONG>(random, {0, 1, 203, 600, 65535, 0x7FFFFFFF, -1});
}

void HostileBand(Driver& driver, std::mt19937& random) {
  const LONG width = Pick<LONG>(random, {INT32_MIN, -1, 0, 1, 5, 24, 60, 300, 1 << 11, INT32_MAX});
  const LONG height = Pick<LONG>(random, {INT32_MIN, -1, 0, 1, 5, 8, 60, 200, INT32_MAX});
  const bool small = std::max(width, height) <= 1 << 13 && std::min(width, height) >= 0;
  const DWORD fitting = small ? static_cast<DWORD>(3 * width * height) : 0xFFFFFFFF;
  const DWORD size = Pick<DWORD>(random, {0, 1, 3, 4, 72, 4096, fitting});
  const bool blank = random() % 4 == 0, null = random() % 8 == 0;
  const auto offset = [&] {
    return Pick<LONG>(random, {INT32_MIN, -60, -5, 0, 3, 1 << 11, INT32_MAX});
  };
  driver.bandFormat = random() % 7;
  SendOddBand(driver, width, height, blank || size < 100000 ? size : 4096, {offset(), offset()},
              blank, null);
  driver.bandFormat = 5;
}

}  // namespace

// Each job has a record, a paper or bands that are hostile, or all of them.
void HostileJobs(Report& report, const TempHome& home, int share) {
  Victim victim(report);
  const OEMDEV base = FullRecord(home);
  const DEVMODEW usual = victim.driver.publicDevmode;
  for (long seed = 0; seed < 4000L * share; ++seed) {
    report.Try("hostile job " + std::to_string(seed));
    std::mt19937 random(static_cast<unsigned>(seed));
    *victim.driver.devmode = base;
    victim.driver.publicDevmode = usual;
    victim.driver.dpi = 203;
    const unsigned what = 1 + random() % 7;
    if (what & 1) ChangeFields(*victim.driver.devmode, random);
    if (what & 2) ChangePaper(victim.driver, random);
    victim.Print("Sp", [&] {
      for (unsigned bands = what & 4 ? 1 + random() % 4 : 0; bands > 0; --bands) {
        HostileBand(victim.driver, random);
      }
      victim.Run("saE");
    });
  }
}

void HostileFiles(Report& report, const TempHome& home, int share) {
  Victim victim(report);
  const std::string title = "Windows Registry Editor Version 5.00\n\n",
                    stocks =
                        "[HKEY_CURRENT_USER\\Software\\Veltrix Printer "
                        "Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks";
  const std::string one = title + stocks + "\\One]\n";
  std::vector<std::string> files = {
      "\xFF\xFE", "\xFF\xFE\x57", title + stocks + std::string(20000, '\\') + "]\n",
      title + stocks + "\\" + std::string(70000, 'n') + "]\n\"Id\"=\"x\"\n",
      one + "\"DisplayName\"=\"" + std::string(70000, 'x') + "\"\n"};
  for (const std::string value : {"hex(1):41", "hex(1):41,00,42", "hex(1):", "hex:01,02,03",
                                  "dword:1", "hex(ffffffff):00", "\"{0}\"", "\"\""}) {
    files.push_back(one);
    for (const std::string name : {"DisplayName", "Id", "UnprintableLeft", "UnprintableTop"}) {
      files.back() += "\"" + name + "\"=" + value + "\n";
    }
  }
  const std::string good = one + "\"DisplayName\"=\"Eins\"\n\"UnprintableLeft\"=dword:1\n";
  for (std::size_t end = 0; end < good.size(); ++end) files.push_back(good.substr(0, end));
  files.push_back(title);
  for (int i = 0; i < 1000 * share; ++i) {
    files.back() += stocks + "\\" + std::to_string(i) + "]\n\"UnprintableLeft\"=dword:1\n";
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    report.Try("registry file " + std::to_string(i));
    home.WriteFile("registry.reg", files[i]);
    victim.Print();
    if (!victim.failed.empty()) report.Find("the job fails");
  }
}
