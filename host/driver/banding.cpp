// The driver's own document and page functions, and the bands of a page: from top to bottom, in
// landscape from right to left.

#include <algorithm>
#include <cstring>

#include "host/driver/driver.h"

namespace {

constexpr DWORD kBand24Bits = 5;
constexpr POINTL kNoMoreBands = {-1, -1};

}  // namespace

void LabelDriver::PrintPage(const PageImage& surface, LONG bandPx) {
  const DotGainScope dotGain(*this);
  m_surface = &surface;
  m_bands.clear();
  const bool landscape = m_publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
  // Row padding would overwrite the neighbouring strip; strips of a multiple of 4 columns have
  // none.
  const LONG step = landscape ? std::max<LONG>((bandPx + 3) / 4 * 4, 4) : std::max<LONG>(bandPx, 1);
  const LONG length = static_cast<LONG>(landscape ? surface.widthPx : surface.heightPx);
  for (LONG start = 0; start < length; start += step) {
    m_bands.push_back({start, std::min(step, length - start)});
  }
  if (landscape) std::reverse(m_bands.begin(), m_bands.end());

  {
    // The plug-in now processes the previous page.
    const StageClock::Scope time(m_spool.Clock(), Stage::Pages);
    CheckDone(Hook<PFN_DrvStartPage>(INDEX_DrvStartPage)(&m_surfaceObject),
              "the start of the page");
  }
  const StageClock::Scope time(m_spool.Clock(), Stage::Bands);
  POINTL at = {0, 0};
  CheckDone(Hook<PFN_DrvStartBanding>(INDEX_DrvStartBanding)(&m_surfaceObject, &at), "the bands");
  while (at.x != kNoMoreBands.x || at.y != kNoMoreBands.y) {
    CheckDone(Hook<PFN_DrvNextBand>(INDEX_DrvNextBand)(&m_surfaceObject, &at), "a band");
  }
  CheckDone(Hook<PFN_DrvSendPage>(INDEX_DrvSendPage)(&m_surfaceObject), "the end of the page");
}

bool LabelDriver::SendBand(const Band& band) {
  if (m_publicDevmode.dmOrientation != DMORIENT_LANDSCAPE) {
    return SendToPlugin(m_surface->Row(static_cast<std::uint32_t>(band.startPx)),
                        m_surface->strideBytes, static_cast<LONG>(m_surface->widthPx),
                        band.lengthPx, {0, band.startPx});
  }
  const std::size_t strideBytes = (std::size_t{3} * band.lengthPx + 3) / 4 * 4;
  m_strip.assign(strideBytes * m_surface->heightPx, 0xFF);
  for (std::uint32_t y = 0; y < m_surface->heightPx; ++y) {
    std::memcpy(m_strip.data() + y * strideBytes, m_surface->Row(y) + 3 * band.startPx,
                std::size_t{3} * band.lengthPx);
  }
  return SendToPlugin(m_strip.data(), strideBytes, band.lengthPx,
                      static_cast<LONG>(m_surface->heightPx), {band.startPx, 0});
}

bool LabelDriver::SendToPlugin(const BYTE* bytes, std::size_t strideBytes, LONG widthPx,
                               LONG heightPx, POINT at) {
  const std::size_t size = strideBytes * heightPx;
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = widthPx;
  header.biHeight = heightPx;
  header.biPlanes = 1;
  header.biBitCount = 24;
  header.biSizeImage = static_cast<DWORD>(size);
  IPPARAMS parameters = {};
  parameters.dwSize = sizeof parameters;
  parameters.ptOffset = at;
  parameters.bBlankBand = IsWhite(bytes, size) ? TRUE : FALSE;
  PBYTE result = nullptr;
  return SUCCEEDED(m_plugin->ImageProcessing(&m_device, const_cast<PBYTE>(bytes), &header, nullptr,
                                             kBand24Bits, &parameters, &result)) &&
         result != nullptr;
}

LabelDriver& LabelDriver::Of(const SURFOBJ* pso) {
  return *static_cast<LabelDriver*>(static_cast<const DEVOBJ*>(pso->dhpdev)->hEngine);
}

DWORD LabelDriver::WriteSpoolBuf(PDEVOBJ device, PVOID bytes, DWORD size) {
  return static_cast<LabelDriver*>(device->hEngine)->WriteSpool(bytes, size);
}

BOOL LabelDriver::StartDoc(SURFOBJ*, LPWSTR, DWORD) { return TRUE; }
BOOL LabelDriver::EndDoc(SURFOBJ*, FLONG) { return TRUE; }
BOOL LabelDriver::StartPage(SURFOBJ*) { return TRUE; }
BOOL LabelDriver::SendPage(SURFOBJ*) { return TRUE; }

BOOL LabelDriver::StartBanding(SURFOBJ* pso, POINTL* pptl) {
  LabelDriver& driver = Of(pso);
  driver.m_nextBand = 0;
  *pptl = driver.m_bands.empty() ? kNoMoreBands : driver.OriginOf(driver.m_bands.front());
  return TRUE;
}

// Hands the band at the point to the plug-in and moves the point to the next band.
BOOL LabelDriver::NextBand(SURFOBJ* pso, POINTL* pptl) {
  LabelDriver& driver = Of(pso);
  if (driver.m_nextBand >= driver.m_bands.size()) return FALSE;
  if (!driver.SendBand(driver.m_bands[driver.m_nextBand++])) return FALSE;
  *pptl = driver.m_nextBand == driver.m_bands.size()
              ? kNoMoreBands
              : driver.OriginOf(driver.m_bands[driver.m_nextBand]);
  return TRUE;
}

POINTL LabelDriver::OriginOf(const Band& band) const {
  const bool landscape = m_publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
  return landscape ? POINTL{band.startPx, 0} : POINTL{0, band.startPx};
}
