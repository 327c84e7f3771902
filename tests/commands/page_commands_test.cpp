#include "commands/page_commands.h"

#include <gtest/gtest.h>

#include "commands/cut_commands.h"
#include "commands/image_commands.h"
#include "commands/option_commands.h"
#include "tests/support/device.h"

namespace {

// The commands of one record, changed a field at a time.
class PageCommands : public ::testing::Test {
 protected:
  PageCommands() {
    devmode.dwColorMode = 1;
    devmode.dwSensorType = 1;
    devmode.dwGapDistance = 3000;
    devmode.dwSpeed = 100;
    devmode.nDarkness = 5;
  }
  void SetModel(const char* code) {
    std::string(code).copy(devmode.szModelCode, kModelCodeSize - 1);
  }
  std::string Compose(LONG pageCount = 0, DWORD width = 1000, DWORD length = 500) {
    return BuildPageCommands(device.state.job, devmode, width, length, pageCount,
                             devmode.dwColorMode);
  }
  std::string Options() { return BuildOptionCommands(devmode, &pAndCut); }
  std::string LabelSize(DWORD widthUm = 100000, DWORD lengthUm = 50000) {
    return BuildLabelSizeCommand(devmode, widthUm, lengthUm, devmode.dwColorMode);
  }

  Device device;
  OEMDEV& devmode = device.devmode;
  std::string pAndCut;
};

TEST_F(PageCommands, StandInTheirOrder) {
  EXPECT_EQ(Compose(), "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nSl0;0.00,0.00,50.00,53.00,100.00");
  const WORD kinds[2] = {3, 4};
  const char* expected[2] = {
      "b4\r\nmm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nO E\r\nSl0;0.00,0.00,50.00,53.00,100.00"
      "\r\nP1.00\r\nCe,0.00,0.00\r\nb6",
      "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nO Eb4\r\nb5\r\n\r\nSl0;0.00,0.00,50.00,53.00,100.00b1"
      "\r\nb0\r\n\r\nP1.00\r\nCe,0.00,0.00\r\nb6"};
  devmode.dwOptionE = 1;
  devmode.dwPSource1Enabled = 1;
  devmode.nPSource1Value = 1000;
  devmode.dwCut1Enabled = 1;
  devmode.dwCut1Mode = 1;
  for (int i = 0; i < 2; ++i) {
    for (int k = 0; k < kCustomBlockCount; ++k)
      device.SetBlock(k, kinds[i], "b" + std::to_string(k));
    EXPECT_EQ(Compose(), expected[i]);
  }
  device.SetBlock(0, 4, "No {n}");
  EXPECT_NE(Compose(4).find("\r\nNo 5\r\n"), std::string::npos);
}

TEST_F(PageCommands, EmptyInlineBlocksKeepTheirLineEnd) {
  devmode.wCustomType0 = devmode.wCustomType1 = devmode.wCustomType4 = devmode.wCustomType5 = 4;
  EXPECT_EQ(Compose(), "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\n\r\nSl0;0.00,0.00,50.00,53.00,100.00\r\n");
}

TEST_F(PageCommands, SetUpOnFirstPageOnlyStillCountsPages) {
  devmode.dwSetupOnFirstPageOnly = 1;
  EXPECT_NE(Compose(-1), "");
  EXPECT_EQ(device.state.job.dwPageNumber, 1u);
  EXPECT_EQ(Compose(4), "");
  EXPECT_EQ(device.state.job.dwPageNumber, 5u);
}

TEST_F(PageCommands, HeadTakesTwoDarknessesOnOneModelOnly) {
  devmode.nDarkness2 = 3;
  devmode.dwPrintMethod = devmode.dwRibbonSaver = 1;
  devmode.dwHeadParamB = 4294967295u;
  devmode.dwColorMode = 2;
  EXPECT_EQ(BuildHeadCommand(devmode), "\r\nH100,5,D,R1,B4294967295");
  SetModel("K7");
  EXPECT_EQ(BuildHeadCommand(devmode), "\r\nH100,5:3,D,R1,B4294967295");
  devmode.dwColorMode = 1;
  EXPECT_EQ(BuildHeadCommand(devmode), "\r\nH100,5,D,R1,B4294967295");
  devmode.dwUseDarkness2 = 1;
  EXPECT_EQ(BuildHeadCommand(devmode), "\r\nH100,5:3,D,R1,B4294967295");
}

TEST_F(PageCommands, LabelSizeFollowsSensorMarginsAndModel) {
  const char* tokens[] = {"e", "l0", "l1", "l2", "x0", "x1", "l1", "l1"};
  for (DWORD sensor = 0; sensor < std::size(tokens); ++sensor) {
    devmode.dwSensorType = sensor;
    EXPECT_EQ(LabelSize().substr(3, 3), (std::string(tokens[sensor]) + ";0").substr(0, 3));
  }
  devmode.dwUnprintableLeft = 1000;
  devmode.dwUnprintableRight = 500;
  devmode.dwUnprintableTop = 2000;
  devmode.dwUnprintableBottom = 250;
  devmode.nOffsetX = -4;
  devmode.nOffsetY = 1500;
  EXPECT_EQ(LabelSize(), "\r\nSl1;-0.00,1.50,47.75,50.75,98.50");
  EXPECT_EQ(LabelSize(1000), "\r\nSl1;-0.00,1.50,47.75,50.75,4294967.00");  // margins wider: wraps
  devmode.dwUnprintableLeft = devmode.dwUnprintableRight = 0;
  devmode.dwColorMode = 2;
  EXPECT_EQ(LabelSize(), "\r\nSl1;-0.00,1.50,47.75,50.75,200.00");
  SetModel("K5");
  for (const auto& [widthUm, expected] : {std::pair(100000u, "200.06"),
                                          {138000u, "276.13"},
                                          {140000u, "280.19"},
                                          {150000u, "300.18"}}) {
    EXPECT_EQ(LabelSize(widthUm).substr(29), expected);
  }
}

TEST_F(PageCommands, CorrectedWidthIsExactAtTheLimits) {
  for (const auto& [widthMm, expected] : {std::pair(100.0f, 200.063049f),
                                          {135.0f, 270.026703f},
                                          {135.004f, 270.039551f},
                                          {140.0f, 280.194305f},
                                          {140.004f, 280.20047f},
                                          {150.0f, 300.182495f}}) {
    EXPECT_EQ(CorrectTwoColorWidth(widthMm), expected) << widthMm;
  }
}

TEST_F(PageCommands, QuarterTurnExchangesWidthAndLength) {
  const char* sizes[] = {",50.00,53.00,100.00", ",100.00,103.00,50.00"};
  for (devmode.dwRotation = 0; devmode.dwRotation < 5; ++devmode.dwRotation) {
    EXPECT_NE(Compose().find(sizes[devmode.dwRotation % 2]), std::string::npos);
  }
}

TEST_F(PageCommands, FirstOptionSetWinsAndKeepsItsForm) {
  EXPECT_EQ(Options(), "");
  EXPECT_EQ(pAndCut, "");
  EXPECT_EQ(devmode.dwInitialCutSent, 1);

  devmode.dwOptionSet3Enabled = 1;
  devmode.nOptionSet3PValue = 7000;
  EXPECT_EQ(Options(), "\r\nO A5=0.00");
  EXPECT_EQ(pAndCut, "\r\nP7.00");
  devmode.dwOptionSet3StartMode = 2;
  EXPECT_EQ(Options(), "\r\nO A1='START signal',A5=0.00");

  devmode.dwOptionSet2Enabled = 1;
  devmode.nOptionSet2A0 = 5;
  devmode.nOptionSet2A2 = 2;
  devmode.nOptionSet2A4 = 50;
  EXPECT_EQ(Options(), "\r\nO A0=100,A2=2,A4=1.00");
  devmode.nOptionSet2A0 = devmode.nOptionSet2A1 = 1;
  devmode.nOptionSet2A2 = devmode.nOptionSet2A4 = 1;
  EXPECT_EQ(Options(), "\r\nO A0=20,A1=1,A2=1,A4=0.02");
  devmode.nOptionSet2A0 = devmode.nOptionSet2A1 = 0;
  devmode.nOptionSet2A2 = devmode.nOptionSet2A4 = 0;
  devmode.dwOptionN = 1;
  EXPECT_EQ(Options(), "\r\nO N");
  devmode.dwOptionN = 0;
  EXPECT_EQ(pAndCut, "\r\nP7.00");  // the third set is a P source of its own

  devmode.dwOptionSet1Enabled = devmode.dwOptionSet1AEnabled = 1;
  devmode.dwOptionSet3Enabled = 0;
  devmode.nOptionSet1PValue = 25000;
  devmode.nOptionSet1A0 = 3;
  devmode.nOptionSet1A2 = 10;
  devmode.nOptionSet1A3 = -1;
  devmode.nOptionSet1A4 = 1;
  devmode.dwOptionE = devmode.dwOptionS = 1;
  EXPECT_EQ(Options(), "\r\nO A0=3,A2=10,A4=1,E,S");
  EXPECT_EQ(pAndCut, "\r\nP25.00");
  devmode.dwPSource2Enabled = devmode.dwPSource3Enabled = 1;
  devmode.nPSource1Value = 1000;
  Options();
  EXPECT_EQ(pAndCut, "\r\nP1.00");
}

TEST_F(PageCommands, OptionFlagsStandInTheirOrder) {
  devmode.dwCut2Enabled = devmode.dwOptionE = devmode.dwOptionM = devmode.dwOptionN = 1;
  devmode.dwOptionS = devmode.dwUseDarkness2 = devmode.dwOptionT = 1;
  devmode.nOptionCValue = 1250;
  devmode.dwOptionPD = 2;
  devmode.dwColorMode = 2;
  devmode.nOptionHValue = 2345;
  devmode.nOptionTValue = 1500;
  SetModel("K7");
  EXPECT_EQ(Options(), "\r\nO C1.3,D,E,H2.35,M,N,S,X,T1.50");
  SetModel("k7");
  devmode.dwOptionPD = 1;
  device.SetBlock(4, 4, "=ABC");
  EXPECT_EQ(Options(), "\r\nO C1.3,E,H2.35,M,N,P,S,T=ABC");
}

TEST_F(PageCommands, SecondCutGroupGatesOptionC) {
  const struct {
    DWORD enabled;
    LONG valueUm;
    const char* expected;
  } rows[] = {{1, 1, "\r\nO C0.0"}, {1, 0, ""}, {1, -1, ""}, {0, 1, ""}};
  for (const auto& row : rows) {
    devmode.dwCut2Enabled = row.enabled;
    devmode.nOptionCValue = row.valueUm;
    EXPECT_EQ(Options(), row.expected) << row.enabled << " " << row.valueUm;
  }
}

TEST_F(PageCommands, InlineBlockAloneLosesItsFirstByte) {
  device.SetBlock(4, 4, "ABC");
  EXPECT_EQ(Options(), "\r\nO BC");
}

TEST_F(PageCommands, InitialCutsGoOutOnce) {
  devmode.dwCut1Enabled = devmode.dwCut1CsEnabled = devmode.dwCut2Enabled = 1;
  devmode.dwCpEnabled = devmode.dwCspEnabled = 1;
  devmode.dwCut1Mode = 2;
  devmode.nCut1Value1 = 2000;
  devmode.nCut1Value2 = 1500;
  devmode.nCut1CsValue = 3000;
  devmode.nCpValue = 500;
  devmode.nCspValue = 700;
  EXPECT_EQ(BuildCutCommands(devmode), "\r\nCsp,0.70\r\nCs,3.00\r\nCp,0.50\r\nC9998,2.00,1.50");
  EXPECT_EQ(BuildCutCommands(devmode), "\r\nCp,0.50\r\nC9998,2.00,1.50");
}

TEST_F(PageCommands, CutGroupModeDecidesTheForm) {
  devmode.dwCut2Enabled = devmode.dwCut2CutEnabled = devmode.dwCut2CsEnabled = 1;
  devmode.nCut2CsValue = -4;
  devmode.nCut2Count = -3;
  EXPECT_EQ(BuildCutCommands(devmode), "\r\nCs,-0.00");
  const char* forms[] = {"\r\nC9998,0.00,0.00", "\r\nCe,0.00,0.00", "\r\nC-3,0.00,0.00", ""};
  devmode.dwCut2AtJobEnd = 1;
  for (int mode = 0; mode < 4; ++mode) {
    devmode.dwCut2Mode = mode;
    EXPECT_EQ(BuildCutCommands(devmode), forms[mode]);
    EXPECT_EQ(BuildEndCutCommand(devmode), "\r\nCe,0.00,0.00");
  }
  devmode.dwCut1Enabled = 1;  // hides the second group, whatever it says
  EXPECT_EQ(BuildCutCommands(devmode), "");
  EXPECT_EQ(BuildEndCutCommand(devmode), "");
}

TEST_F(PageCommands, CutGroupNeedsAllOfItsFlags) {
  devmode.dwCut1Mode = devmode.dwCut2Mode = 1;
  const struct {
    DWORD enabled1, cs1, enabled2, cut2, cs2;
    const char* expected;
  } rows[] = {{0, 1, 0, 0, 0, ""},
              {1, 0, 0, 0, 0, "\r\nCe,0.00,0.00"},
              {0, 0, 1, 0, 0, ""},
              {0, 0, 0, 1, 0, ""},
              {0, 0, 0, 0, 1, ""},
              {0, 0, 1, 1, 0, "\r\nCe,0.00,0.00"},
              {0, 0, 1, 0, 1, ""},
              {0, 0, 0, 1, 1, ""},
              {0, 1, 1, 1, 1, "\r\nCs,0.00\r\nCe,0.00,0.00"}};
  for (const auto& row : rows) {
    devmode.dwInitialCutSent = 0;
    devmode.dwCut1Enabled = row.enabled1;
    devmode.dwCut1CsEnabled = row.cs1;
    devmode.dwCut2Enabled = row.enabled2;
    devmode.dwCut2CutEnabled = row.cut2;
    devmode.dwCut2CsEnabled = row.cs2;
    EXPECT_EQ(BuildCutCommands(devmode), row.expected) << &row - rows;
  }
}

class ImageCommands : public PageCommands {
 protected:
  std::string Place(DWORD rotation,
                    ImagePlacement placement = {1000, 500, 5.0f, 2.5f, 1, false, false}) {
    devmode.dwRotation = rotation;
    placement.colorMode = static_cast<LONG>(devmode.dwColorMode);
    device.state.job.dwPageNumber = page;
    return ComposeImageCommands(device.state.job, devmode, placement);
  }
  DWORD page = 1;
};

TEST_F(ImageCommands, OneColourFollowsTheRotation) {
  const char* plain[] = {"100.00,45.00,180", "0.00,95.00,90", "0.00,5.00,0", "50.00,5.00,270",
                         "100.00,45.00,180"};
  const char* turned[] = {"0.00,5.00,0", "0.00,95.00,90", "100.00,45.00,180", "50.00,5.00,270",
                          "100.00,45.00,360"};
  for (DWORD rotation = 0; rotation < 5; ++rotation) {
    devmode.dwOptionM = devmode.dwUseDarkness2 = 0;
    EXPECT_EQ(Place(rotation), "\r\nI:Image0;" + std::string(plain[rotation]) + ";0");
    devmode.dwOptionM = 1;
    EXPECT_EQ(Place(rotation), "\r\nI:Image0;" + std::string(plain[rotation]) + ";0");
    devmode.dwUseDarkness2 = 1;
    EXPECT_EQ(Place(rotation), "\r\nI:Image0;" + std::string(turned[rotation]) + ";0");
  }
}

TEST_F(ImageCommands, HighlightLiesInTheSecondHalfOfTheWidth) {
  devmode.dwColorMode = 2;
  const char* plain[] = {"200.00,47.50,180", "50.00,97.50,90", "100.00,2.50,0", "100.00,2.50,270"};
  const char* corrected[] = {"200.06,47.50,180", "50.06,97.50,90", "100.03,2.50,0",
                             "100.11,2.50,270"};
  for (DWORD rotation = 0; rotation < 4; ++rotation) {
    SetModel("K7");
    EXPECT_EQ(Place(rotation).substr(0, Place(rotation).find("\r\nI:Image1")),
              "\r\nI:Image0;" + std::string(plain[rotation]) + ";0");
    SetModel("K5");
    EXPECT_EQ(Place(rotation).substr(0, Place(rotation).find("\r\nI:Image1")),
              "\r\nI:Image0;" + std::string(corrected[rotation]) + ";0");
  }
  EXPECT_EQ(Place(2, {600, 300, 0.0f, -0.004f, 0, false, true}), "\r\nI:Image1;0.00,0.00,0;1");
  EXPECT_EQ(Place(2, {600, 300, 0.0f, -0.004f, 0, true, false}), "\r\nI:Image0;60.05,-0.00,0;0");
  EXPECT_EQ(Place(2, {600, 300, 0.0f, 0.0f, 0, true, true}), "");
}

TEST_F(ImageCommands, LaterPagesRecallAReusedSetUp) {
  devmode.dwSetupOnFirstPageOnly = devmode.dwCut1Enabled = 1;
  devmode.dwColorMode = 2;
  devmode.dwCut1Mode = 1;
  devmode.dwCut1CsEnabled = 1;
  EXPECT_EQ(Place(2).substr(0, 11), "\r\nI:Image0;");
  page = 2;
  EXPECT_EQ(Place(2), "\r\nCs,0.00\r\nCe,0.00,0.00\r\nR Image0;0\r\nCe,0.00,0.00\r\nR Image1;1");
  device.SetBlock(0, 4, "p{n}");
  devmode.dwColorMode = 1;
  EXPECT_EQ(Place(2), "\r\np2\r\n\r\nCe,0.00,0.00\r\nR Image0;0");
}

}  // namespace
