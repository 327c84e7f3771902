// The interface of the maker's shared library: logging, configuration, devmode operations, bitmaps.
// Everything here may be called from any thread unless it says otherwise; nothing throws. Texts are
// 16-bit, NUL-terminated.
#pragma once

#include "config/config_record.h"
#include "config/ditherers.h"
#include "config/oemdev.h"
#include "platform/driver.h"
#include "platform/gdiplus.h"

#define VLX_SHARED_API __attribute__((visibility("default")))

// One user of the log: a module. Constructed at module load, destroyed at unload.
class VLX_SHARED_API CLoggerClient {
 public:
  CLoggerClient();
  ~CLoggerClient();
  CLoggerClient(const CLoggerClient&) = delete;
  CLoggerClient& operator=(const CLoggerClient&) = delete;

  // Names the module that logs.
  void Initialize(HMODULE hModule);

 private:
  friend class CLogger;
  HMODULE m_hModule = nullptr;
  bool m_started = false;
};

class VLX_SHARED_API CLogger {
 public:
  // Log lines of a client are written between these two calls only.
  static void StartLogging(CLoggerClient& client);
  static void StopLogging(CLoggerClient& client);

  // Writes one line; category may be null.
  static void LOG_TRACE(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_INFO(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_WARNING(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_ERROR(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
};

// The process-wide cache of configuration records. GetInstance and ReleaseInstance are counted;
// the last release drops the records. GetInstance gives null when there is no memory.
class VLX_SHARED_API ConfigsCache {
 public:
  static ConfigsCache* GetInstance();
  static BOOL ReleaseInstance();
};

class VLX_SHARED_API CConfigParser {
 public:
  // Gives the configuration record of the printer. The record belongs to the cache. Returns false,
  // *config null, for a bad handle or a printer without a configuration record.
  static bool Load(HANDLE hPrinter, const Config** config, ConfigsCache* cache,
                   CLoggerClient& client);

  // Writes the name of the printer's driver, at most cchBuffer units with the terminator in buffer
  // (which has room for one unit more). Returns false, the name empty, when there is none or it
  // does not fit.
  static bool GetPrinterDriverName(HANDLE hPrinter, LPWSTR buffer, DWORD cchBuffer,
                                   CLoggerClient& client);
};

// Carries out the driver's devmode operation dwMode (OEMDM_*) on the private devmode. Records from
// outside are untrusted: what is broken is repaired to the default. OEMDM_SIZE stores the size in
// cbBufSize. E_FAIL with last error ERROR_INVALID_PARAMETER for a null or impossible argument,
// ERROR_INSUFFICIENT_BUFFER for an output that has no room.
VLX_SHARED_API HRESULT hrOEMDevMode(CLoggerClient& client, ConfigsCache* cache, LPCWSTR text,
                                    DWORD dwMode, POEMDMPARAM pOemDMParam);

// Brings a record of an older layout to the current one, in place. A current record, and one that
// is not ours, stays as it is byte for byte; null is ignored.
VLX_SHARED_API void ConvertEp2Qor(OEMDEV* devmode);

// The library's version, static text like "1.0.0".
extern "C" VLX_SHARED_API const char* VlxSharedVersion();

// Operations on GDI+ bitmaps. 24-bit bitmaps hold bytes blue, green, red; 1-bit ones 0 for black.
class VLX_SHARED_API BitmapHelper {
 public:
  // Null when the bitmap cannot be made; name is for diagnosis. DeleteBitmap takes null.
  static Gdiplus::Bitmap* CreateBitmap(INT width, INT height, Gdiplus::PixelFormat format,
                                       LPCWSTR name);
  static void DeleteBitmap(Gdiplus::Bitmap* bitmap);

  // Copies height rows of 24-bit pixels, each padded to 4 bytes, into a bitmap of that size.
  // Nothing happens when the shapes disagree. The copy may be made late: the buffer stays as it is
  // until the bitmap is changed or deleted.
  static void Copy24BPPBufferToBitmap(const BYTE* buffer, INT width, INT height,
                                      Gdiplus::Bitmap* bitmap);

  // Source: 24-bit, already reduced to black and white. Target: 1-bit of the same size. Returns 1,
  // or 0 with the target untouched when the shapes disagree.
  static INT GetMonochromeImage1BPP(Gdiplus::Bitmap* source, Gdiplus::Bitmap* target);

  // Splits a 24-bit page into what is printed in black and what is printed in the highlight colour,
  // both black on white, dithered, 24-bit and of the page's size; the caller deletes them. Every
  // pixel counts as a mixture of paper, black and highlight; tolerance, 0 to 1, is how far a colour
  // may be from these mixtures, and its hue from the highlight's, and still get highlight.
  // Returns 0, both outs null, on failure.
  static INT SplitImage(Gdiplus::Bitmap* source, Gdiplus::ARGB highlight, double tolerance,
                        eBitmapDitherer ditherer, INT ditherParam, Gdiplus::Bitmap** background,
                        Gdiplus::Bitmap** highlightImage);

  // The first or last row or column of a 1-bit bitmap that holds a black pixel; -1 when there is
  // none.
  static INT GetFirstContentRow1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetLastContentRow1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetFirstContentColumn1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetLastContentColumn1BPP(Gdiplus::Bitmap* bitmap);

  // 1 when both are 1-bit bitmaps of the same size with the same pixels, else 0.
  static INT Are1BPPBitmapsEqual(Gdiplus::Bitmap* first, Gdiplus::Bitmap* second);

  // Writes the bitmap as PNG into the folder that VLX_SAVE_BITMAPS names, if it is set.
  static void DevTestSaveBitmapAs(Gdiplus::Bitmap* bitmap, DWORD dwJobId, DWORD dwPage,
                                  LPCWSTR stage, CLoggerClient& client);
};

class VLX_SHARED_API BitmapRasterizer {
 public:
  // A new 24-bit bitmap of the same size, every pixel black or white; the caller deletes it. Null
  // on failure.
  static Gdiplus::Bitmap* Dither(Gdiplus::Bitmap* source, eBitmapDitherer ditherer,
                                 INT ditherParam);
};
