// The state that the operating system holds about printers, read from $VLX_HOME/system.toml
// (default folder: $XDG_CONFIG_HOME/vlx, then ~/.config/vlx). A missing file means one printer,
// "Label Printer" with the driver "VLX Label"; a malformed one is one log line and counts as
// missing; a changed one is read again.
#pragma once

#include <optional>
#include <string>

#include "platform/types.h"

struct PlatformLabelBounds {
  DWORD minWidthUm = 0;
  DWORD maxWidthUm = 0;
  DWORD minLengthUm = 0;
  DWORD maxLengthUm = 0;

  bool operator==(const PlatformLabelBounds&) const = default;
};

struct PlatformPrinter {
  std::basic_string<WCHAR> name;
  std::basic_string<WCHAR> driver;
  std::optional<PlatformLabelBounds> label;  // [printer.label]; none: no configuration record
};

// The folder of the state files, UTF-8, without a trailing slash.
PLATFORM_CXX_API std::string PlatformHomeFolder();

// What is wrong with the file as it stands, "PATH: line 2: why"; empty when it is used or missing.
PLATFORM_CXX_API std::string PlatformSystemFileComplaint();

// The printer behind a handle from OpenPrinterW, as the file describes it now; none for a handle
// that is not open or a printer that the file no longer names.
PLATFORM_CXX_API std::optional<PlatformPrinter> PlatformPrinterFromHandle(HANDLE hPrinter);

// How much larger than a half a half tint prints, in percent of the paper, 0 to 25; 0 without an
// entry.
PLATFORM_CXX_API INT PlatformDotGainPercent();
