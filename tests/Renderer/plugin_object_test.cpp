#include "tests/driver/job_test.h"

namespace {

constexpr IID kIPrintOemUni = {
    0xC67EBBF1, 0x78BF, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};

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
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
  out = &driver;
  EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &out), E_NOINTERFACE);
  EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(PluginObject, AnswersTwoInterfaces) {
  EXPECT_EQ(Plugin::CanUnloadNow(), S_FALSE);
  void* out = nullptr;
  EXPECT_EQ(object->QueryInterface(IID_IUnknown, &out), S_OK);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(object->QueryInterface(kIPrintOemUni, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(LastLogLine(),
            "warning\tRendering\tCOemUni2::QueryInterface called with unknown iid "
            "C67EBBF178BF11D19480");
  const std::size_t lines = home.LogLines().size();
  constexpr IID kQuiet = {
      0x4E4A7747, 0xBC76, 0x4AED, {0xAC, 0xC8, 0xC7, 0x6A, 0xF2, 0x2A, 0xAD, 0x43}};
  EXPECT_EQ(object->QueryInterface(kQuiet, &out), E_NOINTERFACE);
  EXPECT_EQ(home.LogLines().size(), lines);
  EXPECT_TRUE(driver.ReleaseObject());
}

TEST_F(PluginObject, InfoChecksTheBufferBeforeTheMode) {
  const struct {
    DWORD mode, size;
    HRESULT result;
    DWORD value, lastError;
    const char *level, *end;
  } rows[] = {
      {1, 4, S_OK, 0x564C5831, 0, "trace", " END (S_OK)"},
      {3, 4, S_OK, 1, 0, "trace", ": END (S_OK, version=1)"},
      {5, 4, E_NOTIMPL, 99, 0, "info", " END (E_NOTIMPL)"},
      {2, 4, E_FAIL, 99, 87, "error", ": END (E_FAIL, unknown dwMode 2)"},
      {77, 3, E_FAIL, 99, 122, "error", " END (E_FAIL, cbSize too small or pBuffer is NULL)"}};
  for (const auto& row : rows) {
    DWORD value = 99, needed = 0;
    SetLastError(0);
    EXPECT_EQ(object->GetInfo(row.mode, &value, row.size, &needed), row.result) << row.mode;
    EXPECT_EQ(needed, 4u);
    EXPECT_EQ(value, row.value) << row.mode;
    EXPECT_EQ(GetLastError(), row.lastError) << row.mode;
    EXPECT_EQ(LastLogLine(),
              row.level + ("\tRendering\tRenderer.COemUni2.GetInfo" + std::string(row.end)));
  }
  EXPECT_EQ(object->GetInfo(1, nullptr, 4, nullptr), E_FAIL);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST_F(PluginObject, ImplementsThreeMethodsByTheirExactNames) {
  const std::pair<const char*, HRESULT> rows[] = {{"CommandCallback", S_OK},
                                                  {"FilterGraphics", S_OK},
                                                  {"ImageProcessing", S_OK},
                                                  {"Compression", S_FALSE},
                                                  {"ImageProcessing2", S_FALSE},
                                                  {"imageProcessing", S_FALSE},
                                                  {"", S_FALSE},
                                                  {"\xE4", S_FALSE}};
  for (const auto& [name, result] : rows) {
    EXPECT_EQ(object->GetImplementedMethod(const_cast<PSTR>(name)), result) << name;
  }
  const auto lines = home.LogLines();
  EXPECT_EQ(lines[lines.size() - 2],
            "trace\tRendering\tRenderer.COemUni2.GetImplementedMethod BEGIN (pMethodName=\u00E4)");
  EXPECT_EQ(object->GetImplementedMethod(nullptr), S_FALSE);
}

TEST_F(PluginObject, KeepsTheFirstHelperAndWritesThroughIt) {
  Driver other;
  BYTE raster[] = {'a', 'b', 'c'};
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_FALSE);
  EXPECT_EQ(object->PublishDriverInterface(object), E_FAIL);
  EXPECT_EQ(LastLogLine(),
            "error\tRendering\tRenderer.COemUni2.PublishDriverInterface END (E_FAIL, "
            ">QueryInterface for IID_IPrintOemDriverUni failed)");
  EXPECT_EQ(object->PublishDriverInterface(&driver), S_OK);
  EXPECT_EQ(object->PublishDriverInterface(&other), S_OK);
  EXPECT_EQ(other.helperReferences, 0);
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_OK);
  EXPECT_EQ(object->FilterGraphics(nullptr, nullptr, 0), S_OK);
  driver.FailWriteNumber(1, WriteFault::Short);
  EXPECT_EQ(object->FilterGraphics(nullptr, raster, 3), S_FALSE);
  EXPECT_EQ(LastLogLine(),
            "trace\tRendering\tRenderer.COemUni2.FilterGraphics END (S_FALSE, DrvWriteSpoolBuf "
            "failed)");
  EXPECT_EQ(driver.writes, (std::vector<std::string>{"abc", "", "abc"}));
  driver.ReleaseObject();
  EXPECT_EQ(driver.helperReferences, 0);
}

TEST_F(PluginObject, DeclinesWithTwoLines) {
  const std::size_t before = home.LogLines().size();
  INT result = 5;
  EXPECT_EQ(object->CommandCallback(nullptr, 1, 0, nullptr, &result), S_OK);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(object->Compression(nullptr, nullptr, nullptr, 0, 0, nullptr), E_NOTIMPL);
  EXPECT_EQ(home.LogLines().size(), before);
  EXPECT_EQ(object->DriverDMS(nullptr, nullptr, 0, nullptr), E_NOTIMPL);
  EXPECT_EQ(object->WritePrinter(nullptr, nullptr, 0, nullptr), E_NOTIMPL);
  const auto lines = home.LogLines();
  ASSERT_EQ(lines.size(), before + 4);
  EXPECT_EQ(lines[before], "trace\tRendering\tRenderer.COemUni2.DriverDMS BEGIN");
  EXPECT_EQ(lines[before + 3], "trace\tRendering\tRenderer.COemUni2.WritePrinter END (E_NOTIMPL)");
}

TEST(PluginModule, LeavesTheProcessWhenItIsUnloaded) {
  {
    const Plugin plugin;
    Driver driver;
    EXPECT_TRUE(driver.CreateObject());
    EXPECT_TRUE(driver.EnableDriver());
    EXPECT_TRUE(driver.EnableDevice());
    EXPECT_EQ(Plugin::CanUnloadNow(), S_FALSE);
    EXPECT_TRUE(driver.DisableDevice());
    EXPECT_TRUE(driver.DisableDriver());
    EXPECT_TRUE(driver.ReleaseObject());
    EXPECT_EQ(Plugin::CanUnloadNow(), S_OK);
  }
  EXPECT_FALSE(Plugin::IsLoaded());
}

}  // namespace
