// Printers come from the spooler. What it does not hold, label bounds and dot gain, is read from
// system.toml in the state folder.

#include <toml++/toml.h>

#include <cstdlib>
#include <exception>
#include <vector>

#include "platform/extensions.h"
#include "platform/spooler.h"

namespace {

std::wstring WideOf(const std::string& utf8) {
  std::wstring wide(utf8.size() + 1, L'\0');
  const INT units =
      MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, wide.data(), static_cast<INT>(wide.size()));
  wide.resize(units > 0 ? units - 1 : 0);
  return wide;
}

std::string SystemFilePath() { return PlatformHomeFolder() + "\\system.toml"; }

// The file as it stands; an empty table if it is missing or malformed.
toml::table SystemFile() {
  try {
    if (GetFileAttributesA(SystemFilePath().c_str()) != INVALID_FILE_ATTRIBUTES) {
      return toml::parse_file(SystemFilePath());
    }
  } catch (const toml::parse_error& error) {
    const std::wstring line =
        WideOf("The file " + SystemFilePath() + " is ignored: " + std::string(error.description()));
    PlatformWriteEvent(EventLevel::Error, line.c_str(), L"Platform");
  }
  return {};
}

std::optional<PlatformLabelBounds> LabelBounds(const std::wstring& printerName) {
  const toml::table file = SystemFile();
  const toml::array* printers = file["printer"].as_array();
  for (std::size_t i = 0; printers != nullptr && i < printers->size(); ++i) {
    const toml::table* printer = (*printers)[i].as_table();
    if (printer == nullptr || WideOf((*printer)["name"].value_or("")) != printerName) continue;
    const toml::table* label = (*printer)["label"].as_table();
    if (label == nullptr) return std::nullopt;
    const auto number = [label](const char* key) {
      return static_cast<DWORD>((*label)[key].value_or<std::int64_t>(0));
    };
    return PlatformLabelBounds{number("min_width_um"), number("max_width_um"),
                               number("min_length_um"), number("max_length_um")};
  }
  return std::nullopt;
}

}  // namespace

std::string PlatformHomeFolder() {
  if (const char* home = std::getenv("VLX_HOME"); home != nullptr && *home != '\0') return home;
  const char* user = std::getenv("APPDATA");
  return std::string(user == nullptr ? "" : user) + "\\vlx";
}

std::optional<PlatformPrinter> PlatformPrinterFromHandle(HANDLE hPrinter) {
  DWORD size = 0;
  GetPrinterW(hPrinter, 2, nullptr, 0, &size);
  std::vector<BYTE> block(size);
  if (size == 0 || !GetPrinterW(hPrinter, 2, block.data(), size, &size)) return std::nullopt;
  const auto* info = reinterpret_cast<const PRINTER_INFO_2W*>(block.data());
  const auto text = [](const WCHAR* given) { return std::wstring(given == nullptr ? L"" : given); };
  return PlatformPrinter{text(info->pPrinterName), text(info->pDriverName),
                         LabelBounds(text(info->pPrinterName))};
}

INT PlatformDotGainPercent() {
  return static_cast<INT>(SystemFile()["dot_gain"].value_or<std::int64_t>(0));
}

bool PlatformShouldFail(const char*) { return false; }
