#include "commands/page_commands.h"

#include <gtest/gtest.h>

#include "commands/cut_commands.h"
#include "commands/image_commands.h"
#include "commands/option_commands.h"
#include "config/device_state.h"
#include "tests/support/record.h"

namespace {

// The commands of one record, changed some fields at a time.
class PageCommands : public ::testing::Test {
 protected:
  struct Step {
    const char* fields;
    const char* expected;
  };

  PageCommands() { Set("dwColorMode=1 dwSensorType=1 dwGapDistance=3000 dwSpeed=100 nDarkness=5"); }
  // Sets the fields of each step on top of those before and checks what is built.
  template <typename Build>
  void ExpectSteps(const Build& build, std::initializer_list<Step> steps) {
    for (const Step& step : steps) {
      Set(step.fields);
      EXPECT_EQ(build(), step.expected) << step.fields;
    }
  }
  std::string Compose(LONG pageCount = 0, DWORD width = 1000, DWORD length = 500) {
    return BuildPageCommands(job, devmode, width, length, pageCount, devmode.dwColorMode);
  }
  // The option line, then the commands that follow the label size.
  std::string Options() {
    std::string pAndCut;
    const std::string line = BuildOptionCommands(devmode, &pAndCut);
    return line + "|" + pAndCut;
  }
  // The cut commands of a label and that of the job's end.
  std::string Cuts() { return BuildCutCommands(devmode) + "|" + BuildEndCutCommand(devmode); }
  std::string LabelSize(DWORD widthUm = 100000) {
    return BuildLabelSizeCommand(devmode, widthUm, 50000, devmode.dwColorMode);
  }

  void Set(const std::string& fields) { SetFields(devmode, fields); }

  OEMDEV devmode = {};
  JobState job;
};

TEST_F(PageCommands, StandInTheirOrder) {
  EXPECT_EQ(Compose(), "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nSl0;0.00,0.00,50.00,53.00,100.00");
  const WORD kinds[2] = {3, 4};
  const char* expected[2] = {
      "b4\r\nmm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nO E\r\nSl0;0.00,0.00,50.00,53.00,100.00"
      "\r\nP1.00\r\nCe,0.00,0.00\r\nb6",
      "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nO Eb4\r\nb5\r\n\r\nSl0;0.00,0.00,50.00,53.00,100.00b1"
      "\r\nb0\r\n\r\nP1.00\r\nCe,0.00,0.00\r\nb6"};
  Set("dwOptionE=1 dwPSource1Enabled=1 nPSource1Value=1000 dwCut1Enabled=1 dwCut1Mode=1");
  for (int i = 0; i < 2; ++i) {
    for (int k = 0; k < kCustomBlockCount; ++k)
      SetBlock(devmode, k, kinds[i], "b" + std::to_string(k));
    EXPECT_EQ(Compose(), expected[i]);
  }
  SetBlock(devmode, 0, 4, "No {n}");
  EXPECT_NE(Compose(4).find("\r\nNo 5\r\n"), std::string::npos);
}

TEST_F(PageCommands, EmptyInlineBlocksKeepTheirLineEnd) {
  Set("wCustomType0=4 wCustomType1=4 wCustomType4=4 wCustomType5=4");
  EXPECT_EQ(Compose(), "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\n\r\nSl0;0.00,0.00,50.00,53.00,100.00\r\n");
}

TEST_F(PageCommands, SetUpOnFirstPageOnlyStillCountsPages) {
  devmode.dwSetupOnFirstPageOnly = 1;
  EXPECT_NE(Compose(-1), "");
  EXPECT_EQ(job.dwPageNumber, 1u);
  EXPECT_EQ(Compose(4), "");
  EXPECT_EQ(job.dwPageNumber, 5u);
}

TEST_F(PageCommands, HeadTakesTwoDarknessesOnOneModelOnly) {
  Set("nDarkness2=3 dwPrintMethod=1 dwRibbonSaver=1 dwHeadParamB=4294967295");
  ExpectSteps([this] { return BuildHeadCommand(devmode); },
              {{"dwColorMode=2", "\r\nH100,5,D,R1,B4294967295"},
               {"szModelCode=K7", "\r\nH100,5:3,D,R1,B4294967295"},
               {"dwColorMode=1", "\r\nH100,5,D,R1,B4294967295"},
               {"dwUseDarkness2=1", "\r\nH100,5:3,D,R1,B4294967295"}});
}

TEST_F(PageCommands, LabelSizeFollowsSensorMarginsAndModel) {
  const char* tokens[] = {"e", "l0", "l1", "l2", "x0", "x1", "l1", "l1"};
  for (DWORD sensor = 0; sensor < std::size(tokens); ++sensor) {
    devmode.dwSensorType = sensor;
    EXPECT_EQ(LabelSize().substr(3, 3), (std::string(tokens[sensor]) + ";0").substr(0, 3));
  }
  Set("dwUnprintableLeft=1000 dwUnprintableRight=500 dwUnprintableTop=2000");
  Set("dwUnprintableBottom=250 nOffsetX=-4 nOffsetY=1500");
  EXPECT_EQ(LabelSize(), "\r\nSl1;-0.00,1.50,47.75,50.75,98.50");
  EXPECT_EQ(LabelSize(1000), "\r\nSl1;-0.00,1.50,47.75,50.75,4294967.00");  // margins wider: wraps
  Set("dwUnprintableLeft=0 dwUnprintableRight=0 dwColorMode=2");
  EXPECT_EQ(LabelSize(), "\r\nSl1;-0.00,1.50,47.75,50.75,200.00");
  Set("szModelCode=K5");
  for (const auto& [widthUm, expected] : {std::pair(100000u, "200.06"),
                                          {138000u, "276.13"},
                                          {140000u, "280.19"},
                                          {150000u, "300.18"}}) {
    EXPECT_EQ(LabelSize(widthUm).substr(29), expected);
  }
}

TEST_F(PageCommands, CorrectedWidthIsExactAtTheLimits) {
  for (const auto& [widthMm, expected] : {std::pair(0.0f, 0.16693051f),
                                          {100.0f, 200.063049f},
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
  ExpectSteps(
      [this] { return Options(); },
      {{"", "|"},
       {"nOptionSet3PValue=7000 dwOptionSet3Enabled=1", "\r\nO A5=0.00|\r\nP7.00"},
       {"dwOptionSet3StartMode=1", "\r\nO A1='Automatic',A5=0.00|\r\nP7.00"},
       {"dwOptionSet3StartMode=2", "\r\nO A1='START signal',A5=0.00|\r\nP7.00"},
       {"dwOptionSet2Enabled=1 nOptionSet2A0=5 nOptionSet2A2=2 nOptionSet2A4=50",
        "\r\nO A0=100,A2=2,A4=1.00|\r\nP7.00"},  // the third set is a P source of its own
       {"nOptionSet2A0=1 nOptionSet2A1=1 nOptionSet2A2=1 nOptionSet2A4=1",
        "\r\nO A0=20,A1=1,A2=1,A4=0.02|\r\nP7.00"},
       {"nOptionSet2A0=0 nOptionSet2A1=0 nOptionSet2A2=0 nOptionSet2A4=0 dwOptionN=1",
        "\r\nO N|\r\nP7.00"},
       {"dwOptionSet3Enabled=0 nOptionSet2PValue=2000 dwOptionN=0", "|\r\nP2.00"},
       {"dwOptionSet1Enabled=1 nOptionSet1PValue=25000 nOptionSet1A0=3", "|\r\nP25.00"},
       {"dwOptionSet1AEnabled=1 nOptionSet1A2=10 nOptionSet1A3=-1 nOptionSet1A4=1 dwOptionE=1 "
        "dwOptionS=1",
        "\r\nO A0=3,A2=10,A4=1,E,S|\r\nP25.00"},
       {"dwPSource3Enabled=1 nPSource3Value=3000 nOptionSet1A1=2 nOptionSet1A3=4",
        "\r\nO A0=3,A1=2,A2=10,A3=4,A4=1,E,S|\r\nP3.00"},
       {"dwPSource2Enabled=1 nPSource1Value=1000 dwOptionSet1AEnabled=0", "\r\nO E,S|\r\nP1.00"}});
  EXPECT_EQ(devmode.dwInitialCutSent, 1);
}

TEST_F(PageCommands, OptionFlagsStandInTheirOrder) {
  Set("dwCut2Enabled=1 nOptionCValue=1250 dwOptionPD=2 dwOptionE=1 dwOptionM=1 dwOptionN=1");
  Set("dwColorMode=2 nOptionHValue=2345 dwOptionS=1 dwUseDarkness2=1 dwOptionT=1");
  ExpectSteps([this] { return Options(); },
              {{"szModelCode=K7 nOptionTValue=1500", "\r\nO C1.3,D,E,H2.35,M,N,S,X,T1.50|"},
               {"szModelCode=k7 dwOptionPD=1 wCustomType4=4 szCustomText4==ABC",
                "\r\nO C1.3,E,H2.35,M,N,P,S,T=ABC|"}});
}

TEST_F(PageCommands, OptionsThatDependOnOthers) {
  ExpectSteps([this] { return Options(); },
              {{"dwCut2Enabled=1 nOptionCValue=1", "\r\nO C0.0|"},
               {"nOptionCValue=0", "|"},
               {"nOptionCValue=-1", "|"},
               {"nOptionCValue=1 dwCut2Enabled=0", "|"},
               // An inline block that stands alone loses its first byte.
               {"wCustomType4=4 szCustomText4=ABC", "\r\nO BC|"}});
}

TEST_F(PageCommands, InitialCutsGoOutOnce) {
  Set("dwCut1Enabled=1 dwCut1CsEnabled=1 dwCut2Enabled=1 dwCpEnabled=1 dwCspEnabled=1");
  Set("dwCut1Mode=2 nCut1Value1=2000 nCut1Value2=1500 nCut1CsValue=3000");
  ExpectSteps(
      [this] { return Cuts(); },
      {{"nCpValue=500 nCspValue=700", "\r\nCsp,0.70\r\nCs,3.00\r\nCp,0.50\r\nC9998,2.00,1.50|"},
       {"", "\r\nCp,0.50\r\nC9998,2.00,1.50|"}});
}

TEST_F(PageCommands, CutGroupModeDecidesTheForm) {
  ExpectSteps(
      [this] { return Cuts(); },
      {{"dwCut2Enabled=1 dwCut2CutEnabled=1 dwCut2CsEnabled=1 nCut2CsValue=-4 nCut2Count=-3",
        "\r\nCs,-0.00|"},
       {"dwCut2AtJobEnd=1", "\r\nC9998,0.00,0.00|\r\nCe,0.00,0.00"},
       {"dwCut2Mode=1", "\r\nCe,0.00,0.00|\r\nCe,0.00,0.00"},
       {"dwCut2Mode=2", "\r\nC-3,0.00,0.00|\r\nCe,0.00,0.00"},
       {"dwCut2Mode=3", "|\r\nCe,0.00,0.00"},
       // The first group hides the second, whatever that says.
       {"dwCut1Enabled=1", "|"},
       {"dwCut1Enabled=0 dwCut2Enabled=0", "|"}});
}

TEST_F(PageCommands, CutGroupNeedsAllOfItsFlags) {
  Set("dwCut1Mode=1 dwCut2Mode=1");
  ExpectSteps(
      [this] { return std::exchange(devmode.dwInitialCutSent, 0), BuildCutCommands(devmode); },
      {{"dwCut1CsEnabled=1", ""},
       {"dwCut1CsEnabled=0 dwCut1Enabled=1", "\r\nCe,0.00,0.00"},
       {"dwCut1Enabled=0 dwCut2Enabled=1", ""},
       {"dwCut2CsEnabled=1", ""},
       {"dwCut2Enabled=0", ""},
       {"dwCut2CutEnabled=1", ""},
       {"dwCut2CsEnabled=0", ""},
       {"dwCut2Enabled=1", "\r\nCe,0.00,0.00"},
       {"dwCut2CsEnabled=1 dwCut1CsEnabled=1", "\r\nCs,0.00\r\nCe,0.00,0.00"}});
}

class ImageCommands : public PageCommands {
 protected:
  std::string Place(DWORD rotation,
                    ImagePlacement placement = {1000, 500, 5.0f, 2.5f, 1, false, false}) {
    devmode.dwRotation = rotation;
    placement.colorMode = static_cast<LONG>(devmode.dwColorMode);
    job.dwPageNumber = page;
    return ComposeImageCommands(job, devmode, placement);
  }
  DWORD page = 1;
};

TEST_F(ImageCommands, OneColourFollowsTheRotation) {
  const char* plain[] = {"100.00,45.00,180", "0.00,95.00,90", "0.00,5.00,0", "50.00,5.00,270",
                         "100.00,45.00,180"};
  const char* turned[] = {"0.00,5.00,0", "0.00,95.00,90", "100.00,45.00,180", "50.00,5.00,270",
                          "100.00,45.00,360"};
  for (const char* options : {"dwOptionM=0 dwUseDarkness2=0", "dwOptionM=1 dwUseDarkness2=0",
                              "dwOptionM=0 dwUseDarkness2=1", "dwOptionM=1 dwUseDarkness2=1"}) {
    Set(options);
    for (DWORD rotation = 0; rotation < 5; ++rotation) {
      const char* place = (devmode.dwOptionM & devmode.dwUseDarkness2 ? turned : plain)[rotation];
      EXPECT_EQ(Place(rotation), "\r\nI:Image0;" + std::string(place) + ";0") << options;
    }
  }
}

TEST_F(ImageCommands, HighlightLiesInTheSecondHalfOfTheWidth) {
  devmode.dwColorMode = 2;
  const char* plain[] = {"200.00,47.50,180", "50.00,97.50,90", "100.00,2.50,0", "100.00,2.50,270"};
  const char* corrected[] = {"200.06,47.50,180", "50.06,97.50,90", "100.03,2.50,0",
                             "100.11,2.50,270"};
  for (DWORD rotation = 0; rotation < 4; ++rotation) {
    Set("szModelCode=K7");
    EXPECT_TRUE(Place(rotation).starts_with("\r\nI:Image0;" + std::string(plain[rotation]) +
                                            ";0\r\nI:Image1"));
    Set("szModelCode=K5");
    EXPECT_TRUE(Place(rotation).starts_with("\r\nI:Image0;" + std::string(corrected[rotation]) +
                                            ";0\r\nI:Image1"));
  }
  EXPECT_EQ(Place(2, {600, 300, 0.0f, -0.004f, 0, false, true}), "\r\nI:Image1;0.00,0.00,0;1");
  EXPECT_EQ(Place(2, {600, 300, 0.0f, -0.004f, 0, true, false}), "\r\nI:Image0;60.05,-0.00,0;0");
  EXPECT_EQ(Place(2, {600, 300, 0.0f, 0.0f, 0, true, true}), "");
}

TEST_F(ImageCommands, LaterPagesRecallAReusedSetUp) {
  Set("dwSetupOnFirstPageOnly=1 dwCut1Enabled=1 dwColorMode=2 dwCut1Mode=1 dwCut1CsEnabled=1");
  EXPECT_EQ(Place(2).substr(0, 11), "\r\nI:Image0;");
  page = 2;
  EXPECT_EQ(Place(2), "\r\nCs,0.00\r\nCe,0.00,0.00\r\nR Image0;0\r\nCe,0.00,0.00\r\nR Image1;1");
  SetBlock(devmode, 0, 4, "p{n}");
  devmode.dwColorMode = 1;
  EXPECT_EQ(Place(2), "\r\np2\r\n\r\nCe,0.00,0.00\r\nR Image0;0");
}

}  // namespace
