#include "tests/torture/machine.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "platform/palette.h"
#include "platform/spooler.h"
#include "tests/support/record.h"
#include "tests/torture/faults.h"

namespace {

// Calls into the plug-in; only there do injected failures happen.
template <typename Call>
auto Inside(Call&& call) {
  const InPlugin inside(true);
  return call();
}
template <typename Call>
bool Succeeds(Call&& call) {
  return Inside(call) == S_OK;
}

// 0xRRGGBB of a pixel: a has both colours, b only the black of it, c another picture.
DWORD PixelOf(char picture, LONG x, LONG y) {
  const DWORD checks = (x / 3 + y / 5) % 2 == 0 ? 0x000000 : 0xFFFFFF;
  if (picture == 'c') return y > 8 && y < 20 && x % 7 == 0 ? 0x404040 : 0xFFFFFF;
  if (x >= 20) return checks;
  return picture == 'a' ? 0xFF0000 : 0xFFFFFF;
}

}  // namespace

HRESULT Machine::QueryInterface(REFIID riid, void** ppv) {
  *ppv = nullptr;
  if (riid != IID_IPrintOemDriverUni) return E_NOINTERFACE;
  AddRef();
  *ppv = static_cast<IPrintOemDriverUni*>(this);
  return S_OK;
}

HRESULT Machine::DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size, DWORD* written) {
  *written = Write(bytes, size);
  return S_OK;
}

LoadedPlugin::LoadedPlugin() : m_module(dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
  if (m_module == nullptr) throw std::runtime_error(dlerror());
  const auto find = [this](auto& function, const char* name) {
    function = reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(m_module, name));
  };
  find(Machine::GetClassObject, "DllGetClassObject");
  find(Machine::CanUnloadNow, "DllCanUnloadNow");
}

LoadedPlugin::~LoadedPlugin() { dlclose(m_module); }

Machine::Machine() : devmode(std::make_unique<OEMDEV>()) {
  *devmode = {};
  devmode->header = {sizeof(OEMDEV), kOemDevSignature, kOemDevVersion};
  SetFields(*devmode,
            "dwColorMode=1 dwSpeed=100 crHighlightColor=255 nColorTolerance=25 wDitherer=1");
  publicDevmode.dmOrientation = DMORIENT_PORTRAIT;
  publicDevmode.dmPaperWidth = 500;
  publicDevmode.dmPaperLength = 300;
  publicDevmode.dmCopies = 1;
  publicDevmode.dmYResolution = 203;
  m_procedures.DrvWriteSpoolBuf = WriteSpool;
  WCHAR printer[] = WTEXT("Label Printer");
  OpenPrinterW(printer, &m_printer, nullptr);
  if (GetClassObject(kClass, IID_IClassFactory, reinterpret_cast<void**>(&m_factory)) != S_OK) {
    std::abort();
  }
}

Machine::~Machine() {
  Do('D');
  if (driverStarts > 0) Do('O');  // of an object that went before its driver's end
  while (driverStarts > 0 && m_plugin != nullptr) Do('v');
  while (m_plugin != nullptr) Do('o');
  while (locks > 0) Do('U');
  m_factory->Release();
  ClosePrinter(m_printer);
}

DWORD Machine::Write(const void* bytes, DWORD size) {
  const InPlugin outside(false);
  writes.emplace_back(static_cast<const char*>(bytes), size);
  if (static_cast<long>(writes.size()) != failWrite) return size;
  if (writeFault == WriteFault::Raise) throw 1;
  return writeFault == WriteFault::Short ? size / 2 : 0;
}

DWORD APIENTRY Machine::WriteSpool(PDEVOBJ device, PVOID bytes, DWORD size) {
  return static_cast<Machine*>(device->hEngine)->Write(bytes, size);
}

template <typename Function, typename... Arguments>
bool Machine::Hook(ULONG index, Arguments... arguments) {
  for (ULONG i = 0; i < m_hooks.c; ++i) {
    if (m_hooks.pdrvfn[i].iFunc != index) continue;
    const auto function = reinterpret_cast<Function>(m_hooks.pdrvfn[i].pfn);
    return Inside([&] { return function(&m_surface, arguments...); });
  }
  return false;
}

Machine& Machine::Of(SURFOBJ* pso) {
  return *static_cast<Machine*>(static_cast<DEVOBJ*>(pso->dhpdev)->hEngine);
}

BOOL Machine::Note(const char* function) {
  const InPlugin outside(false);
  if (notesCalls) writes.emplace_back(function);
  return driverResult;
}

bool Machine::NewContext(DEVOBJ& device) {
  device = {sizeof device, nullptr, this, m_printer, &publicDevmode, devmode.get(), &m_procedures};
  static DRVFN functions[] = {
      {35, reinterpret_cast<PFN>(
               +[](SURFOBJ* pso, LPWSTR, DWORD) { return Of(pso).Note("DrvStartDoc"); })},
      {34, reinterpret_cast<PFN>(+[](SURFOBJ* pso, FLONG) { return Of(pso).Note("DrvEndDoc"); })},
      {33, reinterpret_cast<PFN>(+[](SURFOBJ* pso) { return Of(pso).Note("DrvStartPage"); })},
      {32, reinterpret_cast<PFN>(+[](SURFOBJ* pso) { return Of(pso).Note("DrvSendPage"); })},
      {57, reinterpret_cast<PFN>(+[](SURFOBJ*, POINTL*) { return BOOL{TRUE}; })},
      {58, reinterpret_cast<PFN>(+[](SURFOBJ*, POINTL*) { return BOOL{TRUE}; })}};
  DRVENABLEDATA own = {0x10000, 6, functions};
  info = given;
  info.cBitsPixel = paletteColors == 0 ? 24 : 8;
  info.ulLogPixelsX = info.ulLogPixelsY = static_cast<ULONG>(dpi);
  EngDeletePalette(m_devInfo.hpalDefault);
  m_devInfo = {};
  ULONG colors[256] = {};
  if (paletteColors != 0) {
    m_devInfo.hpalDefault = EngCreatePalette(PAL_INDEXED, paletteColors, colors, 0, 0, 0);
  }
  m_surface.dhpdev = &m_device;
  return Succeeds([&] {
    return m_plugin->EnablePDEV(&device, nullptr, 0, nullptr, sizeof info, &info, sizeof m_devInfo,
                                &m_devInfo, &own, &device.pdevOEM);
  });
}

bool Machine::Reset() {
  DEVOBJ old = m_device;
  bool done = NewContext(m_device);
  done = done && Succeeds([&] { return m_plugin->ResetPDEV(&old, &m_device); });
  Inside([&] { return m_plugin->DisablePDEV(&old); });
  if (!done) BandAt(0);  // a context that took nothing over has nothing of the old one
  return done && Hook<PFN_DrvStartDoc>(35, LPWSTR{nullptr}, DWORD{0});
}

HRESULT Machine::Band(BITMAPINFOHEADER header, POINT at, const BYTE* pixels, bool blank) {
  IPPARAMS parameters = {sizeof parameters, at, nullptr, blank};
  PBYTE result = nullptr;
  const HRESULT done = Inside([&] {
    return m_plugin->ImageProcessing(&m_device, const_cast<PBYTE>(pixels), &header, nullptr,
                                     bandFormat, &parameters, &result);
  });
  return done == S_OK && result != reinterpret_cast<PBYTE>(1) ? E_FAIL : done;
}

void Machine::OddBand(LONG width, LONG height, DWORD size, POINT at, bool blank, bool null) {
  const std::int64_t strideBytes = (std::int64_t{width} * 24 + 31) / 32 * 4;
  const bool small = strideBytes > 0 && height > 0 && strideBytes < 0x10000 && height < 0x10000;
  std::vector<BYTE> bytes(blank ? 0 : size, 0x55);
  if (size == 0 && small && strideBytes * height < 0x20000) bytes.resize(strideBytes * height);
  null = null || blank || bytes.empty();
  Band({40, width, height, 1, 24, 0, size, 0, 0, 0, 0}, at, null ? nullptr : bytes.data(), blank);
}

bool Machine::BandAt(LONG position) {
  const bool landscape = publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
  const LONG length = std::min(bandPx, (landscape ? widthPx : heightPx) - position);
  const LONG width = landscape ? length : widthPx;
  const LONG height = landscape ? heightPx : length;
  const POINT at = landscape ? POINT{position, 0} : POINT{0, position};
  const LONG stride = (3 * width + 3) / 4 * 4;
  std::vector<BYTE> bytes(static_cast<std::size_t>(stride) * height, 0xAA);
  for (LONG i = 0; i < width * height; ++i) {
    const LONG x = i % width, y = i / width;
    const DWORD rgb = paint ? paint(at.x + x, at.y + y) : PixelOf(m_picture, at.x + x, at.y + y);
    for (int k = 0; k < 3; ++k) bytes[y * stride + 3 * x + k] = static_cast<BYTE>(rgb >> 8 * k);
  }
  const auto size = static_cast<DWORD>(bytes.size());
  if (Band({40, width, height, 1, 24, 0, size, 0, 0, 0, 0}, at, bytes.data(), false) != S_OK) {
    return false;
  }
  POINTL next = {at.x, at.y};
  return Hook<PFN_DrvNextBand>(58, &next);
}

bool Machine::Page(char picture) {
  m_picture = picture;
  if (!Do('p')) return false;
  const bool landscape = publicDevmode.dmOrientation == DMORIENT_LANDSCAPE;
  const LONG count = ((landscape ? widthPx : heightPx) + bandPx - 1) / bandPx;
  POINTL at = {0, 0};
  Hook<PFN_DrvStartBanding>(57, &at);
  for (LONG i = 0; i < count; ++i) {
    if (!BandAt(bandPx * (landscape ? count - 1 - i : i))) return false;
  }
  return Do('s');
}

bool Machine::Do(char verb) {
  WCHAR name[] = WTEXT("job");
  BYTE raster[] = "Image";
  ULONG left = 0;
  switch (verb) {
    case 'O':
      if (m_plugin == nullptr && Succeeds([&] {
            return m_factory->CreateInstance(nullptr, IID_IPrintOemUni2,
                                             reinterpret_cast<void**>(&m_plugin));
          })) {
        objectReferences = 1;
      }
      return m_plugin != nullptr;
    case 'L':
      ++locks;
      return m_factory->LockServer(TRUE) == S_OK;
    case 'U':
      if (locks == 0) return true;
      --locks;
      return m_factory->LockServer(FALSE) == S_OK;
  }
  if (m_plugin == nullptr) return true;  // without an object there is nothing to call
  switch (verb) {
    case 'o':
      if (objectReferences == 1) Do('D');
      left = m_plugin->Release();
      if (--objectReferences == 0) m_plugin = nullptr;
      return left == static_cast<ULONG>(objectReferences);
    case '+':
      ++objectReferences;
      return m_plugin->AddRef() == static_cast<ULONG>(objectReferences);
    case 'V':
      ++driverStarts;
      return Succeeds([&] { return m_plugin->EnableDriver(0x10000, sizeof m_hooks, &m_hooks); });
    case 'v':
      if (driverStarts > 0) --driverStarts;
      return Succeeds([&] { return m_plugin->DisableDriver(); });
    case 'N':
      Do('D');
      return NewContext(m_device);
    case 'D': {
      const bool done = Succeeds([&] { return m_plugin->DisablePDEV(&m_device); });
      EngDeletePalette(std::exchange(m_devInfo.hpalDefault, nullptr));
      return done;
    }
    case 'P':
      return Succeeds([&] { return m_plugin->PublishDriverInterface(this); });
    case 'F':
      return Succeeds([&] { return m_plugin->FilterGraphics(&m_device, raster, 5); });
    case 'S':
      return Hook<PFN_DrvStartDoc>(35, LPWSTR{name}, jobId);
    case 'E':
      return Hook<PFN_DrvEndDoc>(34, FLONG{0});
    case 'X':
      return Hook<PFN_DrvEndDoc>(34, ED_ABORTDOC);
    case 'p':
      m_position = 0;
      return Hook<PFN_DrvStartPage>(33);
    case 's':
      return Hook<PFN_DrvSendPage>(32);
    case 'i':
      m_position = (m_position + bandPx) % std::min(widthPx, heightPx);
      return BandAt(m_position);
    case 'r':
      return Reset();
    default:
      return verb < 'a' || verb > 'c' || Page(verb);
  }
}

void Machine::Run(std::string_view verbs) {
  if (beforeFirst) beforeFirst();
  bool skipping = false;
  bool usable = true;
  for (const char verb : verbs) {
    if (verb == 'S') skipping = !usable;
    const bool ending = std::string_view("DvoU").find(verb) != std::string_view::npos;
    if (skipping && !ending) continue;
    if (Do(verb)) continue;
    results += verb;
    if (std::string_view("OVN").find(verb) != std::string_view::npos) usable = false;
    if (!usable || std::string_view("Spabcisr").find(verb) != std::string_view::npos) {
      if (usable && m_plugin != nullptr) Do('X');
      skipping = true;
    }
  }
}

std::vector<std::string> Machine::Writes() const {
  std::vector<std::string> shown = writes;
  for (std::string& write : shown) {
    constexpr std::string_view kTime = ";Created: dd.mm.yyyy, hh:mm:ss";
    if (write.starts_with(";Created: ")) write.replace(0, write.find("\r\n"), kTime);
  }
  return shown;
}
