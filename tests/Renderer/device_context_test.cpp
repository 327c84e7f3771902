#include <gtest/gtest.h>

#include <array>
#include <bit>

#include "Renderer/oem_uni2.h"
#include "Renderer/page_geometry.h"
#include "config/device_state.h"
#include "platform/palette.h"
#include "platform/spooler.h"
#include "tests/Renderer/logged_home.h"
#include "tests/support/device.h"

namespace {

TEST(PageGeometry, FollowsPaperMarginsAndResolution) {
  struct Row {
    LONG width, length;
    Margins margins;
    ULONG dpi;
    std::array<LONG, 8> expected;  // printable in micrometres, in pixels, physical, offset
  };
  const Row rows[] = {
      {100000, 60000, {2000, 1000, 0, 500}, 300, {97000, 59500, 1146, 703, 1181, 708, 23, 0}},
      {10000, 10000, {90000, 1000, 0, 20000}, 300, {0, 0, 0, 0, 118, 118, 118, 0}},
      // Margins whose sum wraps to exactly the paper: nothing is left, and nothing is moved.
      {10000, 10000, {90000, 0u - 80000, 0, 10000}, 300, {0, 0, 0, 0, 118, 118, 1062, 0}},
      {101600, 152400, {0, 0, 0, 0}, 203, {101600, 152400, 812, 1218, 812, 1218, 0, 0}},
      {50000, 30000, {0, 0, 0, 0}, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
      {25400, 50800, {0, 0, 0, 0}, 1, {25400, 50800, 1, 2, 1, 2, 0, 0}},
      // Half a step of 100 micrometres: each single-precision step counts.
      {1015300, 1015300, {0, 0, 0, 0}, 203, {1015200, 1015200, 8114, 8114, 8114, 8114, 0, 0}},
  };
  for (const Row& row : rows) {
    const auto got = std::bit_cast<std::array<LONG, 8>>(
        ComputePageGeometry(row.width, row.length, row.margins, row.dpi, row.dpi));
    EXPECT_EQ(got, row.expected) << row.width << " at " << row.dpi;
  }
}

class DeviceContext : public ::testing::Test {
 protected:
  DeviceContext() {
    device.object.pdevOEM = nullptr;
    device.publicDevmode.dmPaperWidth = 1000;
    device.publicDevmode.dmPaperLength = 600;
    info.cBitsPixel = 24;
    info.ulLogPixelsX = info.ulLogPixelsY = 300;
    WCHAR name[] = WTEXT("Label Printer");
    OpenPrinterW(name, &device.object.hPrinter, nullptr);
  }
  ~DeviceContext() override {
    plugin->DisablePDEV(&device.object);
    EngDeletePalette(devInfo.hpalDefault);
    plugin->Release();
    ClosePrinter(device.object.hPrinter);
  }
  // Enables the device context and returns its state.
  COemPDEV* Enable() {
    EXPECT_EQ(plugin->EnablePDEV(&device.object, nullptr, 0, nullptr, sizeof info, &info,
                                 sizeof devInfo, &devInfo, &own, &device.object.pdevOEM),
              S_OK);
    return DeviceState(&device.object);
  }
  // Enables it and returns what the state keeps: size, resolution, physical size, offset.
  std::vector<LONG> EnabledGeometry() {
    const COemPDEV& state = *Enable();
    return {state.gdiHorzSize,   state.gdiVertSize,   state.gdiHorzRes,     state.gdiVertRes,
            state.gdiPhysSizeCx, state.gdiPhysSizeCy, state.gdiPhysOffsetX, state.gdiPhysOffsetY};
  }
  void SetMargins() {
    device.Set("dwUnprintableLeft=2000 dwUnprintableRight=1000 dwUnprintableBottom=500");
  }
  // The lines about paper, without the prefix that all but one of them have.
  std::vector<std::string> PaperLines() const {
    std::vector<std::string> lines;
    for (std::string line : home.LogLines()) {
      const std::size_t category = line.find("\tRendering#Paper\t");
      if (category == line.npos) continue;
      line.replace(category, 17, ": ");
      const std::string prefix = "Renderer.COemUni2.EnablePDEV: ";
      if (line.find(prefix) != line.npos) line.erase(line.find(prefix), prefix.size());
      lines.push_back(line);
    }
    return lines;
  }
  LoggedHome home;
  Device device;
  GDIINFO info = {};
  DEVINFO devInfo = {};
  DRVENABLEDATA own = {};
  COemUni2* plugin = new COemUni2;
};

TEST_F(DeviceContext, GeometryIsFittedAndLogged) {
  SetMargins();
  info.ulHorzSize = static_cast<ULONG>(-97199);  // within 199 micrometres
  info.ulVertSize = static_cast<ULONG>(-59300);  // 200 off
  info.szlPhysSize = {1183, 711};
  EXPECT_EQ(EnabledGeometry(), (std::vector<LONG>{-97199, -59500, 1146, 703, 1183, 708, 23, 0}));
  EXPECT_EQ(PaperLines(),
            (std::vector<std::string>{
                "trace: DM.PaperSize=0, DM.PaperWidth=1000, DM.PaperLength=600",
                "warning: no papers defined. using values from settings dialog for GDIINFO",
                "trace:  GDI-Info modifications: VertSize:59300 => 59500, HorzRes:0 => 1146, "
                "VertRes:0 => 703, PhysSizeCy:711 => 708, PhysOffsetX:0 => 23, ",
                "trace: GDI-Info values: Orientation=1 Size=(97199/59500), Res=(1146/703), "
                "PhysSize=(1183/708), PhysOffset=(23/0)."}));
  EXPECT_EQ(DeviceState(&device.object)->hDevicePalette, devInfo.hpalDefault);
  EXPECT_NE(devInfo.hpalDefault, nullptr);
}

TEST_F(DeviceContext, LandscapeTurnsPaperAndMargins) {
  device.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  SetMargins();  // turned: left 0, right 500, top 1000, bottom 2000
  EXPECT_EQ(EnabledGeometry(), (std::vector<LONG>{-59500, -97000, 703, 1146, 708, 1181, 0, 11}));
  EXPECT_EQ(PaperLines()[2],
            "warning: switching paper dimensions and NPAs because of landscape mode");
  EXPECT_EQ(PaperLines()[3],
            "trace:  GDI-Info modifications: HorzSize:0 => 59500, VertSize:0 => 97000, "
            "HorzRes:0 => 703, VertRes:0 => 1146, PhysSizeCx:0 => 708, PhysSizeCy:0 => 1181, "
            "PhysOffsetY:0 => 11, ");
}

TEST_F(DeviceContext, SelectedStockGivesTheMargins) {
  home.WriteFile(
      "registry.reg",
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Veltrix Printer "
      "Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks\\A]\n\"DisplayName\"=\"Gl\xC3\xA4nzend\"\n\"Id\"="
      "\"{00000001-0002-0003-0405-060708090a0b}\"\n"
      "\"UnprintableLeft\"=dword:00001388\n");
  device.devmode.guidSelectedStock = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(Enable()->gdiPhysOffsetX, 59);
  EXPECT_EQ(PaperLines()[1], "trace: using paper 'Gl\xC3\xA4nzend' for GDIINFO");
  plugin->DisablePDEV(&device.object);
  EngDeletePalette(devInfo.hpalDefault);
  device.devmode.guidSelectedStock.Data1 = 9;
  EXPECT_EQ(Enable()->gdiPhysOffsetX, 59);
  EXPECT_EQ(PaperLines()[5],
            "warning: no paper selected. using first defined paper 'Gl\xC3\xA4nzend' for GDIINFO");
}

}  // namespace
