#include "config/vlx_shared.h"
#include "platform/gdiplus.h"
#include "tests/driver/job_test.h"
#include "tests/torture/faults.h"

namespace {

// A driver that has every interface, and none.
class HollowDriver final : public IUnknown {
 public:
  HRESULT QueryInterface(REFIID, void**) override { return S_OK; }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
};

class PluginObject : public JobTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(driver.CreateObject());
    object = driver.Object();
  }
  IPrintOemUni2* object = nullptr;
};

TEST_F(PluginObject, FactoryHandsOutWhatItHasAndNothingElse) {
  driver.ReleaseObject();
  void* out = &driver;
  EXPECT_EQ(Plugin::GetClassObject(Plugin::kClass, IID_IClassFactory, nullptr), E_POINTER);
  EXPECT_EQ(Plugin::GetClassObject(IID_IClassFactory, IID_IClassFactory, &out),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(LastLogLine(), "error\t\tDllGetClassObject: Class not available!");
  out = &driver;
  EXPECT_EQ(Plugin::GetClassObject(Plugin::kClass, IID_IPrintOemUni2, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);

  IClassFactory* factory = nullptr;
  ASSERT_EQ(
      Plugin::GetClassObject(Plugin::kClass, IID_IUnknown, reinterpret_cast<void**>(&factory)),
      S_OK);
  EXPECT_EQ(factory->QueryInterface(IID_IClassFactory, &out), S_OK);
  EXPECT_EQ(factory->Release(), 1u);
  EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(factory->QueryInterface(IID_IPrintOemUni2, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
  out = &driver;
  EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(out, nullptr);
  out = &driver;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(PluginObject, NeedsMemoryForFactoryAndObject) {
  driver.ReleaseObject();
  IClassFactory* factory = nullptr;
  const auto get = [&factory] {
    const InPlugin inside(true);
    return Plugin::GetClassObject(Plugin::kClass, IID_IClassFactory,
                                  reinterpret_cast<void**>(&factory));
  };
  Arm(Domain::Memory, 1, false);
  EXPECT_EQ(get(), E_OUTOFMEMORY);
  Disarm();
  EXPECT_EQ(factory, nullptr);
  EXPECT_EQ(LastLogLine(), "error\t\tDllGetClassObject: Out of Memory!");
  ASSERT_EQ(get(), S_OK);
  void* out = &driver;
  Arm(Domain::Memory, 1, false);
  {
    const InPlugin inside(true);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &out), E_OUTOFMEMORY);
  }
  Disarm();
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(PluginObject, StaysLoadedWhileInUse) {
  EXPECT_EQ(Plugin::CanUnloadNow(), S_FALSE);
  driver.ReleaseObject();
  EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);
  driver.LockServer();
  EXPECT_EQ(Plugin::CanUnloadNow(), S_FALSE);
  driver.UnlockServer();
  EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);
}

TEST_F(PluginObject, AnswersTwoInterfaces) {
  constexpr IID kIPrintOemUni = {
      0xC67EBBF1, 0x78BF, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
  constexpr IID kQuiet = {
      0x4E4A7747, 0xBC76, 0x4AED, {0xAC, 0xC8, 0xC7, 0x6A, 0xF2, 0x2A, 0xAD, 0x43}};
  NewLog();
  void* out = nullptr;
  for (const IID& known : {IID_IUnknown, IID_IPrintOemUni2}) {
    EXPECT_EQ(object->QueryInterface(known, &out), S_OK);
    EXPECT_EQ(out, object);
    EXPECT_EQ(object->Release(), 1u);
  }
  EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  for (const IID& unknown : {kIPrintOemUni, kQuiet}) {
    out = &driver;
    EXPECT_EQ(object->QueryInterface(unknown, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
  }
  EXPECT_EQ(NewLog(), Events{"warning\tRendering\tCOemUni2::QueryInterface called with unknown iid "
                             "C67EBBF178BF11D19480"});
  EXPECT_TRUE(driver.ReleaseObject());
}

TEST_F(PluginObject, InfoChecksTheBufferBeforeTheMode) {
  const std::string method = "\tRendering\tRenderer.COemUni2.GetInfo";
  const std::string small = " END (E_FAIL, cbSize too small or pBuffer is NULL)";
  enum Give { All, NoBuffer, NoNeeded };
  const struct {
    DWORD mode;
    Give give;
    DWORD size;
    HRESULT result;
    DWORD value, lastError;
    std::string name, level, end;
  } rows[] = {{1, All, 4, S_OK, 0x564C5831, 0, "OEMGI_GETSIGNATURE", "trace", " END (S_OK)"},
              {3, All, 9, S_OK, 1, 0, "OEMGI_GETVERSION", "trace", ": END (S_OK, version=1)"},
              {5, All, 4, E_NOTIMPL, 99, 0, "OEMGI_GETREQUESTEDHELPERINTERFACES", "info",
               " END (E_NOTIMPL)"},
              {2, All, 4, E_FAIL, 99, 87, "unknown:2", "error", ": END (E_FAIL, unknown dwMode 2)"},
              {4, All, 4, E_FAIL, 99, 87, "unknown:4", "error", ": END (E_FAIL, unknown dwMode 4)"},
              {1, NoBuffer, 4, E_FAIL, 99, 122, "OEMGI_GETSIGNATURE", "error", small},
              {3, All, 3, E_FAIL, 99, 122, "OEMGI_GETVERSION", "error", small},
              {77, NoBuffer, 4, E_FAIL, 99, 122, "unknown:77", "error", small},
              {1, NoNeeded, 4, E_FAIL, 99, 87, "OEMGI_GETSIGNATURE", "error",
               " END (E_FAIL, pcbNeeded is NULL)"}};
  for (const auto& row : rows) {
    DWORD value = 99, needed = 0;
    NewLog();
    SetLastError(0);
    EXPECT_EQ(object->GetInfo(row.mode, row.give == NoBuffer ? nullptr : &value, row.size,
                              row.give == NoNeeded ? nullptr : &needed),
              row.result);
    EXPECT_EQ(GetLastError(), row.lastError);
    EXPECT_EQ(needed, row.give == NoNeeded ? 0u : 4u);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(NewLog(), (Events{"trace" + method + " BEGIN (dwMode=" + row.name + ")",
                                row.level + method + row.end}));
  }
}

TEST_F(PluginObject, ImplementsThreeMethodsByTheirExactNames) {
  const std::string method = "trace\tRendering\tRenderer.COemUni2.GetImplementedMethod";
  const std::pair<std::string, HRESULT> rows[] = {{"CommandCallback", S_OK},
                                                  {"FilterGraphics", S_OK},
                                                  {"ImageProcessing", S_OK},
                                                  {"Compression", S_FALSE},
                                                  {"ImageProcessing2", S_FALSE},
                                                  {"imageProcessing", S_FALSE},
                                                  {"", S_FALSE},
                                                  {"\xE4", S_FALSE}};
  for (const auto& [name, result] : rows) {
    NewLog();
    EXPECT_EQ(object->GetImplementedMethod(const_cast<PSTR>(name.c_str())), result) << name;
    EXPECT_EQ(NewLog(),
              (Events{method + " BEGIN (pMethodName=" + (name == "\xE4" ? "\u00E4" : name) + ")",
                      method + (result == S_OK ? " END (S_OK)" : " END (S_FALSE)")}));
  }
  EXPECT_EQ(object->GetImplementedMethod(nullptr), S_FALSE);
}

TEST_F(PluginObject, KeepsTheFirstHelperAndWritesThroughIt) {
  const std::string prefix = "trace\tRendering\tRenderer.COemUni2.";
  Driver other;
  BYTE raster[] = {'a', 'b', 'c'};
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_FALSE);
  HollowDriver hollow;
  EXPECT_EQ(object->PublishDriverInterface(&hollow), E_FAIL);
  EXPECT_EQ(object->PublishDriverInterface(object), E_FAIL);
  EXPECT_EQ(LastLogLine(),
            "error\tRendering\tRenderer.COemUni2.PublishDriverInterface END (E_FAIL, "
            ">QueryInterface for IID_IPrintOemDriverUni failed)");
  NewLog();
  EXPECT_EQ(object->PublishDriverInterface(&driver), S_OK);
  EXPECT_EQ(NewLog(), (Events{prefix + "PublishDriverInterface BEGIN",
                              prefix + "PublishDriverInterface END (S_OK)"}));
  EXPECT_EQ(object->PublishDriverInterface(&other), S_OK);
  EXPECT_EQ(other.helperReferences, 0);
  NewLog();
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_OK);
  EXPECT_EQ(object->FilterGraphics(nullptr, nullptr, 0), S_OK);
  driver.FailWriteNumber(1, WriteFault::Short);
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_FALSE);
  const std::string begin = prefix + "FilterGraphics BEGIN", end = prefix + "FilterGraphics END ";
  EXPECT_EQ(NewLog(), (Events{begin, end + "(S_OK)", begin, end + "(S_OK)", begin,
                              end + "(S_FALSE, DrvWriteSpoolBuf failed)"}));
  EXPECT_EQ(driver.writes, (Events{"abc", "", "abc"}));
  driver.DisableDriver();
  EXPECT_EQ(driver.helperReferences, 0);
  driver.ReleaseObject();
  EXPECT_EQ(driver.helperReferences, 0);
  EXPECT_TRUE(driver.CreateObject() && driver.PublishHelper());
  driver.ReleaseObject();
  EXPECT_EQ(driver.helperReferences, 0);
}

TEST_F(PluginObject, NamesTheMethodWhoseArgumentIsMissing) {
  const std::string end = "END (E_FAIL, invalid argument)";
  const auto refused = [&](HRESULT hr, const std::string& method, int argument) {
    EXPECT_EQ(hr, E_FAIL) << method << argument;
    EXPECT_EQ(GetLastError(), 87u) << method << argument;
    EXPECT_EQ(LastLogLine(), "error\tRendering\t" + method + end) << argument;
    SetLastError(0);
  };
  refused(object->EnableDriver(0x10000, sizeof(DRVENABLEDATA), nullptr),
          "Renderer.COemUni2.EnableDriver ", 0);
  DEVOBJ none = {}, device = {};
  device.pPublicDM = &driver.publicDevmode;
  GDIINFO info = {};
  DEVINFO devinfo = {};
  DRVENABLEDATA own = {0x10000, 1, nullptr}, nothing = {0x10000, 0, nullptr};
  PDEVOEM state = nullptr;
  for (int i = 0; i < 7; ++i) {  // each argument once
    refused(object->EnablePDEV(i == 0   ? nullptr
                               : i == 1 ? &none
                                        : &device,
                               nullptr, 0, nullptr, 0, i == 2 ? nullptr : &info, 0,
                               i == 3 ? nullptr : &devinfo,
                               i == 4   ? nullptr
                               : i == 5 ? &own
                                        : &nothing,
                               i == 6 ? nullptr : &state),
            "Renderer.COemUni2.EnablePDEV ", i);
    EXPECT_EQ(state, nullptr);
  }
  ASSERT_TRUE(driver.Open());
  DEVOBJ settled = driver.Device(), unsettled = settled;
  unsettled.pPublicDM = nullptr;
  BITMAPINFOHEADER header = {40, 1, 1, 1, 24, 0, 4, 0, 0, 0, 0};
  BYTE pixels[4] = {};
  IPPARAMS parameters = {sizeof parameters, {}, nullptr, FALSE};
  for (int i = 0; i < 6; ++i) {
    PBYTE out = pixels;
    refused(object->ImageProcessing(i == 0   ? &none
                                    : i == 1 ? &unsettled
                                             : &settled,
                                    i == 2 ? nullptr : pixels, i == 3 ? nullptr : &header, nullptr,
                                    5, i == 4 ? nullptr : &parameters, i == 5 ? nullptr : &out),
            "ImageProcessing ", i);
    EXPECT_EQ(out, i == 5 ? pixels : nullptr);
  }
}

TEST_F(PluginObject, DeclinesWithTwoLines) {
  const std::pair<std::string, HRESULT> rows[] = {
      {"DriverDMS", object->DriverDMS(nullptr, nullptr, 0, nullptr)},
      {"HalftonePattern", object->HalftonePattern(nullptr, nullptr, 0, 0, 0, 0, nullptr, 0)},
      {"MemoryUsage", object->MemoryUsage(nullptr, nullptr)},
      {"TTYGetInfo", object->TTYGetInfo(nullptr, 0, nullptr, 0, nullptr)},
      {"DownloadFontHeader", object->DownloadFontHeader(nullptr, nullptr, nullptr)},
      {"DownloadCharGlyph", object->DownloadCharGlyph(nullptr, nullptr, 0, nullptr, nullptr)},
      {"TTDownloadMethod", object->TTDownloadMethod(nullptr, nullptr, nullptr)},
      {"OutputCharStr", object->OutputCharStr(nullptr, nullptr, 0, 0, nullptr)},
      {"SendFontCmd", object->SendFontCmd(nullptr, nullptr, nullptr)},
      {"TextOutAsBitmap", object->TextOutAsBitmap(nullptr, nullptr, nullptr, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, nullptr, 0)},
      {"WritePrinter", object->WritePrinter(nullptr, nullptr, 0, nullptr)}};
  Events expected;
  for (const auto& [name, result] : rows) {
    EXPECT_EQ(result, E_NOTIMPL) << name;
    expected.push_back("trace\tRendering\tRenderer.COemUni2." + name + " BEGIN");
    expected.push_back("trace\tRendering\tRenderer.COemUni2." + name + " END (E_NOTIMPL)");
  }
  EXPECT_EQ(NewLog(), expected);
  INT result = 5;
  EXPECT_EQ(object->CommandCallback(nullptr, 1, 0, nullptr, &result), S_OK);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(object->CommandCallback(nullptr, 1, 0, nullptr, nullptr), S_OK);
  EXPECT_EQ(object->Compression(nullptr, nullptr, nullptr, 0, 0, nullptr), E_NOTIMPL);
  EXPECT_EQ(NewLog(), Events{});
}

TEST_F(PluginObject, DefaultsAreThoseOfTheLibrary) {
  OEMDEV expected = {};
  expected.header = {2708, 0x564C5831, 1};
  SetFields(expected,
            "dwSensorType=1 dwGapDistance=3000 dwSpeed=100 dwColorMode=1 crHighlightColor=255 "
            "nColorTolerance=25 wDitherer=1");
  DevModeCall call(nullptr, *driver.devmode);
  EXPECT_EQ(object->DevMode(OEMDM_DEFAULT, &call.block), S_OK);
  EXPECT_EQ(std::memcmp(driver.devmode.get(), &expected, sizeof expected), 0);
}

TEST(PluginModule, LeavesTheProcessWhenItIsUnloaded) {
  const auto runsGdiPlus = [] {
    Gdiplus::GpBitmap* bitmap = nullptr;
    return Gdiplus::DllExports::GdipCreateBitmapFromScan0(1, 1, 0, PixelFormat24bppRGB, nullptr,
                                                          &bitmap) == Gdiplus::Ok &&
           Gdiplus::DllExports::GdipDisposeImage(bitmap) == Gdiplus::Ok;
  };
  const Gdiplus::GdiplusStartupInput input;
  for (const bool disables : {true, false}) {
    ULONG_PTR hostToken = 0;
    {
      const Plugin plugin;
      Driver driver;
      EXPECT_TRUE(driver.CreateObject());
      EXPECT_EQ(driver.Object()->DisableDriver(), S_OK);  // nothing to stop yet
      EXPECT_TRUE(driver.EnableDriver());
      EXPECT_TRUE(driver.EnableDriver());
      driver.DisableDriver();
      EXPECT_TRUE(runsGdiPlus());
      if (disables) driver.DisableDriver();
      EXPECT_EQ(runsGdiPlus(), !disables);
      if (disables) Gdiplus::GdiplusStartup(&hostToken, &input, nullptr);
      driver.driverStarts = 0;  // the module's end stops what still runs, but not the host's GDI+
    }
    EXPECT_FALSE(Plugin::IsLoaded());
    EXPECT_FALSE(ConfigsCache::ReleaseInstance());  // the module has let go of it
    EXPECT_EQ(runsGdiPlus(), disables);
    Gdiplus::GdiplusShutdown(hostToken);
  }
}

}  // namespace
