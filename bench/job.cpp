#include "bench/job.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "platform/palette.h"
#include "platform/spooler.h"

namespace {

constexpr CLSID kPluginClass = {
    0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
constexpr LONG kUsualBandPx = 64;

void Check(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string("The plug-in refused ") + what);
}

IPrintOemUni2* MakePlugin(void* module) {
  Check(module != nullptr, "to be loaded");
  const auto getClassObject =
      reinterpret_cast<HRESULT (*)(REFCLSID, REFIID, void**)>(dlsym(module, "DllGetClassObject"));
  ComPtr<IClassFactory> factory;
  IPrintOemUni2* plugin = nullptr;
  Check(getClassObject(kPluginClass, IID_IClassFactory, reinterpret_cast<void**>(factory.Put())) ==
                S_OK &&
            factory->CreateInstance(nullptr, IID_IPrintOemUni2,
                                    reinterpret_cast<void**>(&plugin)) == S_OK,
        "its object");
  return plugin;
}

}  // namespace

std::vector<Job::Band> Job::Cut(const Raster& page, const JobSettings& settings) {
  const LONG length = settings.landscape ? page.widthPx : page.heightPx;
  LONG step = settings.bands == 0 ? kUsualBandPx : (length + settings.bands - 1) / settings.bands;
  if (settings.landscape) step = (step + 3) / 4 * 4;
  std::vector<Band> bands;
  for (LONG start = 0; start < length; start += step) {
    const LONG count = std::min(step, length - start);
    const LONG width = settings.landscape ? count : page.widthPx;
    const LONG height = settings.landscape ? page.heightPx : count;
    const POINT at = settings.landscape ? POINT{start, 0} : POINT{0, start};
    Raster strip = MakeRaster(width, height);
    for (LONG y = 0; y < height; ++y) {
      std::memcpy(strip.Row(y), page.Row(at.y + y) + 3 * at.x, 3 * width);
    }
    const bool blank =
        settings.flagBlankBands && std::count(strip.pixels.begin(), strip.pixels.end(), 0xFF) ==
                                       static_cast<std::ptrdiff_t>(strip.pixels.size());
    const auto size = static_cast<DWORD>(strip.pixels.size());
    bands.push_back({std::move(strip.pixels),
                     {40, width, height, 1, 24, 0, size, 0, 0, 0, 0},
                     {sizeof(IPPARAMS), at, nullptr, blank ? TRUE : FALSE}});
  }
  if (settings.landscape) std::reverse(bands.begin(), bands.end());
  return bands;
}

Job::Job(const JobSettings& settings, const std::vector<Raster>& pages)
    : m_module(dlopen(VLX_PLUGIN, RTLD_NOW | RTLD_LOCAL)), m_plugin(MakePlugin(m_module)) {
  for (const Raster& page : pages) m_pages.push_back(Cut(page, settings));
  OEMDMPARAM block = {};
  block.pOEMDMOut = &m_devmode;
  block.cbBufSize = sizeof m_devmode;
  Check(m_plugin->DevMode(OEMDM_DEFAULT, &block) == S_OK, "its default settings");
  m_devmode.dwColorMode = settings.twoColors ? 2 : 1;
  m_devmode.wDitherer = settings.ditherer;
  m_publicDevmode.dmOrientation = settings.landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  m_publicDevmode.dmPaperWidth = 1000;
  m_publicDevmode.dmPaperLength = 1500;
  m_publicDevmode.dmCopies = 1;
  m_publicDevmode.dmYResolution = 300;
  WCHAR printer[] = WTEXT("Label Printer");
  Check(OpenPrinterW(printer, &m_printer, nullptr) != FALSE, "the printer");
  m_procedures.DrvWriteSpoolBuf = [](PDEVOBJ device, PVOID bytes, DWORD size) -> DWORD {
    return static_cast<Job*>(device->hEngine)->Write(static_cast<char*>(bytes), size);
  };
  m_device = {sizeof m_device,  nullptr,    this,         m_printer,
              &m_publicDevmode, &m_devmode, &m_procedures};
  m_surface.dhpdev = &m_device;

  Check(m_plugin->EnableDriver(0x10000, sizeof m_hooks, &m_hooks) == S_OK, "EnableDriver");
  static DRVFN functions[] = {
      {INDEX_DrvStartDoc,
       reinterpret_cast<PFN>(+[](SURFOBJ*, LPWSTR, DWORD) { return BOOL{TRUE}; })},
      {INDEX_DrvEndDoc, reinterpret_cast<PFN>(+[](SURFOBJ*, FLONG) { return BOOL{TRUE}; })},
      {INDEX_DrvStartPage, reinterpret_cast<PFN>(+[](SURFOBJ*) { return BOOL{TRUE}; })}};
  DRVENABLEDATA own = {0x10000, std::size(functions), functions};
  GDIINFO info = {};
  info.cBitsPixel = 24;
  info.ulLogPixelsX = info.ulLogPixelsY = 300;
  Check(m_plugin->EnablePDEV(&m_device, printer, 0, nullptr, sizeof info, &info, sizeof m_devInfo,
                             &m_devInfo, &own, &m_device.pdevOEM) == S_OK,
        "EnablePDEV");
  StartDocument();
}

Job::~Job() {
  Hook<PFN_DrvEndDoc>(INDEX_DrvEndDoc)(&m_surface, 0);
  m_plugin->DisablePDEV(&m_device);
  EngDeletePalette(m_devInfo.hpalDefault);
  m_plugin->DisableDriver();
  m_plugin->Release();
  ClosePrinter(m_printer);
  dlclose(m_module);
}

template <typename Function>
Function Job::Hook(ULONG index) const {
  for (ULONG i = 0; i < m_hooks.c; ++i) {
    if (m_hooks.pdrvfn[i].iFunc == index) {
      return reinterpret_cast<Function>(m_hooks.pdrvfn[i].pfn);
    }
  }
  throw std::runtime_error("The plug-in lacks a hook");
}

void Job::StartDocument() {
  WCHAR name[] = WTEXT("bench");
  Check(Hook<PFN_DrvStartDoc>(INDEX_DrvStartDoc)(&m_surface, name, 1) != FALSE, "the document");
  Check(Hook<PFN_DrvStartPage>(INDEX_DrvStartPage)(&m_surface) != FALSE, "the first page");
}

void Job::SendBands() {
  for (Band& band : m_pages[m_nextPage]) {
    PBYTE result = nullptr;
    Check(m_plugin->ImageProcessing(&m_device, band.pixels.data(), &band.header, nullptr, 5,
                                    &band.parameters, &result) == S_OK,
          "a band");
  }
  m_nextPage = (m_nextPage + 1) % m_pages.size();
}

void Job::EmitPage() {
  m_imageCount = 0;
  Check(Hook<PFN_DrvStartPage>(INDEX_DrvStartPage)(&m_surface) != FALSE, "a page");
}

void Job::CaptureAndAbort() {
  SendBands();
  Hook<PFN_DrvEndDoc>(INDEX_DrvEndDoc)(&m_surface, ED_ABORTDOC);
}

DWORD Job::Write(const char* bytes, DWORD size) {
  if (size > 8 && std::memcmp(bytes, "\x89PNG", 4) == 0) {
    if (m_imageCount == m_images.size()) m_images.emplace_back();
    m_images[m_imageCount++].assign(bytes, size);
  }
  return size;
}
