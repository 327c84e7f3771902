#include <array>

#include "tests/driver/job_test.h"

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
    EXPECT_TRUE(driver.EnableDevice());
    const GDIINFO& info = driver.info;
    return {static_cast<LONG>(info.ulHorzSize),
            static_cast<LONG>(info.ulVertSize),
            static_cast<LONG>(info.ulHorzRes),
            static_cast<LONG>(info.ulVertRes),
            info.szlPhysSize.cx,
            info.szlPhysSize.cy,
            info.ptlPhysOffset.x,
            info.ptlPhysOffset.y};
  }
  // The last lines about paper, without the prefix that all but one of them have.
  Events PaperLines(std::size_t count) const {
    Events lines;
    for (std::string line : home.LogLines()) {
      const std::size_t category = line.find("\tRendering#Paper\t");
      if (category == line.npos) continue;
      line.replace(category, 17, ": ");
      const std::string prefix = "Renderer.COemUni2.EnablePDEV: ";
      if (line.find(prefix) != line.npos) line.erase(line.find(prefix), prefix.size());
      lines.push_back(line);
    }
    return {lines.end() - count, lines.end()};
  }
};

TEST_F(DeviceContext, GeometryIsFittedAndLogged) {
  Set("dwUnprintableLeft=2000 dwUnprintableRight=1000 dwUnprintableBottom=500");
  driver.given.ulHorzSize = static_cast<ULONG>(-97199);  // within 199 micrometres
  driver.given.ulVertSize = static_cast<ULONG>(-59300);  // 200 off
  driver.given.szlPhysSize = {1183, 711};
  EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-97199, -59500, 1146, 703, 1183, 708, 23, 0}));
  EXPECT_EQ(PaperLines(4),
            (Events{"trace: DM.PaperSize=0, DM.PaperWidth=1000, DM.PaperLength=600",
                    "warning: no papers defined. using values from settings dialog for GDIINFO",
                    "trace:  GDI-Info modifications: VertSize:59300 => 59500, HorzRes:0 => 1146, "
                    "VertRes:0 => 703, PhysSizeCy:711 => 708, PhysOffsetX:0 => 23, ",
                    "trace: GDI-Info values: Orientation=1 Size=(97199/59500), Res=(1146/703), "
                    "PhysSize=(1183/708), PhysOffset=(23/0)."}));
}

TEST_F(DeviceContext, LandscapeTurnsPaperAndMargins) {
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  Set("dwUnprintableLeft=2000 dwUnprintableRight=1000 dwUnprintableBottom=500");
  // Turned: left 0, right 500, top 1000, bottom 2000.
  EXPECT_EQ(Geometry(), (std::array<LONG, 8>{-59500, -97000, 703, 1146, 708, 1181, 0, 11}));
  EXPECT_EQ(PaperLines(3)[0],
            "warning: switching paper dimensions and NPAs because of landscape mode");
  EXPECT_EQ(PaperLines(3)[1],
            "trace:  GDI-Info modifications: HorzSize:0 => 59500, VertSize:0 => 97000, "
            "HorzRes:0 => 703, VertRes:0 => 1146, PhysSizeCx:0 => 708, PhysSizeCy:0 => 1181, "
            "PhysOffsetY:0 => 11, ");
}

TEST_F(DeviceContext, SelectedStockGivesTheMargins) {
  home.WriteFile(
      "registry.reg",
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Veltrix Printer "
      "Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks\\A]\n\"DisplayName\"=\"Gl\xC3\xA4nzend\"\n\"Id\"="
      "\"{00000001-0002-0003-0405-060708090a0b}\"\n\"UnprintableLeft\"=dword:00001388\n");
  driver.devmode->guidSelectedStock = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(Geometry()[6], 59);
  EXPECT_EQ(PaperLines(3)[0], "trace: using paper 'Gl\xC3\xA4nzend' for GDIINFO");
  driver.devmode->guidSelectedStock.Data1 = 9;
  EXPECT_EQ(Geometry()[6], 59);
  EXPECT_EQ(PaperLines(3)[0],
            "warning: no paper selected. using first defined paper 'Gl\xC3\xA4nzend' for GDIINFO");
}

}  // namespace
