// The state of one device context, from EnablePDEV to DisablePDEV. The driver calls one device
// context from one thread at a time, so nothing here is locked. Band capture, page pipeline and
// command writers all work on it, so it belongs to the folder that they share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/oemdev.h"
#include "platform/driver.h"
#include "platform/gdiplus.h"

// Bytes of a row of 24-bit pixels, in a band and in the page buffer: padded to 4.
constexpr std::int64_t StrideBytes(std::int64_t widthPx) { return (24 * widthPx + 31) / 32 * 4; }

// The counters of one job. Never shared between two jobs of a process.
struct JobState {
  DWORD dwJobBytesWritten = 0;  // bytes handed to the spooler since the job header began
  DWORD dwPageNumber = 0;       // 1-based page whose set-up commands were composed last
};

// After a copy (ResetPDEV) both states share the page buffer, the colour table and the kept
// bitmaps; each is freed with its last owner. The raw fields mirror the owners behind them, so
// change both through the functions below only.
class COemPDEV {
 public:
  COemPDEV() = default;
  COemPDEV(const COemPDEV&) = default;
  COemPDEV& operator=(COemPDEV&&) noexcept = default;
  // Strong guarantee: without memory the state stays as it was.
  COemPDEV& operator=(const COemPDEV& other) { return *this = COemPDEV(other); }
  virtual ~COemPDEV() = default;

  // Take ownership of a block from LocalAlloc as page buffer (size in bytes) or colour table
  // (number of entries), and release the previous one. Without memory they free the block, leave
  // the state as it was and return false.
  bool SetPageBuffer(BYTE* buffer, DWORD size);
  bool SetColorTable(RGBQUAD* table, LONG entries);

  // Resizes the page buffer to that many bytes. Its content is kept; added bytes are undefined.
  // Returns false and leaves the state as it was if there is no memory.
  bool GrowPageBuffer(DWORD size);

  // Take ownership of a bitmap of the shared library (null: none) as the kept background or
  // highlight. Without memory nothing is kept: the next page is then sent whole rather than
  // compared with an image that the printer no longer holds.
  void KeepBackground(Gdiplus::Bitmap* bitmap);
  void KeepHighlight(Gdiplus::Bitmap* bitmap);

  // Like ResetPage, but the buffer lives until the result is released: the page is still read.
  std::shared_ptr<const void> TakePage();

  // Releases the page buffer and zeroes its description; the next band starts a page.
  void ResetPage();

  PFN_DrvStartDoc pfnDrvStartDoc = nullptr;
  PFN_DrvStartPage pfnDrvStartPage = nullptr;
  PFN_DrvSendPage pfnDrvSendPage = nullptr;
  PFN_DrvEndDoc pfnDrvEndDoc = nullptr;
  PFN_DrvStartBanding pfnDrvStartBanding = nullptr;
  PFN_DrvNextBand pfnDrvNextBand = nullptr;
  BYTE* pBitmapBuffer = nullptr;  // 24-bit rows padded to 4 bytes; null while no band is captured
  DWORD dwBitmapBufferSize = 0;
  BITMAPINFOHEADER bmiPage = {};
  LONG cColorTableEntries = 0;
  HPALETTE hDevicePalette = nullptr;  // the driver's
  RGBQUAD* pColorTable = nullptr;     // only for bands below 24 bits
  BOOL bPageStarted = FALSE;
  BOOL bHasColorTable = FALSE;
  DWORD dwPageCount = 0;  // pages started in the current document
  BOOL bJobHeaderSent = FALSE;
  DWORD dwJobId = 0;
  Gdiplus::Bitmap* pPrevPageBitmap1 = nullptr;  // last background with content
  Gdiplus::Bitmap* pPrevPageBitmap2 = nullptr;  // last highlight with content
  LONG gdiHorzSize = 0;                         // micrometres when negative
  LONG gdiVertSize = 0;
  LONG gdiHorzRes = 0;  // pixels, as the four that follow
  LONG gdiVertRes = 0;
  LONG gdiPhysSizeCx = 0;
  LONG gdiPhysSizeCy = 0;
  LONG gdiPhysOffsetX = 0;
  LONG gdiPhysOffsetY = 0;
  DEVMODEW dmPublicCopy = {};  // both copied when the coming page was prepared
  OEMDEV dmPrivateCopy = {};
  std::string strPageSetup;

  JobState job;

 private:
  struct PageBlock;
  std::shared_ptr<PageBlock> m_pageBufferOwner;
  std::shared_ptr<void> m_colorTableOwner;
  std::shared_ptr<void> m_backgroundOwner;
  std::shared_ptr<void> m_highlightOwner;
};

// The device object behind a surface that the driver hands to a hook; null if it has none.
inline PDEVOBJ DeviceOf(const SURFOBJ* pso) {
  return pso == nullptr ? nullptr : reinterpret_cast<PDEVOBJ>(pso->dhpdev);
}

// The state behind a device object; null if it has none.
inline COemPDEV* DeviceState(const DEVOBJ* pdevobj) {
  return pdevobj == nullptr ? nullptr : static_cast<COemPDEV*>(pdevobj->pdevOEM);
}
