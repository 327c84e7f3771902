#include "tests/Renderer/client.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>

#include "platform/palette.h"
#include "platform/spooler.h"
#include "tests/support/png_image.h"

Client::Client() : m_module(dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
  EXPECT_NE(m_module, nullptr) << dlerror();
}

Client::~Client() {
  Disable();
  dlclose(m_module);
}

HRESULT Client::GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) const {
  using Function = HRESULT (*)(REFCLSID, REFIID, void**);
  return reinterpret_cast<Function>(dlsym(m_module, "DllGetClassObject"))(rclsid, riid, ppv);
}

HRESULT Client::CanUnloadNow() const {
  return reinterpret_cast<HRESULT (*)()>(dlsym(m_module, "DllCanUnloadNow"))();
}

Client& Client::Of(SURFOBJ* pso) {
  return *static_cast<Client*>(static_cast<DEVOBJ*>(pso->dhpdev)->hEngine);
}

BOOL Client::Note(const char* function) {
  m_events.emplace_back(function);
  return driverResult;
}

void Client::EnableDevice(DEVOBJ& device) {
  device = {sizeof device, nullptr, this, m_printer, &publicDevmode, &devmode, &m_procedures};
  static DRVFN functions[] = {
      {35, reinterpret_cast<PFN>(
               +[](SURFOBJ* pso, LPWSTR, DWORD) { return Of(pso).Note("DrvStartDoc"); })},
      {34, reinterpret_cast<PFN>(+[](SURFOBJ* pso, FLONG) { return Of(pso).Note("DrvEndDoc"); })},
      {33, reinterpret_cast<PFN>(+[](SURFOBJ* pso) { return Of(pso).Note("DrvStartPage"); })},
      {32, reinterpret_cast<PFN>(+[](SURFOBJ* pso) { return Of(pso).Note("DrvSendPage"); })},
      {57, reinterpret_cast<PFN>(+[](SURFOBJ*, POINTL*) { return BOOL{TRUE}; })},
      {58, reinterpret_cast<PFN>(+[](SURFOBJ* pso, POINTL* pptl) {
         Client& client = Of(pso);
         const bool landscape = client.publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
         const LONG band = static_cast<LONG>(pso->iUniq);
         if (landscape) {
           const LONG width = std::min(band, client.m_widthPx - pptl->x);
           return client.SendBand(pptl->x, 0, width, client.m_heightPx);
         }
         const LONG height = std::min(band, client.m_heightPx - pptl->y);
         return client.SendBand(0, pptl->y, client.m_widthPx, height);
       })}};
  DRVENABLEDATA own = {0x10000, 6, functions};
  GDIINFO info = {};
  info.cBitsPixel = 24;
  info.ulLogPixelsX = info.ulLogPixelsY = 203;
  EXPECT_EQ(plugin->EnablePDEV(&device, nullptr, 0, nullptr, sizeof info, &info, sizeof m_devInfo,
                               &m_devInfo, &own, &device.pdevOEM),
            S_OK);
  EXPECT_NE(device.pdevOEM, nullptr);
}

void Client::Enable(LONG widthPx, LONG heightPx) {
  m_widthPx = widthPx;
  m_heightPx = heightPx;
  IClassFactory* factory = nullptr;
  ASSERT_EQ(GetClassObject(kClass, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
  ASSERT_EQ(factory->CreateInstance(nullptr, IID_IPrintOemUni2, reinterpret_cast<void**>(&plugin)),
            S_OK);
  factory->Release();
  OEMDMPARAM block = {};
  block.pOEMDMOut = &devmode;
  block.cbBufSize = sizeof devmode;
  ASSERT_EQ(plugin->DevMode(OEMDM_DEFAULT, &block), S_OK);
  publicDevmode.dmOrientation = DMORIENT_PORTRAIT;
  publicDevmode.dmPaperWidth = 500;
  publicDevmode.dmPaperLength = 300;
  publicDevmode.dmCopies = 1;
  publicDevmode.dmYResolution = 203;
  m_procedures.DrvWriteSpoolBuf = [](PDEVOBJ device, PVOID bytes, DWORD size) -> DWORD {
    auto& client = *static_cast<Client*>(device->hEngine);
    client.m_events.emplace_back(static_cast<char*>(bytes), size);
    return size;
  };
  WCHAR printer[] = WTEXT("Label Printer");
  ASSERT_TRUE(OpenPrinterW(printer, &m_printer, nullptr));
  ASSERT_EQ(plugin->EnableDriver(0x10000, sizeof m_hooks, &m_hooks), S_OK);
  EnableDevice(m_device);
  m_surface.dhpdev = &m_device;
}

void Client::Reset() {
  DEVOBJ old = m_device;
  EngDeletePalette(m_devInfo.hpalDefault);
  EnableDevice(m_device);
  EXPECT_EQ(plugin->ResetPDEV(&old, &m_device), S_OK);
  EXPECT_EQ(plugin->DisablePDEV(&old), S_OK);
}

void Client::Disable() {
  if (plugin == nullptr) return;
  plugin->DisablePDEV(&m_device);
  EngDeletePalette(m_devInfo.hpalDefault);
  plugin->DisableDriver();
  EXPECT_EQ(plugin->Release(), 0u);
  plugin = nullptr;
  ClosePrinter(m_printer);
}

template <typename Function>
Function Client::Hook(ULONG index) const {
  for (ULONG i = 0; i < m_hooks.c; ++i) {
    if (m_hooks.pdrvfn[i].iFunc == index) {
      return reinterpret_cast<Function>(m_hooks.pdrvfn[i].pfn);
    }
  }
  return nullptr;
}

BOOL Client::StartDoc(LPCWSTR name, DWORD jobId) {
  return Hook<PFN_DrvStartDoc>(35)(&m_surface, const_cast<LPWSTR>(name), jobId);
}

BOOL Client::Page(const std::function<DWORD(LONG, LONG)>& color, LONG bandPx) {
  m_color = color;
  m_surface.iUniq = static_cast<ULONG>(bandPx);
  const BOOL started = Hook<PFN_DrvStartPage>(33)(&m_surface);
  const bool landscape = publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
  const LONG length = landscape ? m_widthPx : m_heightPx;
  const LONG count = (length + bandPx - 1) / bandPx;
  POINTL at = {0, 0};
  EXPECT_TRUE(Hook<PFN_DrvStartBanding>(57)(&m_surface, &at));
  for (LONG i = 0; i < count; ++i) {
    at = landscape ? POINTL{(count - 1 - i) * bandPx, 0} : POINTL{0, i * bandPx};
    EXPECT_TRUE(Hook<PFN_DrvNextBand>(58)(&m_surface, &at));
  }
  Hook<PFN_DrvSendPage>(32)(&m_surface);
  return started;
}

BOOL Client::SendBand(LONG x, LONG y, LONG widthPx, LONG heightPx) {
  const LONG stride = (3 * widthPx + 3) / 4 * 4;
  std::vector<BYTE> bytes(static_cast<std::size_t>(stride) * heightPx, 0xAA);
  for (LONG j = 0; j < heightPx; ++j) {
    for (LONG i = 0; i < widthPx; ++i) {
      const DWORD rgb = m_color(x + i, y + j);
      BYTE* pixel = &bytes[j * stride + 3 * i];
      pixel[0] = static_cast<BYTE>(rgb);
      pixel[1] = static_cast<BYTE>(rgb >> 8);
      pixel[2] = static_cast<BYTE>(rgb >> 16);
    }
  }
  BITMAPINFOHEADER header = {40, widthPx, heightPx, 1, 24, 0, static_cast<DWORD>(bytes.size()),
                             0,  0,       0,        0};
  IPPARAMS parameters = {sizeof parameters, {x, y}, nullptr, FALSE};
  PBYTE result = nullptr;
  EXPECT_EQ(
      plugin->ImageProcessing(&m_device, bytes.data(), &header, nullptr, 5, &parameters, &result),
      S_OK);
  EXPECT_EQ(result, reinterpret_cast<PBYTE>(1));
  return TRUE;
}

BOOL Client::EndDoc(FLONG fl) { return Hook<PFN_DrvEndDoc>(34)(&m_surface, fl); }

std::vector<std::string> Client::Events() const {
  std::vector<std::string> shown;
  for (const std::string& event : m_events) {
    if (event.starts_with("\x89PNG")) {
      const PngImage png = DecodePng(event);
      const std::string pixels(png.grey.begin(), png.grey.end());
      shown.push_back("<png " + std::to_string(png.width) + "x" + std::to_string(png.height) + " " +
                      std::to_string(png.bitDepth) + "-bit " +
                      std::to_string(std::hash<std::string>()(pixels)) + ">");
    } else if (event.starts_with(";Created: ")) {
      shown.push_back(";Created: <time>" + event.substr(event.find("\r\n")));
    } else {
      shown.push_back(event);
    }
  }
  return shown;
}
