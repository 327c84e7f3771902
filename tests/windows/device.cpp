#include "tests/windows/device.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "platform/palette.h"

namespace {

constexpr DWORD kBand24Bits = 5;
constexpr DWORD kJobId = 7;
constexpr POINTL kNoMoreBands = {-1, -1};

template <typename Function, typename... Arguments>
BOOL CallHook(const DRVENABLEDATA& hooks, ULONG index, Arguments... arguments) {
  const auto* end = hooks.pdrvfn + hooks.c;
  const auto* hook =
      std::find_if(hooks.pdrvfn, hooks.pdrvfn + hooks.c,
                   [index](const DRVFN& function) { return function.iFunc == index; });
  return hook != end && reinterpret_cast<Function>(hook->pfn)(arguments...);
}

}  // namespace

Device::Device(IPrintOemUni2* plugin, HANDLE printer, const DEVMODEW& givenPublicDevmode,
               const std::vector<BYTE>& givenRecord, std::ostream& job)
    : publicDevmode(givenPublicDevmode), record(givenRecord), m_plugin(plugin), m_job(job) {
  m_procedures.DrvWriteSpoolBuf = DrvWriteSpoolBuf;
  object.dwSize = sizeof object;
  object.hEngine = this;
  object.hPrinter = printer;
  object.pPublicDM = &publicDevmode;
  object.pOEMDM = record.data();
  object.pDrvProcs = &m_procedures;
  m_surface.dhpdev = reinterpret_cast<DHPDEV>(&object);

  // Paper in tenths of a millimetre, as the driver knows it before the plug-in fits it.
  const LONG dpi = publicDevmode.dmYResolution;
  LONG width = publicDevmode.dmPaperWidth;
  LONG length = publicDevmode.dmPaperLength;
  if (IsLandscape()) std::swap(width, length);
  m_gdiInfo.cBitsPixel = 24;
  m_gdiInfo.ulLogPixelsX = m_gdiInfo.ulLogPixelsY = static_cast<ULONG>(dpi);
  m_gdiInfo.szlPhysSize = {width * dpi / 254, length * dpi / 254};
  m_gdiInfo.ulHorzSize = static_cast<ULONG>(-100 * width);
  m_gdiInfo.ulVertSize = static_cast<ULONG>(-100 * length);
  m_gdiInfo.ulHorzRes = static_cast<ULONG>(m_gdiInfo.szlPhysSize.cx);
  m_gdiInfo.ulVertRes = static_cast<ULONG>(m_gdiInfo.szlPhysSize.cy);
}

Device::~Device() {
  if (object.pdevOEM != nullptr) Disable();
}

HRESULT Device::Enable() {
  DRVFN functions[] = {{INDEX_DrvStartDoc, reinterpret_cast<PFN>(DrvStartDoc)},
                       {INDEX_DrvEndDoc, reinterpret_cast<PFN>(DrvEndDoc)},
                       {INDEX_DrvStartPage, reinterpret_cast<PFN>(DrvPage)},
                       {INDEX_DrvSendPage, reinterpret_cast<PFN>(DrvPage)},
                       {INDEX_DrvStartBanding, reinterpret_cast<PFN>(DrvStartBanding)},
                       {INDEX_DrvNextBand, reinterpret_cast<PFN>(DrvNextBand)}};
  DRVENABLEDATA own = {0x10000, static_cast<ULONG>(std::size(functions)), functions};
  return m_plugin->EnablePDEV(&object, nullptr, 0, nullptr, sizeof m_gdiInfo, &m_gdiInfo,
                              sizeof m_devInfo, &m_devInfo, &own, &object.pdevOEM);
}

HRESULT Device::Disable() {
  const HRESULT hr = m_plugin->DisablePDEV(&object);
  object.pdevOEM = nullptr;
  return hr;
}

BOOL Device::StartDocument(const DRVENABLEDATA& hooks, const std::string& name) {
  return CallHook<PFN_DrvStartDoc>(hooks, INDEX_DrvStartDoc, &m_surface, Wide(name).data(), kJobId);
}

BOOL Device::EndDocument(const DRVENABLEDATA& hooks, FLONG flags) {
  return CallHook<PFN_DrvEndDoc>(hooks, INDEX_DrvEndDoc, &m_surface, flags);
}

std::string Device::PrintPage(const DRVENABLEDATA& hooks, const Picture& page, LONG bandPx) {
  m_page = &page;
  m_bandPx = bandPx;
  std::string results;
  const auto note = [&results](BOOL result) { results += result ? '1' : '0'; };
  note(CallHook<PFN_DrvStartPage>(hooks, INDEX_DrvStartPage, &m_surface));
  POINTL at = {0, 0};
  note(CallHook<PFN_DrvStartBanding>(hooks, INDEX_DrvStartBanding, &m_surface, &at));
  while (results.back() == '1' && at.x != kNoMoreBands.x) {
    note(CallHook<PFN_DrvNextBand>(hooks, INDEX_DrvNextBand, &m_surface, &at));
  }
  note(CallHook<PFN_DrvSendPage>(hooks, INDEX_DrvSendPage, &m_surface));
  return results;
}

std::string Device::Geometry() const {
  std::string text;
  for (const LONG value :
       {static_cast<LONG>(m_gdiInfo.ulHorzSize), static_cast<LONG>(m_gdiInfo.ulVertSize),
        static_cast<LONG>(m_gdiInfo.ulHorzRes), static_cast<LONG>(m_gdiInfo.ulVertRes),
        static_cast<LONG>(m_gdiInfo.szlPhysSize.cx), static_cast<LONG>(m_gdiInfo.szlPhysSize.cy),
        static_cast<LONG>(m_gdiInfo.ptlPhysOffset.x),
        static_cast<LONG>(m_gdiInfo.ptlPhysOffset.y)}) {
    text += " " + std::to_string(value);
  }
  return text + (m_devInfo.hpalDefault != nullptr ? " palette" : "");
}

Device& Device::Of(const SURFOBJ* pso) {
  return *static_cast<Device*>(reinterpret_cast<const DEVOBJ*>(pso->dhpdev)->hEngine);
}

// Bands come from top to bottom, in landscape from right to left.
BOOL APIENTRY Device::DrvStartBanding(SURFOBJ* pso, POINTL* pptl) {
  const Device& device = Of(pso);
  const LONG width = device.m_page->widthPx;
  *pptl = {device.IsLandscape() ? (width - 1) / device.m_bandPx * device.m_bandPx : 0, 0};
  return TRUE;
}

BOOL APIENTRY Device::DrvNextBand(SURFOBJ* pso, POINTL* pptl) {
  Device& device = Of(pso);
  if (!device.SendBand(*pptl)) return FALSE;
  LONG& next = device.IsLandscape() ? pptl->x : pptl->y;
  next += device.IsLandscape() ? -device.m_bandPx : device.m_bandPx;
  if (next < 0 || pptl->y >= device.m_page->heightPx) *pptl = kNoMoreBands;
  return TRUE;
}

bool Device::SendBand(const POINTL& at) {
  const std::size_t pageStride = m_page->StrideBytes();
  const BYTE* first = m_page->rows.data() + at.y * pageStride + std::size_t{3} * at.x;
  if (!IsLandscape()) {
    return SendRows(first, m_page->widthPx, std::min(m_bandPx, m_page->heightPx - at.y), at);
  }
  Picture strip = {std::min(m_bandPx, m_page->widthPx - at.x), m_page->heightPx, {}};
  strip.rows.assign(strip.StrideBytes() * strip.heightPx, 0xFF);
  for (LONG y = 0; y < strip.heightPx; ++y) {
    std::memcpy(strip.rows.data() + y * strip.StrideBytes(), first + y * pageStride,
                std::size_t{3} * strip.widthPx);
  }
  return SendRows(strip.rows.data(), strip.widthPx, strip.heightPx, at);
}

bool Device::SendRows(const BYTE* rows, LONG widthPx, LONG heightPx, const POINTL& at) {
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = widthPx;
  header.biHeight = heightPx;
  header.biPlanes = 1;
  header.biBitCount = 24;
  header.biSizeImage = static_cast<DWORD>(Picture{widthPx, heightPx, {}}.StrideBytes() * heightPx);
  IPPARAMS parameters = {};
  parameters.dwSize = sizeof parameters;
  parameters.ptOffset = {at.x, at.y};
  parameters.bBlankBand =
      std::all_of(rows, rows + header.biSizeImage, [](BYTE value) { return value == 0xFF; });
  PBYTE result = nullptr;
  return SUCCEEDED(m_plugin->ImageProcessing(&object, const_cast<PBYTE>(rows), &header, nullptr,
                                             kBand24Bits, &parameters, &result)) &&
         result != nullptr;
}

DWORD APIENTRY Device::DrvWriteSpoolBuf(PDEVOBJ pdevobj, PVOID bytes, DWORD size) {
  static_cast<Device*>(pdevobj->hEngine)->m_job.write(static_cast<const char*>(bytes), size);
  return size;
}
