// Loading, settings records, device contexts and documents; banding.cpp has pages and bands.

#include "host/driver/driver.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "config/renderer_class.h"
#include "host/driver/driver_helper.h"
#include "host/error.h"
#include "host/unicode.h"
#include "platform/extensions.h"
#include "platform/palette.h"

namespace {

DEVMODEW PublicDevMode(const PageSettings& page) {
  DEVMODEW devmode = {};
  devmode.dmSpecVersion = DM_SPECVERSION;
  devmode.dmSize = sizeof devmode;
  devmode.dmDriverExtra = sizeof(OEMDEV);
  devmode.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_COPIES |
                     DM_PRINTQUALITY | DM_YRESOLUTION | DM_COLLATE;
  devmode.dmOrientation = page.landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  devmode.dmPaperSize = DMPAPER_USER;
  devmode.dmPaperWidth = static_cast<SHORT>((page.paper.widthUm + 50) / 100);
  devmode.dmPaperLength = static_cast<SHORT>((page.paper.lengthUm + 50) / 100);
  devmode.dmCopies = static_cast<SHORT>(page.copies);
  devmode.dmPrintQuality = static_cast<SHORT>(page.dpi);
  devmode.dmYResolution = static_cast<SHORT>(page.dpi);
  devmode.dmCollate = page.collate ? DMCOLLATE_TRUE : DMCOLLATE_FALSE;
  return devmode;
}

}  // namespace

class LabelDriver::Helper final : public DriverHelper {
 public:
  explicit Helper(LabelDriver& driver) : m_driver(driver) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IPrintOemDriverUni) return E_NOINTERFACE;
    *ppv = static_cast<IPrintOemDriverUni*>(this);
    return S_OK;
  }
  // Not counted: the helper lives as long as the driver.
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }

  HRESULT DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size, DWORD* written) override {
    const DWORD count = m_driver.WriteSpool(bytes, size);
    if (written != nullptr) *written = count;
    return count == size ? S_OK : E_FAIL;
  }

 private:
  LabelDriver& m_driver;
};

LabelDriver::LabelDriver(const std::string& pluginPath, Spool& spool)
    : m_spool(spool), m_module(pluginPath), m_helper(std::make_unique<Helper>(*this)) {
  ComPtr<IClassFactory> factory;
  Check(m_module.DllGetClassObject(kRendererClass, IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.Put())),
        "DllGetClassObject");
  Check(
      factory->CreateInstance(nullptr, IID_IPrintOemUni2, reinterpret_cast<void**>(m_plugin.Put())),
      "CreateInstance");

  DWORD needed = 0;
  DWORD signature = 0;
  Check(m_plugin->GetInfo(OEMGI_GETSIGNATURE, &signature, sizeof signature, &needed), "GetInfo");
  Check(m_plugin->GetInfo(OEMGI_GETVERSION, &m_pluginVersion, sizeof m_pluginVersion, &needed),
        "GetInfo");
  DWORD helpers = 0;  // may fail: not every plug-in asks for helper interfaces
  m_plugin->GetInfo(OEMGI_GETREQUESTEDHELPERINTERFACES, &helpers, sizeof helpers, &needed);
  if (signature != kOemDevSignature) {
    throw HostError(kExitInternal, "The plug-in " + pluginPath + " is not made for this driver");
  }
  char method[] = "ImageProcessing";
  Check(m_plugin->GetImplementedMethod(method) == S_OK ? S_OK : E_FAIL, "GetImplementedMethod");
  Check(m_plugin->PublishDriverInterface(m_helper.get()), "PublishDriverInterface");
}

LabelDriver::~LabelDriver() {
  if (m_device.pdevOEM != nullptr) m_plugin->DisablePDEV(&m_device);
  if (m_devInfo.hpalDefault != nullptr) EngDeletePalette(m_devInfo.hpalDefault);
  if (m_enabled) m_plugin->DisableDriver();
}

void LabelDriver::RethrowSpoolError() {
  if (m_spoolError) std::rethrow_exception(std::exchange(m_spoolError, nullptr));
}

void LabelDriver::Check(HRESULT hr, const char* call) {
  RethrowSpoolError();
  if (SUCCEEDED(hr)) return;
  throw HostError(kExitInternal, std::string("The plug-in refused ") + call,
                  "set VLX_LOG=FILE and VLX_LOG_LEVEL=trace to see why");
}

void LabelDriver::CheckDone(BOOL result, const char* call) { Check(result ? S_OK : E_FAIL, call); }

OEMDMPARAM LabelDriver::DevModeBlock(const void* in, OEMDEV* out) {
  OEMDMPARAM block = {};
  block.cbSize = sizeof block;
  block.hPrinter = m_printer ? m_printer->Handle() : nullptr;
  block.pOEMDMIn = const_cast<void*>(in);
  block.pOEMDMOut = out;
  block.cbBufSize = sizeof *out;
  return block;
}

OEMDEV LabelDriver::DefaultDevMode() {
  OEMDEV devmode;
  OEMDMPARAM block = DevModeBlock(nullptr, &devmode);
  Check(m_plugin->DevMode(OEMDM_SIZE, &block), "DevMode (size)");
  if (block.cbBufSize != sizeof devmode) {
    throw HostError(kExitInternal, "The plug-in's settings record has " +
                                       std::to_string(block.cbBufSize) + " bytes, not " +
                                       std::to_string(sizeof devmode));
  }
  Check(m_plugin->DevMode(OEMDM_DEFAULT, &block), "DevMode (default)");
  return devmode;
}

OEMDEV LabelDriver::MergeDevMode(const DevModeRecord& record) {
  OEMDEV devmode;
  // The plug-in reads no more bytes than this, whatever the record's own header says.
  DEVMODEW publicDevmode = {};
  publicDevmode.dmSize = sizeof publicDevmode;
  publicDevmode.dmDriverExtra =
      static_cast<WORD>(std::min<std::size_t>(record.bytes.size(), 0xFFFF));
  OEMDMPARAM block = DevModeBlock(record.bytes.data(), &devmode);
  block.pPublicDMIn = &publicDevmode;
  if (record.bytes.size() < sizeof(OEM_DMEXTRAHEADER) ||
      FAILED(m_plugin->DevMode(OEMDM_MERGE, &block))) {
    throw HostError(kExitSettings,
                    record.source + " is no settings record of this driver (" +
                        std::to_string(record.bytes.size()) + " bytes)",
                    "make one with vlx print --save-devmode");
  }
  return devmode;
}

OEMDEV LabelDriver::MakeDevMode(const Settings& settings,
                                const std::optional<DevModeRecord>& record) {
  const OEMDEV base = record ? MergeDevMode(*record) : DefaultDevMode();
  OEMDEV devmode = base;
  settings.ApplyTo(devmode);
  const BYTE* bytes = reinterpret_cast<const BYTE*>(&devmode);
  devmode = MergeDevMode({{bytes, bytes + sizeof devmode}, "The settings"});
  settings.Check(devmode, base);
  return devmode;
}

GDIINFO LabelDriver::InitialGdiInfo(const PageSettings& page) const {
  const LONG widthUm = (page.landscape ? page.paper.lengthUm : page.paper.widthUm);
  const LONG heightUm = (page.landscape ? page.paper.widthUm : page.paper.lengthUm);
  const auto pixels = [&page](LONG um) {
    return static_cast<LONG>(std::lround(um * static_cast<double>(page.dpi) / 25400.0));
  };
  GDIINFO info = {};
  info.ulHorzSize = static_cast<ULONG>(-widthUm);
  info.ulVertSize = static_cast<ULONG>(-heightUm);
  info.szlPhysSize = {pixels(widthUm), pixels(heightUm)};
  info.ulHorzRes = static_cast<ULONG>(info.szlPhysSize.cx);
  info.ulVertRes = static_cast<ULONG>(info.szlPhysSize.cy);
  info.cBitsPixel = 24;
  info.cPlanes = 1;
  info.ulLogPixelsX = info.ulLogPixelsY = static_cast<ULONG>(page.dpi);
  return info;
}

void LabelDriver::Open(const std::string& printerName, const PageSettings& page,
                       const OEMDEV& devmode, std::optional<int> dotGain) {
  m_dotGain = dotGain;
  m_printer.emplace(printerName);
  std::u16string name = m_printer->Name();
  m_publicDevmode = PublicDevMode(page);
  name.copy(m_publicDevmode.dmDeviceName, std::size(m_publicDevmode.dmDeviceName) - 1);
  m_devmode = devmode;
  m_procedures.DrvWriteSpoolBuf = WriteSpoolBuf;
  m_device = {};
  m_device.dwSize = sizeof m_device;
  m_device.hEngine = this;
  m_device.hPrinter = m_printer->Handle();
  m_device.pPublicDM = &m_publicDevmode;
  m_device.pOEMDM = &m_devmode;
  m_device.pDrvProcs = &m_procedures;
  m_surfaceObject.dhpdev = &m_device;

  Check(m_plugin->EnableDriver(0x10000, sizeof m_hooks, &m_hooks), "EnableDriver");
  m_enabled = true;
  DRVFN functions[] = {{INDEX_DrvStartDoc, reinterpret_cast<PFN>(StartDoc)},
                       {INDEX_DrvEndDoc, reinterpret_cast<PFN>(EndDoc)},
                       {INDEX_DrvStartPage, reinterpret_cast<PFN>(StartPage)},
                       {INDEX_DrvSendPage, reinterpret_cast<PFN>(SendPage)},
                       {INDEX_DrvStartBanding, reinterpret_cast<PFN>(StartBanding)},
                       {INDEX_DrvNextBand, reinterpret_cast<PFN>(NextBand)}};
  DRVENABLEDATA own = {0x10000, std::size(functions), functions};
  m_gdiInfo = InitialGdiInfo(page);
  Check(m_plugin->EnablePDEV(&m_device, name.data(), 0, nullptr, sizeof m_gdiInfo, &m_gdiInfo,
                             sizeof m_devInfo, &m_devInfo, &own, &m_device.pdevOEM),
        "EnablePDEV");
}

DevicePage LabelDriver::Page() const {
  return {.physicalWidthPx = m_gdiInfo.szlPhysSize.cx,
          .physicalHeightPx = m_gdiInfo.szlPhysSize.cy,
          .offsetXPx = m_gdiInfo.ptlPhysOffset.x,
          .offsetYPx = m_gdiInfo.ptlPhysOffset.y,
          .surfaceWidthPx = static_cast<LONG>(m_gdiInfo.ulHorzRes),
          .surfaceHeightPx = static_cast<LONG>(m_gdiInfo.ulVertRes),
          .dpi = static_cast<int>(m_gdiInfo.ulLogPixelsX),
          .landscape = m_publicDevmode.dmOrientation == DMORIENT_LANDSCAPE};
}

PFN LabelDriver::FindHook(ULONG index) const {
  for (ULONG i = 0; i < m_hooks.c; ++i) {
    if (m_hooks.pdrvfn[i].iFunc == index) return m_hooks.pdrvfn[i].pfn;
  }
  throw HostError(kExitInternal, "The plug-in hooks no function " + std::to_string(index));
}

LabelDriver::DotGainScope::DotGainScope(const LabelDriver& driver) {
  PlatformSetPrinterDotGain(driver.m_dotGain.value_or(-1));
}

LabelDriver::DotGainScope::~DotGainScope() { PlatformSetPrinterDotGain(-1); }

void LabelDriver::StartDocument(const std::string& name, DWORD jobId) {
  const DotGainScope dotGain(*this);
  std::u16string wide = Widened(name);
  CheckDone(Hook<PFN_DrvStartDoc>(INDEX_DrvStartDoc)(&m_surfaceObject, wide.data(), jobId),
            "the start of the document");
}

void LabelDriver::EndDocument() {
  const DotGainScope dotGain(*this);
  const StageClock::Scope time(m_spool.Clock(), Stage::Pages);
  CheckDone(Hook<PFN_DrvEndDoc>(INDEX_DrvEndDoc)(&m_surfaceObject, 0), "the end of the document");
}

void LabelDriver::AbortDocument() noexcept {
  try {
    Hook<PFN_DrvEndDoc>(INDEX_DrvEndDoc)(&m_surfaceObject, ED_ABORTDOC);
  } catch (const std::exception&) {
    // Nothing is left to end.
  }
}

DWORD LabelDriver::WriteSpool(const void* bytes, DWORD size) noexcept {
  if (m_spoolError) return 0;  // the job is already lost
  try {
    m_spool.Write({static_cast<const char*>(bytes), size});
    return size;
  } catch (...) {
    m_spoolError = std::current_exception();  // no exception may pass through the plug-in
    return 0;
  }
}
