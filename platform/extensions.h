// The one door to what the platform layer offers beyond the published interfaces, for the shared
// library, the driver host and tests: pages that are read and written without standing in memory as
// pixels, the state folder, the event log, and the hook that makes calls fail.
#pragma once

#include <optional>
#include <string>

#include "platform/gdiplus.h"

// ---- Pages

// What a caller wants to know of pixels.
class PixelReduction {
 public:
  // Makes count pixels (blue, green, red) into as many bytes in each of the planes that are read.
  virtual void Reduce(const BYTE* pixels, INT count, BYTE* const* planes) = 0;

 protected:
  ~PixelReduction() = default;
};

// Rows of bytes, one a pixel.
struct BytePlane {
  BYTE* first;
  std::ptrdiff_t strideBytes;
};

// Reads rows of a 24-bit bitmap as what the reduction makes of them, in one plane or two with room
// for the bitmap's width in each row; the first row of each is the row top. The reduction sees each
// pixel of the rows at least once, in any order. Bound to the thread that the bitmap belongs to.
// InvalidParameter for another format, rows that are not all of the bitmap, or another number of
// planes; OutOfMemory.
PLATFORM_API Gdiplus::Status PlatformReadPlanes(Gdiplus::Bitmap* page, INT top, INT rows,
                                                PixelReduction& reduction, const BytePlane* planes,
                                                INT planeCount);

// Gives the rows of a 24-bit bitmap as 1-bit rows, 0 black. mode: ImageLockModeWrite, and all of
// them must be written; or ImageLockModeRead, which fails with InvalidParameter unless the bitmap
// was written so and is kept so. Nobody else touches the bitmap in between.
PLATFORM_API Gdiplus::Status PlatformLockDots(Gdiplus::Bitmap* bitmap, UINT mode,
                                              Gdiplus::BitmapData* dots);
PLATFORM_API Gdiplus::Status PlatformUnlockDots(Gdiplus::Bitmap* bitmap, Gdiplus::BitmapData* dots);

// Makes the rows of a buffer the pixels of a 24-bit bitmap: rows as many and as long as its own,
// padded to 4 bytes. They may be copied late: the buffer stays as it is until the bitmap is changed
// or disposed of.
PLATFORM_API Gdiplus::Status PlatformLendPixels(Gdiplus::Bitmap* bitmap, const BYTE* rows);

// ---- State folder: $VLX_HOME, default $XDG_CONFIG_HOME/vlx, then ~/.config/vlx
//
// Without $VLX_HOME, a file that the person's folder does not hold is read from /etc/vlx.
// system.toml in it describes what the operating system knows of printers. Without that file there
// is one printer, "Label Printer" with the driver "VLX Label". An entry that cannot be understood
// is reported once in the log and counts as missing. A changed file is read again. These functions
// throw std::bad_alloc and nothing else. Thread-safe.

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
  std::optional<PlatformLabelBounds> label;  // [printer.label]; nullopt: no configuration record
};

// The path of the folder in UTF-8, without a trailing slash.
PLATFORM_CXX_API std::string PlatformHomeFolder();

// The path of a file in it, in /etc/vlx if only that holds the file.
PLATFORM_CXX_API std::string PlatformStatePath(const std::string& name);

// What is wrong with system.toml as it stands, "PATH: line 2: why"; empty if nothing is.
PLATFORM_CXX_API std::string PlatformSystemFileComplaint();

// The printer behind a handle from OpenPrinterW, as system.toml describes it now; nullopt for an
// invalid handle or a printer that the file no longer names.
PLATFORM_CXX_API std::optional<PlatformPrinter> PlatformPrinterFromHandle(HANDLE hPrinter);

// Dot gain: by how many percent of the paper a half tint prints darker than half, 0 to 25.
PLATFORM_CXX_API INT PlatformDotGainPercent();

// What PlatformDotGainPercent returns on this thread, for a printer with a dot gain of its own; a
// negative number restores the one of all printers.
PLATFORM_CXX_API void PlatformSetPrinterDotGain(INT percent);

// ---- Event log: the file that VLX_LOG names
//
// One line per entry: time, thread, level, category and text, separated by tabs. Control characters
// are escaped. VLX_LOG_LEVEL is trace, info (the default), warning or error. Without VLX_LOG
// nothing is written. Thread-safe. Never throws.

enum class EventLevel : int { Trace = 0, Info = 1, Warning = 2, Error = 3, Off = 4 };

// Reads both variables and opens the file for appending. Calls are counted; the last close closes.
PLATFORM_API void PlatformOpenEventLog();
PLATFORM_API void PlatformCloseEventLog();

// Writes one line with one write call. category may be null. An entry below the level returns
// before anything is formatted.
PLATFORM_API void PlatformWriteEvent(EventLevel level, const WCHAR* text, const WCHAR* category);

// ---- Faults: makes platform calls fail in tests
//
// Every fallible call asks PlatformShouldFail with its own name before it does anything. Without a
// hook that is one relaxed load.

// Asked before each fallible call, on the calling thread. Returns true to make the call fail as it
// documents for "no memory", or as it fails in general.
using PlatformFaultHook = bool (*)(const char* call, void* context);

// Installs the hook; null removes it. No platform call may run meanwhile.
PLATFORM_API void PlatformSetFaultHook(PlatformFaultHook hook, void* context);

// For the platform and the libraries built on it.
PLATFORM_API bool PlatformShouldFail(const char* call);

// ---- Version of the platform library, static text like "1.0.0"
PLATFORM_API const char* PlatformVersion();
