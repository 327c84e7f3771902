#include "tests/driver/driver.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/palette.h"
#include "platform/spooler.h"
#include "tests/support/record.h"

namespace {

// 0xRRGGBB of a pixel of a built-in picture.
DWORD PixelOf(char picture, LONG x, LONG y) {
  const DWORD checks = (x / 3 + y / 5) % 2 == 0 ? 0x000000 : 0xFFFFFF;
  if (picture == 'c') return y > 8 && y < 20 && x % 7 == 0 ? 0x404040 : 0xFFFFFF;
  if (x >= 20) return checks;
  return picture == 'a' ? 0xFF0000 : 0xFFFFFF;
}

std::string Text(LPCWSTR name) {
  const std::basic_string_view<WCHAR> text = name == nullptr ? WTEXT("null") : name;
  return {text.begin(), text.end()};
}

std::string At(const POINTL& point) {
  return "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
}

}  // namespace

Driver::Driver() : devmode(std::make_unique<OEMDEV>()) {
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
  ChoosePrinter(WTEXT("Label Printer"));
  if (Plugin::GetClassObject(Plugin::kClass, IID_IClassFactory,
                             reinterpret_cast<void**>(&m_factory)) != S_OK) {
    std::abort();
  }
}

Driver::~Driver() {
  DisableDevice();
  if (driverStarts > 0) CreateObject();  // if the object went before its driver's end
  while (driverStarts > 0 && m_plugin != nullptr) DisableDriver();
  while (m_plugin != nullptr) ReleaseObject();
  while (locks > 0) UnlockServer();
  m_factory->Release();
  ClosePrinter(m_printer);
}

bool Driver::ChoosePrinter(std::basic_string<WCHAR> name) {
  if (m_printer != nullptr) ClosePrinter(std::exchange(m_printer, nullptr));
  return OpenPrinterW(name.data(), &m_printer, nullptr) != FALSE;
}

template <typename Method>
bool Driver::Succeeds(Method&& method) {
  const InPlugin inside(true);
  result = method();
  return result == S_OK;
}

HRESULT Driver::QueryInterface(REFIID riid, void** ppv) {
  *ppv = nullptr;
  if (riid != IID_IPrintOemDriverUni) return E_NOINTERFACE;
  AddRef();
  *ppv = static_cast<IPrintOemDriverUni*>(this);
  return S_OK;
}

HRESULT Driver::DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size, DWORD* written) {
  *written = Write(bytes, size);
  return S_OK;
}

DWORD Driver::Write(const void* bytes, DWORD size) {
  const InPlugin outside(false);
  const std::string_view text(static_cast<const char*>(bytes), size);
  if (spooler) {
    spooler(text);
  } else {
    writes.emplace_back(text);
  }
  if (++m_writeCount != m_failWrite) return size;
  if (m_writeFault == WriteFault::Raise) throw 1;
  return m_writeFault == WriteFault::Short ? size / 2 : 0;
}

DWORD APIENTRY Driver::WriteSpool(PDEVOBJ device, PVOID bytes, DWORD size) {
  return static_cast<Driver*>(device->hEngine)->Write(bytes, size);
}

void Driver::FailWriteNumber(long number, WriteFault fault) {
  m_writeCount = 0;
  m_failWrite = number;
  m_writeFault = fault;
}

bool Driver::CreateObject() {
  if (m_plugin == nullptr && Succeeds([&] {
        return m_factory->CreateInstance(nullptr, IID_IPrintOemUni2,
                                         reinterpret_cast<void**>(&m_plugin));
      })) {
    objectReferences = 1;
  }
  return m_plugin != nullptr;
}

bool Driver::AddReference() {
  if (m_plugin == nullptr) return true;
  return m_plugin->AddRef() == static_cast<ULONG>(++objectReferences);
}

bool Driver::ReleaseObject() {
  if (m_plugin == nullptr) return true;
  if (objectReferences == 1) DisableDevice();
  const ULONG left = m_plugin->Release();
  if (--objectReferences == 0) m_plugin = nullptr;
  return left == static_cast<ULONG>(objectReferences);
}

bool Driver::LockServer() {
  ++locks;
  return m_factory->LockServer(TRUE) == S_OK;
}

bool Driver::UnlockServer() {
  if (locks == 0) return true;
  --locks;
  return m_factory->LockServer(FALSE) == S_OK;
}

bool Driver::EnableDriver() {
  if (m_plugin == nullptr) return true;
  ++driverStarts;
  return Succeeds([&] { return m_plugin->EnableDriver(0x10000, sizeof m_hooks, &m_hooks); });
}

bool Driver::DisableDriver() {
  if (m_plugin == nullptr) return true;
  if (driverStarts > 0) --driverStarts;
  return Succeeds([&] { return m_plugin->DisableDriver(); });
}

bool Driver::EnableDevice() {
  DisableDevice();
  return m_plugin == nullptr || EnableNewDevice();
}

bool Driver::DisableDevice() {
  if (m_plugin == nullptr) return true;
  const bool done = Succeeds([&] { return m_plugin->DisablePDEV(&m_device); });
  EngDeletePalette(std::exchange(m_devInfo.hpalDefault, nullptr));
  return done;
}

bool Driver::PublishHelper() {
  return m_plugin == nullptr || Succeeds([&] { return m_plugin->PublishDriverInterface(this); });
}

bool Driver::PassRaster() {
  BYTE raster[] = "Image";
  return m_plugin == nullptr ||
         Succeeds([&] { return m_plugin->FilterGraphics(&m_device, raster, 5); });
}

Driver& Driver::Of(SURFOBJ* pso) {
  return *static_cast<Driver*>(reinterpret_cast<DEVOBJ*>(pso->dhpdev)->hEngine);
}

// arguments gives the text of the call's arguments.
template <typename Arguments>
BOOL Driver::OwnFunction(SURFOBJ* pso, ULONG index, const char* name, Arguments&& arguments) {
  const InPlugin outside(false);
  Driver& driver = Of(pso);
  driver.lastCall = std::string(name) + arguments();
  const bool ofBand = index == INDEX_DrvStartBanding || index == INDEX_DrvNextBand;
  if (driver.notesCalls && !ofBand) driver.writes.emplace_back(name);
  const auto answer = driver.answers.find(index);
  return answer == driver.answers.end() ? TRUE : answer->second;
}

bool Driver::EnableNewDevice() {
  static const auto none = [] { return "()"; };
  static const auto start = +[](SURFOBJ* pso, LPWSTR document, DWORD id) {
    return OwnFunction(pso, INDEX_DrvStartDoc, "DrvStartDoc",
                       [&] { return "(" + Text(document) + ", " + std::to_string(id) + ")"; });
  };
  static const auto end = +[](SURFOBJ* pso, FLONG flags) {
    return OwnFunction(pso, INDEX_DrvEndDoc, "DrvEndDoc",
                       [&] { return "(" + std::to_string(flags) + ")"; });
  };
  static const auto startPage =
      +[](SURFOBJ* pso) { return OwnFunction(pso, INDEX_DrvStartPage, "DrvStartPage", none); };
  static const auto sendPage =
      +[](SURFOBJ* pso) { return OwnFunction(pso, INDEX_DrvSendPage, "DrvSendPage", none); };
  static const auto startBanding = +[](SURFOBJ* pso, POINTL* origin) {
    return OwnFunction(pso, INDEX_DrvStartBanding, "DrvStartBanding", [&] { return At(*origin); });
  };
  static const auto nextBand = +[](SURFOBJ* pso, POINTL* origin) {
    return OwnFunction(pso, INDEX_DrvNextBand, "DrvNextBand", [&] { return At(*origin); });
  };
  static DRVFN functions[] = {{INDEX_DrvNextBand, reinterpret_cast<PFN>(nextBand)},
                              {INDEX_DrvSendPage, reinterpret_cast<PFN>(sendPage)},
                              {INDEX_DrvStartDoc, reinterpret_cast<PFN>(start)},
                              {INDEX_DrvStartBanding, reinterpret_cast<PFN>(startBanding)},
                              {INDEX_DrvEndDoc, reinterpret_cast<PFN>(end)},
                              {INDEX_DrvStartPage, reinterpret_cast<PFN>(startPage)}};
  DRVENABLEDATA own = {0x10000, 6, functions};
  m_device = {};
  m_device.dwSize = sizeof m_device;
  m_device.hEngine = this;
  m_device.hPrinter = m_printer;
  m_device.pPublicDM = &publicDevmode;
  m_device.pOEMDM = devmode.get();
  m_device.pDrvProcs = &m_procedures;
  info = given;
  info.cBitsPixel = paletteColors == 0 ? 24 : 8;
  info.ulLogPixelsX = info.ulLogPixelsY = static_cast<ULONG>(dpi);
  EngDeletePalette(m_devInfo.hpalDefault);
  m_devInfo = {};
  ULONG colors[256] = {};
  if (paletteColors != 0) {
    m_devInfo.hpalDefault = EngCreatePalette(PAL_INDEXED, paletteColors, colors, 0, 0, 0);
  }
  m_surface.dhpdev = reinterpret_cast<DHPDEV>(&m_device);
  return Succeeds([&] {
    return m_plugin->EnablePDEV(&m_device, nullptr, 0, nullptr, sizeof info, &info,
                                sizeof m_devInfo, &m_devInfo, &own, &m_device.pdevOEM);
  });
}

bool Driver::ResetDevice() {
  if (m_plugin == nullptr) return true;
  DEVOBJ old = m_device;
  bool done = EnableNewDevice();
  done = done && Succeeds([&] { return m_plugin->ResetPDEV(&old, &m_device); });
  Succeeds([&] { return m_plugin->DisablePDEV(&old); });
  if (!done) PaintBand(0);  // a context that took nothing over has nothing of the old one
  return done && CallHook<PFN_DrvStartDoc>(INDEX_DrvStartDoc, LPWSTR{nullptr}, DWORD{0});
}

template <typename Function, typename... Arguments>
bool Driver::CallHook(ULONG index, Arguments... arguments) {
  if (m_plugin == nullptr) return true;
  for (ULONG i = 0; i < m_hooks.c; ++i) {
    if (m_hooks.pdrvfn[i].iFunc != index) continue;
    const InPlugin inside(true);
    hookResult = reinterpret_cast<Function>(m_hooks.pdrvfn[i].pfn)(&m_surface, arguments...);
    return hookResult != FALSE;
  }
  return false;  // the plug-in never handed it out
}

bool Driver::StartDocument() {
  return CallHook<PFN_DrvStartDoc>(INDEX_DrvStartDoc, documentName.data(), jobId);
}

bool Driver::EndDocument(FLONG flags) { return CallHook<PFN_DrvEndDoc>(INDEX_DrvEndDoc, flags); }

bool Driver::StartPage() {
  m_position = 0;
  return CallHook<PFN_DrvStartPage>(INDEX_DrvStartPage);
}

bool Driver::StartBanding() {
  POINTL origin = {0, 0};
  return CallHook<PFN_DrvStartBanding>(INDEX_DrvStartBanding, &origin);
}

bool Driver::SendPage() { return CallHook<PFN_DrvSendPage>(INDEX_DrvSendPage); }

bool Driver::SendBand(const Band& band) {
  if (m_plugin == nullptr) return true;
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = band.widthPx;
  header.biHeight = band.heightPx;
  header.biPlanes = 1;
  header.biBitCount = 24;
  header.biSizeImage = band.sizeBytes;
  IPPARAMS parameters = {sizeof parameters, band.offset, nullptr, band.blank};
  bandResult = reinterpret_cast<PBYTE>(2);
  const bool done = Succeeds([&] {
    return m_plugin->ImageProcessing(&m_device, const_cast<PBYTE>(band.pixels), &header, nullptr,
                                     bandFormat, &parameters, &bandResult);
  });
  return done && bandResult == reinterpret_cast<PBYTE>(1);
}

bool Driver::PaintBand(LONG position) {
  const bool landscape = IsLandscape();
  const LONG length = std::min(bandPx, (landscape ? widthPx : heightPx) - position);
  const LONG width = landscape ? length : widthPx;
  const LONG height = landscape ? heightPx : length;
  const POINT at = landscape ? POINT{position, 0} : POINT{0, position};
  const LONG stride = (3 * width + 3) / 4 * 4;
  std::vector<BYTE> bytes(static_cast<std::size_t>(stride) * height, 0xAA);
  bool blank = true;
  for (LONG i = 0; i < width * height; ++i) {
    const LONG x = i % width, y = i / width;
    const DWORD rgb = paint ? paint(at.x + x, at.y + y) : PixelOf(m_picture, at.x + x, at.y + y);
    blank &= rgb == 0xFFFFFF;
    for (int k = 0; k < 3; ++k) bytes[y * stride + 3 * x + k] = static_cast<BYTE>(rgb >> 8 * k);
  }
  const auto sizeBytes = static_cast<DWORD>(bytes.size());
  if (!SendBand({width, height, sizeBytes, at, bytes.data(), blank})) return false;
  POINTL next = {at.x, at.y};
  return CallHook<PFN_DrvNextBand>(INDEX_DrvNextBand, &next);
}

bool Driver::SendBand() {
  if (m_plugin == nullptr) return true;
  m_position = (m_position + bandPx) % std::min(widthPx, heightPx);
  return PaintBand(m_position);
}

bool Driver::PrintPage(char picture) {
  if (m_plugin == nullptr) return true;
  m_picture = picture;
  if (!StartPage()) return false;
  StartBanding();
  // The bands of a landscape page come from its right edge.
  const LONG count = ((IsLandscape() ? widthPx : heightPx) + bandPx - 1) / bandPx;
  for (LONG i = 0; i < count; ++i) {
    if (!PaintBand(bandPx * (IsLandscape() ? count - 1 - i : i))) return false;
  }
  return SendPage();
}

bool Driver::PrintDocument(std::string_view pictures) {
  if (!StartDocument()) return false;
  for (const char picture : pictures) {
    if (!PrintPage(picture)) return false;
  }
  return EndDocument();
}
