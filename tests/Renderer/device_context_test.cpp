#include <dlfcn.h>

#include <array>

#include "config/device_state.h"
#include "platform/palette.h"
#include "tests/driver/job_test.h"
#include "tests/torture/faults.h"

namespace {

std::vector<ULONG> createdPalettes;  // their modes

}  // namespace

// Takes the place of the graphics engine's function, notes the mode and passes the call on.
PLATFORM_API HPALETTE APIENTRY EngCreatePalette(ULONG iMode, ULONG cColors, ULONG* pulColors,
                                                FLONG flRed, FLONG flGreen, FLONG flBlue) {
  createdPalettes.push_back(iMode);
  static const auto own =
      reinterpret_cast<decltype(&EngCreatePalette)>(dlsym(RTLD_NEXT, "EngCreatePalette"));
  return own(iMode, cColors, pulColors, flRed, flGreen, flBlue);
}

namespace {

class DeviceContext : public JobTest {
 protected:
  DeviceContext() {
    driver.dpi = 300;
    driver.publicDevmode.dmPaperWidth = 1000;
    driver.publicDevmode.dmPaperLength = 600;
  }
  // What a new context makes of the driver's information: size, resolution, physical size, offset.
  std::array<LONG, 8> Geometry() {
    NewLog();
    EXPECT_TRUE(driver.EnableDevice());
    const GDIINFO& info = driver.info;
    const std::array<LONG, 8> geometry = {static_cast<LONG>(info.ulHorzSize),
                                          static_cast<LONG>(info.ulVertSize),
                                          static_cast<LONG>(info.ulHorzRes),
                                          static_cast<LONG>(info.ulVertRes),
                                          info.szlPhysSize.cx,
                                          info.szlPhysSize.cy,
                                          info.ptlPhysOffset.x,
                                          info.ptlPhysOffset.y};
    const auto& state = *static_cast<const COemPDEV*>(driver.Device().pdevOEM);
    EXPECT_EQ(geometry,
              (std::array<LONG, 8>{state.gdiHorzSize, state.gdiVertSize, state.gdiHorzRes,
                                   state.gdiVertRes, state.gdiPhysSizeCx, state.gdiPhysSizeCy,
                                   state.gdiPhysOffsetX, state.gdiPhysOffsetY}));
    EXPECT_EQ(state.hDevicePalette, driver.DeviceInfo().hpalDefault);
    return geometry;
  }
  // The new lines about paper, without the prefix that all but one of them have.
  Events PaperLines() {
    Events lines;
    for (std::string line : NewLog()) {
      const std::size_t category = line.find("\tRendering#Paper\t");
      if (category == line.npos) continue;
      line.replace(category, 17, ": ");
      const std::string prefix = "Renderer.COemUni2.EnablePDEV: ";
      if (line.find(prefix) != line.npos) line.erase(line.find(prefix), prefix.size());
      lines.push_back(line);
    }
    return lines;
  }
};

const std::string kPaper = "trace: DM.PaperSize=0, DM.PaperWidth=1000, DM.PaperLength=600";
const std::string kNoStock =
    "warning: no papers defined. using values from settings dialog for GDIINFO";

TEST_F(DeviceContext, GeometryIsFittedAndLogged) {
  Set("dwUnprintableLeft=2000 dwUnprintableRight=1000 dwUnprintableBottom=500");
  driver.given.ulHorzSize = static_cast<ULONG>(-97199);  // within 199 micrometres
  driver.given.ulVertSize = static_cast<ULONG>(-59300);  // 200 off
  driver.given.szlPhysSize = {1183, 711};
  EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-97199, -59500, 1146, 703, 1183, 708, 23, 0}));
  EXPECT_EQ(PaperLines(),
            (Events{kPaper, kNoStock,
                    "trace:  GDI-Info modifications: VertSize:59300 => 59500, HorzRes:0 => 1146, "
                    "VertRes:0 => 703, PhysSizeCy:711 => 708, PhysOffsetX:0 => 23, ",
                    "trace: GDI-Info values: Orientation=1 Size=(97199/59500), Res=(1146/703), "
                    "PhysSize=(1183/708), PhysOffset=(23/0)."}));
  driver.given = driver.info;
  Geometry();
  EXPECT_EQ(PaperLines().size(), 3u);  // there is nothing to change
}

TEST_F(DeviceContext, LandscapeTurnsPaperAndMargins) {
  Set("dwUnprintableLeft=2000 dwUnprintableRight=1000 dwUnprintableBottom=500");
  for (const SHORT orientation : {2, 3, 0}) {
    driver.publicDevmode.dmOrientation = orientation;
    // Turned: left 0, right 500, top 1000, bottom 2000.
    EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-59500, -97000, 703, 1146, 708, 1181, 0, 11}));
    EXPECT_EQ(PaperLines(),
              (Events{kPaper, kNoStock,
                      "warning: switching paper dimensions and NPAs because of landscape mode",
                      "trace:  GDI-Info modifications: HorzSize:0 => 59500, VertSize:0 => 97000, "
                      "HorzRes:0 => 703, VertRes:0 => 1146, PhysSizeCx:0 => 708, PhysSizeCy:0 => "
                      "1181, PhysOffsetY:0 => 11, ",
                      "trace: GDI-Info values: Orientation=" + std::to_string(orientation) +
                          " Size=(59500/97000), Res=(703/1146), PhysSize=(708/1181), "
                          "PhysOffset=(0/11)."}));
  }
}

TEST_F(DeviceContext, SelectedStockGivesTheMargins) {
  home.WriteFile(
      "registry.reg",
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Veltrix Printer "
      "Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks\\A]\n\"DisplayName\"=\"Gl\xC3\xA4nzend\"\n\"Id\"="
      "\"{00000001-0002-0003-0405-060708090a0b}\"\n\"UnprintableLeft\"=dword:000003e8\n"
      "\"UnprintableRight\"=dword:000007d0\n\"UnprintableTop\"=dword:00000fa0\n"
      "\"UnprintableBottom\"=dword:00001f40\n");
  driver.devmode->guidSelectedStock = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  for (const char* line :
       {"trace: using paper 'Gl\xC3\xA4nzend' for GDIINFO",
        "warning: no paper selected. using first defined paper 'Gl\xC3\xA4nzend' for GDIINFO"}) {
    EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-97000, -48000, 1146, 567, 1181, 708, 11, 47}));
    EXPECT_EQ(PaperLines()[1], line);
    driver.devmode->guidSelectedStock.Data1 = 9;
  }
}

TEST_F(DeviceContext, WithoutARecordThereAreNoMargins) {
  Set("dwUnprintableLeft=2000 dwUnprintableTop=1000");
  const auto record = std::move(driver.devmode);
  EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-100000, -59900, 1181, 708, 1181, 708, 0, 0}));
  EXPECT_EQ(PaperLines().size(), 3u);  // neither a stock nor the lack of one
}

TEST_F(DeviceContext, OlderRecordIsConvertedFirst) {
  driver.devmode->header.dwVersion = 0;
  driver.devmode->dwRotation = 4;
  Geometry();
  EXPECT_EQ(driver.devmode->header.dwVersion, 1u);
  EXPECT_EQ(driver.devmode->dwRotation, 0u);
}

TEST_F(DeviceContext, OtherDepthsAreReportedAndKeepTheirPalette) {
  createdPalettes.clear();
  Geometry();
  EXPECT_EQ(createdPalettes, std::vector<ULONG>{PAL_BGR});
  driver.paletteColors = 16;
  createdPalettes.clear();
  Geometry();
  EXPECT_EQ(createdPalettes, std::vector<ULONG>{PAL_INDEXED});  // the driver's own
  EXPECT_EQ(PaperLines()[1], "error: BPP != 24 !!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!");
}

TEST_F(DeviceContext, DriverIsGivenSixHooks) {
  const std::string prefix = "trace\tRendering\tRenderer.COemUni2.";
  NewLog();
  EXPECT_TRUE(driver.EnableDriver() && driver.DisableDriver());
  EXPECT_EQ(NewLog(),
            (Events{prefix + "EnableDriver BEGIN", prefix + "EnableDriver END (S_OK)",
                    prefix + "DisableDriver BEGIN", prefix + "DisableDriver END (S_OK)"}));
  EXPECT_EQ(driver.Hooks().iDriverVersion, 0x10000u);
  std::vector<ULONG> indexes;
  for (ULONG i = 0; i < driver.Hooks().c; ++i) {
    indexes.push_back(driver.Hooks().pdrvfn[i].iFunc);
  }
  EXPECT_EQ(indexes, (std::vector<ULONG>{35, 34, 33, 32, 57, 58}));
}

TEST_F(DeviceContext, NoMemoryMeansNoDevice) {
  const std::string prefix = "trace\tRendering\tRenderer.COemUni2.";
  NewLog();
  EXPECT_TRUE(driver.EnableDevice());
  Events lines = NewLog();
  EXPECT_EQ((Events{lines[0], lines[1], lines[2], lines.back()}),
            (Events{prefix + "DisablePDEV BEGIN", prefix + "DisablePDEV END (S_OK)",
                    prefix + "EnablePDEV BEGIN", prefix + "EnablePDEV END (S_OK)"}));
  int refused = 0;
  bool failed = true;
  for (long n = 1; failed; ++n) {
    driver.DisableDevice();
    Arm(Domain::Memory, n, false);
    const bool enabled = driver.EnableDevice();
    Disarm();
    failed = HasFailed();
    EXPECT_EQ(driver.HasDevice(), enabled);
    if (enabled) continue;
    ++refused;
    EXPECT_EQ(LastLogLine(),
              "error\tRendering\tRenderer.COemUni2.EnablePDEV END (E_FAIL, no memory for "
              "pOemPDEV)");
  }
  EXPECT_GT(refused, 0);

  COemPDEV fresh;
  DEVOBJ none = {}, other = {};
  other.pdevOEM = &fresh;
  IPrintOemUni2* object = driver.Object();
  EXPECT_TRUE(driver.StartDocument() && driver.StartPage());
  EXPECT_EQ(object->ResetPDEV(&none, &other), S_OK);  // there is nothing to take over
  EXPECT_EQ(object->ResetPDEV(&driver.Device(), &none), S_OK);
}

}  // namespace
