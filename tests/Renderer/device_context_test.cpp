#include <gtest/gtest.h>

#include "Renderer/oem_uni2.h"
#include "Renderer/page_geometry.h"
#include "config/device_state.h"
#include "config/process.h"
#include "platform/palette.h"
#include "platform/spooler.h"
#include "tests/support/device.h"
#include "tests/support/temp_home.h"

namespace {

TEST(PageGeometry, FollowsPaperMarginsAndResolution) {
  struct Row {
    LONG width, length;
    Margins margins;
    ULONG dpi;
    PageGeometry expected;
  };
  const Row rows[] = {
      {100000, 60000, {2000, 1000, 0, 500}, 300, {97000, 59500, 1146, 703, 1181, 708, 23, 0}},
      {10000, 10000, {90000, 1000, 0, 20000}, 300, {0, 0, 0, 0, 118, 118, 118, 0}},
      {101600, 152400, {0, 0, 0, 0}, 203, {101600, 152400, 812, 1218, 812, 1218, 0, 0}},
      {50000, 30000, {0, 0, 0, 0}, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
      {25400, 50800, {0, 0, 0, 0}, 1, {25400, 50800, 1, 2, 1, 2, 0, 0}},
      // Half a step of 100 micrometres: each single-precision step counts.
      {1015300, 1015300, {0, 0, 0, 0}, 203, {1015200, 1015200, 8114, 8114, 8114, 8114, 0, 0}},
  };
  for (const Row& row : rows) {
    const PageGeometry got =
        ComputePageGeometry(row.width, row.length, row.margins, row.dpi, row.dpi);
    const PageGeometry& want = row.expected;
    EXPECT_EQ(std::tie(got.printableWidthUm, got.printableHeightUm, got.printableWidthPx,
                       got.printableHeightPx, got.physicalWidthPx, got.physicalHeightPx,
                       got.offsetXPx, got.offsetYPx),
              std::tie(want.printableWidthUm, want.printableHeightUm, want.printableWidthPx,
                       want.printableHeightPx, want.physicalWidthPx, want.physicalHeightPx,
                       want.offsetXPx, want.offsetYPx))
        << row.width << " at " << row.dpi;
  }
}

class DeviceContext : public ::testing::Test {
 protected:
  DeviceContext() {
    CLogger::StopLogging(g_logClient);  // opens the log anew, in this test's folder
    CLogger::StartLogging(g_logClient);
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
    CLogger::StopLogging(g_logClient);
    CLogger::StartLogging(g_logClient);
  }
  // Enables the device context and returns its state.
  COemPDEV* Enable() {
    EXPECT_EQ(plugin->EnablePDEV(&device.object, nullptr, 0, nullptr, sizeof info, &info,
                                 sizeof devInfo, &devInfo, &own, &device.object.pdevOEM),
              S_OK);
    return DeviceState(&device.object);
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
  void WriteStocks(const std::string& stocks) {
    home.WriteFile("registry.reg",
                   "Windows Registry Editor Version 5.00\n\n"
                   "[HKEY_CURRENT_USER\\Software\\Veltrix Printer Driver\\UI\\VLXLabel\\"
                   "LabelPrinter\\Stocks\\A]\n" +
                       stocks);
  }

  TempHome home;
  Device device;
  GDIINFO info = {};
  DEVINFO devInfo = {};
  DRVENABLEDATA own = {};
  COemUni2* plugin = new COemUni2;
};

TEST_F(DeviceContext, GeometryIsFittedAndLogged) {
  device.devmode.dwUnprintableLeft = 2000;
  device.devmode.dwUnprintableRight = 1000;
  device.devmode.dwUnprintableBottom = 500;
  info.ulHorzSize = static_cast<ULONG>(-97199);  // within 199 micrometres
  info.ulVertSize = static_cast<ULONG>(-59300);  // 200 off
  info.szlPhysSize = {1183, 711};
  const COemPDEV* state = Enable();
  EXPECT_EQ(state->gdiHorzSize, -97199);
  EXPECT_EQ(state->gdiVertSize, -59500);
  EXPECT_EQ(state->gdiHorzRes, 1146);
  EXPECT_EQ(state->gdiPhysSizeCx, 1183);
  EXPECT_EQ(state->gdiPhysSizeCy, 708);
  EXPECT_EQ(state->gdiPhysOffsetX, 23);
  EXPECT_EQ(PaperLines(),
            (std::vector<std::string>{
                "trace: DM.PaperSize=0, DM.PaperWidth=1000, DM.PaperLength=600",
                "warning: no papers defined. using values from settings dialog for GDIINFO",
                "trace:  GDI-Info modifications: VertSize:59300 => 59500, HorzRes:0 => 1146, "
                "VertRes:0 => 703, PhysSizeCy:711 => 708, PhysOffsetX:0 => 23, ",
                "trace: GDI-Info values: Orientation=1 Size=(97199/59500), Res=(1146/703), "
                "PhysSize=(1183/708), PhysOffset=(23/0)."}));
  EXPECT_EQ(state->hDevicePalette, devInfo.hpalDefault);
  EXPECT_NE(devInfo.hpalDefault, nullptr);
}

TEST_F(DeviceContext, LandscapeTurnsPaperAndMargins) {
  device.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  device.devmode.dwUnprintableLeft = 2000;
  device.devmode.dwUnprintableRight = 1000;
  device.devmode.dwUnprintableBottom = 500;
  const COemPDEV* state = Enable();  // margins: left 0, right 500, top 1000, bottom 2000
  EXPECT_EQ(state->gdiPhysSizeCx, 708);
  EXPECT_EQ(state->gdiPhysSizeCy, 1181);
  EXPECT_EQ(state->gdiHorzRes, 703);
  EXPECT_EQ(state->gdiVertRes, 1146);
  EXPECT_EQ(state->gdiPhysOffsetX, 0);
  EXPECT_EQ(state->gdiPhysOffsetY, 11);
  EXPECT_EQ(PaperLines()[2],
            "warning: switching paper dimensions and NPAs because of landscape mode");
}

TEST_F(DeviceContext, SelectedStockGivesTheMargins) {
  WriteStocks(
      "\"DisplayName\"=\"Gl\xC3\xA4nzend\"\n\"Id\"=\"{00000001-0002-0003-0405-060708090a0b}\"\n"
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
