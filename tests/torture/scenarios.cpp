#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "tests/support/png_image.h"
#include "tests/support/record.h"
#include "tests/torture/torture.h"

namespace {

void Landscape(Driver& driver, const TempHome&) {
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
}
void SetBlocks(Driver& driver, WORD kind, const std::string& text) {
  for (int k = 0; k < kCustomBlockCount; ++k) SetBlock(*driver.devmode, k, kind, text);
}
void FileBlocks(Driver& driver, const TempHome& home) {
  SetBlocks(driver, kBlockFile, home.Path("block.txt"));
}
void TextBlocks(Driver& driver, const TempHome&) {
  SetBlocks(driver, kBlockInline, "No. {n}\\x41\\e");
  SetFields(*driver.devmode, "wCustomType2=2 wCustomType4=3 wCustomType6=0");
}
void SaveStages(const TempHome& home) {
  setenv("VLX_SAVE_BITMAPS", home.Path("images").c_str(), 1);
}
void Palette(Driver& driver, const TempHome&) {
  driver.bandFormat = 2;
  driver.paletteColors = 16;
}
void Options(Driver& driver, const TempHome&) {
  auto* bytes = reinterpret_cast<BYTE*>(driver.devmode.get());
  for (const OemDevField& field : OemDevFields()) {
    const LONG value = field.kind == OemDevKind::Flag ? 1 : 1234;
    const bool set = field.kind == OemDevKind::Flag || field.kind == OemDevKind::Length;
    if (set && field.name != "bTopSideSameAsBottom") {
      std::memcpy(bytes + field.offset, &value, sizeof value);
    }
  }
}
// Makes the platform read the state files again in the middle of the job.
void TouchFiles(const TempHome& home) {
  for (const char* name : {"registry.reg", "system.toml"}) {
    utimensat(AT_FDCWD, home.Path(name).c_str(), nullptr, 0);
  }
}

const std::string kWholePng = "\x89PNG of ";

constexpr const char* kNoFile = "a file that cannot be read is an empty block";
constexpr const char* kNoCrop = "an image that cannot be cropped is sent whole";
constexpr const char* kNoState = "a state file that cannot be read gives no stocks and no bounds";
constexpr const char* kCropColumns = "dwColorMode=2 bCropToContent=1 dwRotation=1";

constexpr Scenario kScenarios[] = {
    {"portrait", "SabE"},
    {"landscape", "SabE", "", Landscape},
    {"two colours", "SaabcE", "dwColorMode=2"},
    {"crop", "SacE", "bCropToContent=1", nullptr, kNoCrop},
    {"crop columns", "SacE", kCropColumns, nullptr, kNoCrop},
    {"re-use", "SaabaE", "dwColorMode=2 dwSetupOnFirstPageOnly=1"},
    {"file blocks", "SabE", "", FileBlocks, kNoFile},
    {"text blocks", "SabE", "", TextBlocks},
    {"both sides", "SaE", "bTopSideSameAsBottom=1"},
    {"reset", "SaarbE", "dwColorMode=2"},
    {"reset within a page", "SapirbE"},
    {"abort", "SaaXSaE", "dwColorMode=2"},
    {"diagnostic images", "SaE", kCropColumns, nullptr, kNoCrop, SaveStages},
    {"palette", "SaE", "", Palette},
    {"options", "SabE", "", Options, kNoCrop},
    {"changed state files", "SaE", "", nullptr, kNoState, TouchFiles},
};

}  // namespace

std::span<const Scenario> Scenarios() { return kScenarios; }

void FillHome(const TempHome& home) {
  std::filesystem::create_directory(home.Path("images"));
  home.WriteFile("block.txt", "line one\r\nline two");
  home.WriteFile("system.toml",
                 "[[printer]]\nname = \"Label Printer\"\n[printer.label]\nmin_width_um = 20000\n"
                 "max_width_um = 45000\nmin_length_um = 10000\nmax_length_um = 90000\n");
  home.WriteFile(
      "registry.reg",
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Veltrix "
      "Printer Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks\\One]\n\"DisplayName\"=\"Eins\""
      "\n\"UnprintableLeft\"=dword:000003e8\n\"UnprintableTop\"=dword:000001f4\n");
}

std::unique_ptr<Driver> Prepare(const Scenario& scenario, const TempHome& home) {
  auto driver = std::make_unique<Driver>();
  SetFields(*driver->devmode, scenario.fields);
  if (scenario.prepare != nullptr) scenario.prepare(*driver, home);
  return driver;
}

std::vector<std::string> Comparable(std::vector<std::string> writes) {
  for (std::string& write : writes) {
    const PngImage image = DecodePng(write);
    if (image.width == 0) continue;
    write = kWholePng + std::to_string(image.width) + "x" + std::to_string(image.height) + " " +
            std::to_string(image.bitDepth) + "-bit ";
    write.append(image.color.begin(), image.color.end());
  }
  return WithoutTime(std::move(writes));
}

Outcome Run(Driver& driver, const Scenario& scenario, const TempHome& home) {
  if (scenario.start != nullptr) scenario.start(home);
  const std::string failed = RunScript(driver, "OVPN" + std::string(scenario.document) + "Dvo");
  if (scenario.start != nullptr) unsetenv("VLX_SAVE_BITMAPS");
  return {Comparable(driver.writes), failed};
}

Outcome Run(const Scenario& scenario, const TempHome& home) {
  return Run(*Prepare(scenario, home), scenario, home);
}

std::string Difference(const Outcome& expected, const Outcome& found) {
  if (expected.failed != found.failed) return "the failed calls are \"" + found.failed + "\"";
  if (expected.writes.size() != found.writes.size()) {
    return std::to_string(found.writes.size()) + " writes instead of " +
           std::to_string(expected.writes.size());
  }
  for (std::size_t i = 0; i < found.writes.size(); ++i) {
    if (found.writes[i] != expected.writes[i]) return "write " + std::to_string(i) + " differs";
  }
  return {};
}

bool DownloadsAreWhole(const std::vector<std::string>& writes) {
  for (std::size_t i = 0; i < writes.size(); ++i) {
    if (!writes[i].starts_with("dPNG;")) continue;
    if (i + 2 >= writes.size() || !writes[i + 1].starts_with(kWholePng) ||
        writes[i + 2] !=
            "\x1B"
            "end-of-data\r\n") {
      return false;
    }
  }
  return true;
}
