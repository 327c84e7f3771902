#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "tests/support/png_image.h"
#include "tests/support/record.h"
#include "tests/torture/torture.h"

namespace {

void Landscape(Machine& machine, const TempHome&) {
  machine.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
}
void SetBlocks(Machine& machine, WORD kind, const std::string& text) {
  for (int k = 0; k < kCustomBlockCount; ++k) SetBlock(*machine.devmode, k, kind, text);
}
void FileBlocks(Machine& machine, const TempHome& home) {
  SetBlocks(machine, kBlockFile, home.Path("block.txt"));
}
void TextBlocks(Machine& machine, const TempHome&) {
  SetBlocks(machine, kBlockInline, "No. {n}\\x41\\e");
  SetFields(*machine.devmode, "wCustomType2=2 wCustomType4=3 wCustomType6=0");
}
void Diagnostics(Machine& machine, const TempHome& home) {
  machine.beforeFirst = [folder = home.Path("images")] {
    setenv("VLX_SAVE_BITMAPS", folder.c_str(), 1);
  };
}
void Palette(Machine& machine, const TempHome&) {
  machine.bandFormat = 2;
  machine.paletteColors = 16;
}
void Options(Machine& machine, const TempHome&) {
  auto* bytes = reinterpret_cast<BYTE*>(machine.devmode.get());
  for (const OemDevField& field : OemDevFields()) {
    const LONG value = field.kind == OemDevKind::Flag ? 1 : 1234;
    const bool set = field.kind == OemDevKind::Flag || field.kind == OemDevKind::Length;
    if (set && field.name != "bTopSideSameAsBottom") {
      std::memcpy(bytes + field.offset, &value, sizeof value);
    }
  }
}
// The state files are read anew in the middle of the job.
void ChangedFiles(Machine& machine, const TempHome& home) {
  machine.beforeFirst = [registry = home.Path("registry.reg"), system = home.Path("system.toml")] {
    for (const std::string& path : {registry, system}) {
      utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
    }
  };
}

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
    {"diagnostic images", "SaE", kCropColumns, Diagnostics, kNoCrop},
    {"palette", "SaE", "", Palette},
    {"options", "SabE", "", Options, kNoCrop},
    {"changed state files", "SaE", "", ChangedFiles, kNoState},
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

std::unique_ptr<Machine> Prepare(const Scenario& scenario, const TempHome& home) {
  auto machine = std::make_unique<Machine>();
  SetFields(*machine->devmode, scenario.fields);
  if (scenario.prepare != nullptr) scenario.prepare(*machine, home);
  return machine;
}

Outcome Run(Machine& machine, const Scenario& scenario) {
  machine.Run("OVPN" + std::string(scenario.document) + "Dvo");
  unsetenv("VLX_SAVE_BITMAPS");
  return {machine.Writes(), machine.results};
}

Outcome Run(const Scenario& scenario, const TempHome& home) {
  return Run(*Prepare(scenario, home), scenario);
}

std::string Difference(const Outcome& expected, const Outcome& found) {
  if (expected.results != found.results) return "the failed calls are \"" + found.results + "\"";
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
    if (i + 2 >= writes.size() || DecodePng(writes[i + 1]).width == 0 ||
        writes[i + 2] !=
            "\x1B"
            "end-of-data\r\n") {
      return false;
    }
  }
  return true;
}
