// The state of one device context, from EnablePDEV to DisablePDEV. The driver calls one device
// context from one thread at a time, so nothing here is locked. It stands in this folder because
// the capture of bands, the page pipeline and the command writers all work on it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/oemdev.h"
#include "platform/driver.h"
#include "platform/gdiplus.h"

// Bytes of a row of 24-bit pixels, in a band and in the page buffer: padded to 4.
constexpr std::int64_t StrideBytes(std::int64_t widthPx) { return (24 * widthPx + 31) / 32 * 4; }

// What the writers of one job count. Never shared between two jobs of a process.
struct JobState {
  DWORD dwJobBytesWritten = 0;  // bytes handed to the spooler since the job header began
  DWORD dwPageNumber = 0;       // 1-based page whose set-up commands were composed last
};

// Copying a state (ResetPDEV) makes both states holders of the page buffer, the colour table and
// the kept bitmaps: each is freed when its last holder lets go of it, by the functions below or by
// being destroyed. The raw fields are what the calls of the driver see; the owners behind them are
// set together with them, so they are changed through these functions only.
class COemPDEV {
 public:
  COemPDEV() = default;
  COemPDEV(const COemPDEV&) = default;
  COemPDEV& operator=(COemPDEV&&) noexcept = default;
  // Whole, or not at all when there is no memory.
  COemPDEV& operator=(const COemPDEV& other) { return *this = COemPDEV(other); }
  virtual ~COemPDEV() = default;

  // Take over a block from LocalAlloc as page buffer (size in bytes) or colour table (count of
  // entries), and let go of the one before. Return false, the block freed and the state as before,
  // when there is no memory for the bookkeeping.
  bool SetPageBuffer(BYTE* buffer, DWORD size);
  bool SetColorTable(RGBQUAD* table, LONG entries);

  // Makes the page buffer that many bytes long, its content kept and what is added without a value.
  // Returns false, the state as before, when there is no memory.
  bool GrowPageBuffer(DWORD size);

  // Take over a bitmap that the shared library made (null: none) as the kept background or
  // highlight. Without memory for the bookkeeping nothing is kept, so that the next page is
  // compared with nothing rather than with a page that the printer no longer holds.
  void KeepBackground(Gdiplus::Bitmap* bitmap);
  void KeepHighlight(Gdiplus::Bitmap* bitmap);

  // ResetPage for a page that is still read: the buffer lives until the result is let go of.
  std::shared_ptr<const void> TakePage();

  // Lets go of the page buffer and zeroes its description; the next band starts a page.
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
  DEVMODEW dmPublicCopy = {};  // both as they were when the coming page was prepared
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
