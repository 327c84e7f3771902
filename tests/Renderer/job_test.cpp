#include "tests/driver/job_test.h"

#include "config/device_state.h"

namespace {

class Job : public JobTest {
 protected:
  const COemPDEV& State() { return *static_cast<const COemPDEV*>(driver.Device().pdevOEM); }
};

const std::string kSetup = "mm\r\nzO\r\nJ\r\nH100,0,T,R0\r\nSl0;0.00,0.00,30.00,33.00,50.00";
const std::string kPlace = "\r\nI:Image0;50.00,30.00,180;0";
const std::string kDataEnd =
    "\x1B"
    "end-of-data\r\n";

TEST_F(Job, PagesGoOutOneHookLate) {
  driver.publicDevmode.dmCopies = 3;
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_EQ(Take(), (Events{"DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_EQ(Take(), (Events{"eIMG;*\r\n", "dPNG;0\r\n\x1B:", "<png 60x40 1-bit>", kDataEnd,
                            kSetup + kPlace, "\r\nA3\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.EndDocument());
  EXPECT_EQ(Take(), (Events{"dPNG;0\r\n\x1B:", "<png 60x40 1-bit>", kDataEnd, kSetup + kPlace,
                            "\r\nA3\r\n", "DrvEndDoc"}));
  EXPECT_TRUE(driver.PrintDocument(""));  // the next document opens like the first
  EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc", "\r\nA3\r\n", "DrvEndDoc"}));
}

TEST_F(Job, DocumentStartedTwiceCountsItsPagesAnew) {
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  Take();
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_EQ(Take(), Events{"DrvStartDoc"});  // the header is out
  EXPECT_TRUE(driver.StartPage());
  const Events events = Take();
  EXPECT_EQ(events.front(), "dPNG;0\r\n\x1B:");  // the page is not the job's first
  EXPECT_EQ(events.back(), "DrvStartPage");
  EXPECT_EQ(std::count(events.begin(), events.end(), "\r\nA1\r\n"), 0);
  EXPECT_TRUE(driver.EndDocument());
  EXPECT_EQ(State().dwPageCount, 0u);
  driver.jobId = 0;  // a name alone makes a document
  Take();
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_EQ(Take()[0], kHeader);
}

TEST_F(Job, HooksWithoutADeviceFail) {
  driver.Surface().dhpdev = nullptr;
  NewLog();
  EXPECT_FALSE(driver.StartDocument());
  EXPECT_EQ(NewLog(),
            Events{"error\tRendering\tA document hook was called without a device state"});
  EXPECT_FALSE(driver.StartPage());
  EXPECT_FALSE(driver.StartBanding());
  EXPECT_FALSE(driver.SendPage());
  SetLastError(0);
  EXPECT_FALSE(driver.EndDocument());
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(Take(), Events{});
  driver.Surface().dhpdev = &driver.Device();
  DRVPROCS nothing = {};
  DRVPROCS* const procedures = std::exchange(driver.Device().pDrvProcs, nullptr);
  EXPECT_TRUE(driver.PrintDocument("a"));  // there is no spooler to write to
  driver.Device().pDrvProcs = &nothing;
  EXPECT_TRUE(driver.PrintDocument("a"));
  driver.Device().pDrvProcs = procedures;
}

TEST_F(Job, DocumentWithoutANameLeavesTheLastErrorAlone) {
  for (ULONG i = 0; i < driver.Hooks().c; ++i) {
    const DRVFN& hook = driver.Hooks().pdrvfn[i];
    if (hook.iFunc != INDEX_DrvStartDoc) continue;
    SetLastError(5);
    EXPECT_TRUE(reinterpret_cast<PFN_DrvStartDoc>(hook.pfn)(&driver.Surface(), nullptr, 9));
    EXPECT_EQ(GetLastError(), 5u);
  }
  const Events events = Take();
  ASSERT_FALSE(events.empty());
  EXPECT_TRUE(events[0].ends_with(";Print job name: \r\n")) << events[0];
  EXPECT_TRUE(driver.AbortDocument());
}

TEST_F(Job, AbortWritesNothingMore) {
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  Take();
  EXPECT_TRUE(driver.AbortDocument());
  EXPECT_EQ(LastLogLine(), "trace\tRendering\tOEMEndDoc END (1 = 1 && 1)");
  EXPECT_EQ(driver.lastCall, "DrvEndDoc(1)");
  EXPECT_EQ(State().pBitmapBuffer, nullptr);
  EXPECT_EQ(Take(), Events{"DrvEndDoc"});
  driver.answers = {
      {INDEX_DrvStartDoc, FALSE}, {INDEX_DrvStartPage, FALSE}, {INDEX_DrvEndDoc, FALSE}};
  EXPECT_FALSE(driver.StartDocument());
  EXPECT_FALSE(driver.PrintPage('a'));
  EXPECT_FALSE(driver.AbortDocument());
}

// The driver's functions give different answers, paper lies in an unknown orientation, and the end
// of the document carries an unknown flag.
TEST_F(Job, HooksPassTheDriversAnswersOn) {
  driver.publicDevmode.dmOrientation = 3;
  driver.answers = {{INDEX_DrvStartDoc, 2}, {INDEX_DrvStartPage, 3}, {INDEX_DrvStartBanding, 4},
                    {INDEX_DrvNextBand, 5}, {INDEX_DrvSendPage, 6},  {INDEX_DrvEndDoc, 7}};
  EXPECT_TRUE(driver.EnableDevice());
  NewLog();
  const auto expect = [this](bool done, BOOL result, const char* call) {
    EXPECT_TRUE(done);
    EXPECT_EQ(driver.hookResult, result) << call;
    EXPECT_EQ(driver.lastCall, call);
  };
  expect(driver.StartDocument(), 2, "DrvStartDoc(job, 7)");
  expect(driver.StartPage(), 1, "DrvStartPage()");
  expect(driver.StartBanding(), 4, "DrvStartBanding(0, 0)");
  expect(driver.SendBand(), 5, "DrvNextBand(0, 10)");
  expect(driver.SendPage(), 6, "DrvSendPage()");
  expect(driver.ResetDevice(), 2, "DrvStartDoc(null, 0)");
  expect(driver.StartPage(), 1, "DrvStartPage()");
  expect(driver.EndDocument(2), 1, "DrvEndDoc(2)");

  std::string log;
  for (const std::string& line : NewLog()) {
    const bool ofDevice = line.find("COemUni2.") != line.npos || line.find("#Paper") != line.npos;
    if (!ofDevice) log += line + "\n";
  }
  EXPECT_EQ(log, R"(trace	Rendering	OEMStartDoc BEGIN (dwJobId=7, OemPDEV=#)
trace		OEMStartDoc calling DrvStartDoc...
trace	Rendering	OEMStartDoc END (2)
trace	Rendering	OEMStartPage BEGIN (OemPDEV=#)
trace	Rendering	ProcessImageData BEGIN
trace	Rendering	ProcessImageData END (no bitmap)
trace		OEMStartPage calling DrvStartPage...
trace	Rendering	OEMStartPage END (1 = 1 && 3)
trace	Rendering	OEMStartBanding BEGIN (OemPDEV=#, pptl.x=0, pptl.y=0)
trace		OEMStartBanding calling DrvStartBanding...
trace	Rendering	OEMStartBanding END (4)
trace	Rendering	ImageProcessing BEGIN (Landscape, x-Pixel 0-60, OemPDEV=#)
trace	Rendering	ImageProcessing END (S_OK)
trace	Rendering	OEMNextBand BEGIN (OemPDEV=#, pptl.x=0, pptl.y=10)
trace		OEMNextBand calling DrvNextBand...
trace	Rendering	OEMNextBand END (5)
trace	Rendering	OEMSendPage BEGIN (OemPDEV=#)
trace		OEMSendPage calling DrvSendPage...
trace	Rendering	OEMSendPage END (6)
trace	Rendering	ResetPDEV BEGIN (Old=#, New=#)
trace	Rendering	ResetPDEV END (S_OK)
trace	Rendering	OEMStartDoc BEGIN (ResetDC, dwJobId=0, OemPDEV=#, pBitmapBuffer=#)
trace		OEMStartDoc calling DrvStartDoc...
trace	Rendering	OEMStartDoc END (ResetDC) (2)
trace	Rendering	OEMStartPage BEGIN (OemPDEV=#)
trace	Rendering	ProcessImageData BEGIN
trace	Rendering	SendImageToPrinter START
trace	Rendering	SendImageToPrinter END (1)
trace	Rendering	ProcessImageData END (1)
trace		OEMStartPage calling DrvStartPage...
trace	Rendering	OEMStartPage END (1 = 1 && 3)
trace	Rendering	OEMEndDoc BEGIN (OemPDEV=#)
trace	Rendering	ProcessImageData BEGIN
trace	Rendering	ProcessImageData END (no bitmap)
trace		OEMEndDoc calling DrvEndDoc...
trace	Rendering	OEMEndDoc END (1 = 1 && 7)
)");
  EXPECT_EQ(Image().width, 10u);  // turned, but captured like a portrait page
  EXPECT_EQ(Image().height, 60u);
  const Events events = Take();
  EXPECT_EQ((Events{events.end() - 3, events.end()}),
            (Events{"DrvStartPage", "\r\nA1\r\n", "DrvEndDoc"}));
}

TEST_F(Job, WithoutPrivateDevmodeOnlyWhatReadsItFails) {
  driver.Device().pOEMDM = nullptr;
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_FALSE(driver.PrintPage('a'));
  EXPECT_TRUE(driver.AbortDocument());
  EXPECT_TRUE(driver.StartDocument());
  NewLog();
  SetLastError(0);
  EXPECT_FALSE(driver.EndDocument());
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(NewLog()[2], "trace\tRendering\tProcessImageData END (0)");
  EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc", "DrvStartPage", "DrvEndDoc", kHeader,
                            "DrvStartDoc", "DrvEndDoc"}));
  driver.Device().pOEMDM = driver.devmode.get();
  EXPECT_TRUE(driver.PrintDocument("a"));
  const Events events = Take();
  EXPECT_EQ(events[0], kHeader);
  EXPECT_EQ(std::count(events.begin(), events.end(), "<png 60x40 1-bit>"), 1);
}

TEST_F(Job, UnchangedImagesAreReused) {
  Set("dwColorMode=2 dwSetupOnFirstPageOnly=1");
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_TRUE(driver.PrintPage('a'));
  const Events first = Take();
  EXPECT_EQ(std::count(first.begin(), first.end(), "<png 60x40 1-bit>"), 2);
  EXPECT_TRUE(
      first[11].ends_with(",100.00\r\nI:Image0;100.00,30.00,180;0\r\nI:Image1;50.00,30.00,180;1"))
      << first[11];
  EXPECT_TRUE(driver.PrintPage('b'));
  EXPECT_EQ(Take(),
            (Events{"\r\nR Image0;0\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('c'));
  EXPECT_EQ(Take(), (Events{"\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_EQ(Take()[0], "dPNG;1\r\n\x1B:");
  Set("dwColorMode=1");  // keeps nothing, and drops nothing
  EXPECT_TRUE(driver.PrintPage('c'));
  EXPECT_EQ(Take()[0], "dPNG;0\r\n\x1B:");
  Set("dwColorMode=2");
  EXPECT_TRUE(driver.PrintPage('b'));
  EXPECT_EQ(Take()[0], "\r\nR Image1;1");
  EXPECT_TRUE(driver.PrintPage('b'));
  EXPECT_TRUE(driver.PrintPage('a'));
  Take();
  EXPECT_TRUE(driver.EndDocument());  // no page without red has taken the place of the red
  EXPECT_EQ(Take()[0], "\r\nR Image0;0\r\nR Image1;1");
}

// What a page is made of is read when it goes out, where it is placed when it starts.
TEST_F(Job, SettingsChangeBetweenAPagesStartAndItsEnd) {
  Set("szModelCode=K5 dwSpeed=100");
  driver.paint = [](LONG x, LONG y) {
    return x >= 20 && x < 50 && y >= 10 ? (x < 40 ? 0x000000u : 0xFF0000u) : 0xFFFFFFu;
  };
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  Set("dwRotation=1 bCropToContent=1 dwColorMode=2 dwSpeed=55");
  driver.publicDevmode.dmYResolution = 300;
  driver.publicDevmode.dmPaperWidth = 400;
  EXPECT_TRUE(driver.StartPage());
  EXPECT_EQ(Image("0").width, 10u);
  EXPECT_EQ(Image("1").width, 20u);
  // 20 columns are 1.69 mm, 40 are 3.39 mm.
  EXPECT_EQ(Take()[11], kSetup + "\r\nI:Image0;100.00,26.61,180;0\r\nI:Image1;50.00,28.31,180;1");
  driver.PrintPage('a');
  EXPECT_TRUE(driver.EndDocument());
  const Events events = Take();
  EXPECT_NE(events[events.size() - 3].find("\r\nH55,"), std::string::npos);
  EXPECT_NE(events[events.size() - 3].find("I:Image0;30.07,"), std::string::npos);
}

TEST_F(Job, BoundsOfThePrinterClampTheLabel) {
  const std::pair<std::string, std::string> bounds[] = {{"60099", "70099"}, {"60000", "50000"}};
  const struct {
    int bounds;
    SHORT width, length;
    std::string size;
  } rows[] = {{0, 650, 150, "15.00,18.00,65.00"}, {0, 500, 50, "10.00,13.00,60.00"},
              {0, 701, 201, "20.00,23.00,70.00"}, {0, -1, -1, "20.00,23.00,70.00"},
              {0, 600, 100, "10.00,13.00,60.00"}, {0, 599, 99, "10.00,13.00,60.00"},
              {0, 697, 198, "19.80,22.80,69.70"}, {0, -32768, 200, "20.00,23.00,70.00"},
              {1, 550, 150, "15.00,18.00,50.00"}};  // the upper bound comes first
  for (const auto& row : rows) {
    home.WriteFile("system.toml",
                   "[[printer]]\nname = \"label printer\"\ndriver = \"Klein\"\n[printer.label]\n"
                   "min_width_um = " +
                       bounds[row.bounds].first + "\nmax_width_um = " + bounds[row.bounds].second +
                       "\nmin_length_um = 10000\nmax_length_um = 20099\n");
    driver.publicDevmode.dmPaperWidth = row.width;
    driver.publicDevmode.dmPaperLength = row.length;
    EXPECT_TRUE(driver.PrintDocument("a"));
    const Events events = Take();
    EXPECT_NE(events[0].find(";Printer model: Klein\r\n"), std::string::npos);
    const std::string& commands = events[events.size() - 3];
    EXPECT_NE(commands.find("Sl0;0.00,0.00," + row.size + "\r\n"), std::string::npos) << commands;
    // The placement keeps the paper's own size.
    EXPECT_TRUE(row.width != 650 || commands.ends_with("I:Image0;65.00,15.00,180;0")) << commands;
  }
}

}  // namespace
