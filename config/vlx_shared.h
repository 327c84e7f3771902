// The interface of the maker's shared library: logging, configuration, devmode operations, bitmaps.
// Thread-safe unless stated otherwise. Never throws. Texts are 16-bit and NUL-terminated.
#pragma once

#include "config/config_record.h"
#include "config/ditherers.h"
#include "config/oemdev.h"
#include "platform/driver.h"
#include "platform/gdiplus.h"

#ifdef vlx_shared_EXPORTS  // while the library itself is built
#define VLX_SHARED_API PLATFORM_EXPORT
#else
#define VLX_SHARED_API PLATFORM_IMPORT
#endif

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
  // A client's lines are written between these two calls only.
  static void StartLogging(CLoggerClient& client);
  static void StopLogging(CLoggerClient& client);

  // Writes one line; category may be null.
  static void LOG_TRACE(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_INFO(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_WARNING(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
  static void LOG_ERROR(CLoggerClient& client, LPCWSTR text, LPCWSTR category);
};

// The process-wide cache of configuration records. GetInstance and ReleaseInstance are counted;
// the last release frees the records. GetInstance returns null without memory.
class VLX_SHARED_API ConfigsCache {
 public:
  static ConfigsCache* GetInstance();
  static BOOL ReleaseInstance();
};

class VLX_SHARED_API CConfigParser {
 public:
  // Sets *config to the printer's configuration record, which the cache owns. Returns false and
  // sets *config to null for an invalid handle or a printer without a record.
  static bool Load(HANDLE hPrinter, const Config** config, ConfigsCache* cache,
                   CLoggerClient& client);

  // Writes the name of the printer's driver to buffer, at most cchBuffer units with the terminator.
  // Returns false and an empty name if there is none or it does not fit.
  static bool GetPrinterDriverName(HANDLE hPrinter, LPWSTR buffer, DWORD cchBuffer,
                                   CLoggerClient& client);
};

// Carries out the driver's devmode operation dwMode (OEMDM_*) on the private devmode. Records come
// from applications and are not trusted: an invalid value becomes the default. OEMDM_SIZE stores
// the size in cbBufSize. Returns E_FAIL with last error ERROR_INVALID_PARAMETER for an invalid
// argument, or ERROR_INSUFFICIENT_BUFFER if the output has no room.
VLX_SHARED_API HRESULT hrOEMDevMode(CLoggerClient& client, ConfigsCache* cache, LPCWSTR text,
                                    DWORD dwMode, POEMDMPARAM pOemDMParam);

// Converts a record of an older layout to the current one, in place. A current record, a record of
// another driver and null are left alone.
VLX_SHARED_API void ConvertEp2Qor(OEMDEV* devmode);

// The library's version, static text like "1.0.0".
extern "C" VLX_SHARED_API const char* VlxSharedVersion();

// Operations on GDI+ bitmaps. 24-bit bitmaps hold bytes blue, green, red; 1-bit ones 0 for black.
class VLX_SHARED_API BitmapHelper {
 public:
  // Returns null if the bitmap cannot be created; name is for diagnosis. DeleteBitmap accepts null.
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

  // Splits a 24-bit page into the image printed in black and the image printed in the highlight
  // colour. Both are dithered, black on white, 24-bit and of the page's size; the caller deletes
  // them. Each pixel is taken as a mixture of paper, black and highlight. tolerance, 0 to 1, is how
  // far a colour may be from such a mixture, and its hue from the highlight's, to get any
  // highlight. Returns 0 and sets both outs to null on failure.
  static INT SplitImage(Gdiplus::Bitmap* source, Gdiplus::ARGB highlight, double tolerance,
                        eBitmapDitherer ditherer, INT ditherParam, Gdiplus::Bitmap** background,
                        Gdiplus::Bitmap** highlightImage);

  // The first or last row or column of a 1-bit bitmap with a black pixel; -1 if there is none.
  static INT GetFirstContentRow1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetLastContentRow1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetFirstContentColumn1BPP(Gdiplus::Bitmap* bitmap);
  static INT GetLastContentColumn1BPP(Gdiplus::Bitmap* bitmap);

  // 1 if both are 1-bit bitmaps of the same size with the same pixels, else 0.
  static INT Are1BPPBitmapsEqual(Gdiplus::Bitmap* first, Gdiplus::Bitmap* second);

  // Writes the bitmap as a PNG file to the folder that VLX_SAVE_BITMAPS names, if it is set.
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
