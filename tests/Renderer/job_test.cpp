#include "tests/driver/job_test.h"

namespace {

class Job : public JobTest {};

const std::string kSetup = "mm\r\nzO\r\nJ\r\nH100,0,T,R0\r\nSl0;0.00,0.00,30.00,33.00,50.00";
const std::string kPlace = "\r\nI:Image0;50.00,30.00,180;0";

TEST_F(Job, PagesGoOutOneHookLate) {
  driver.publicDevmode.dmCopies = 3;
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_EQ(Take(), (Events{"DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  const Events download = {"dPNG;0\r\n\x1B:", "<png 60x40 1-bit>",
                           "\x1B"
                           "end-of-data\r\n"};
  EXPECT_EQ(Take(), (Events{"eIMG;*\r\n", download[0], download[1], download[2], kSetup + kPlace,
                            "\r\nA3\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.EndDocument());
  EXPECT_EQ(Take(), (Events{download[0], download[1], download[2], kSetup + kPlace, "\r\nA3\r\n",
                            "DrvEndDoc"}));
  EXPECT_TRUE(driver.StartDocument());  // the next document opens like the first
  EXPECT_TRUE(driver.EndDocument());
  EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc", "\r\nA3\r\n", "DrvEndDoc"}));
}

TEST_F(Job, AbortWritesNothingMore) {
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  Take();
  EXPECT_TRUE(driver.AbortDocument());
  EXPECT_EQ(Take(), Events{"DrvEndDoc"});
  driver.answers = {
      {INDEX_DrvStartDoc, FALSE}, {INDEX_DrvStartPage, FALSE}, {INDEX_DrvEndDoc, FALSE}};
  EXPECT_FALSE(driver.StartDocument());
  EXPECT_FALSE(driver.PrintPage('a'));
  EXPECT_FALSE(driver.AbortDocument());
}

TEST_F(Job, UnchangedImagesAreReused) {
  driver.devmode->dwColorMode = 2;
  driver.devmode->dwSetupOnFirstPageOnly = 1;
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_TRUE(driver.PrintPage('a'));
  const Events first = Take();
  EXPECT_EQ(std::count(first.begin(), first.end(), "<png 60x40 1-bit>"), 2);
  EXPECT_TRUE(driver.PrintPage('b'));
  EXPECT_EQ(Take(),
            (Events{"\r\nR Image0;0\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('c'));
  EXPECT_EQ(Take(), (Events{"\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_EQ(Take()[0], "dPNG;1\r\n\x1B:");
  EXPECT_TRUE(driver.EndDocument());  // the printer still holds the highlight of two pages ago
  const Events last = Take();
  EXPECT_EQ(last[0], "dPNG;1\r\n\x1B:");
  EXPECT_EQ(std::count(last.begin(), last.end(), "<png 60x40 1-bit>"), 1);
}

TEST_F(Job, SettingsOfAPageAreThoseOfItsStart) {
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  driver.devmode->dwSpeed = 55;
  driver.publicDevmode.dmPaperWidth = 400;
  EXPECT_TRUE(driver.PrintPage('a'));
  Events events = Take();
  EXPECT_EQ(events[events.size() - 4], kSetup + kPlace);
  EXPECT_TRUE(driver.EndDocument());
  events = Take();
  EXPECT_NE(events[3].find("H55,"), std::string::npos);
  EXPECT_NE(events[3].find("I:Image0;40.00,"), std::string::npos);
}

TEST_F(Job, ResetCarriesTheDocumentOver) {
  driver.devmode->dwColorMode = 2;
  EXPECT_TRUE(driver.PrintDocument("aab"));
  Events without = Take();
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_TRUE(driver.PrintPage('a'));
  EXPECT_TRUE(driver.ResetDevice());
  EXPECT_TRUE(driver.PrintPage('b'));
  EXPECT_TRUE(driver.EndDocument());
  Events with = Take();
  EXPECT_EQ(std::erase(without, "DrvStartDoc"), 1u);
  EXPECT_EQ(std::erase(with, "DrvStartDoc"), 2u);
  EXPECT_EQ(with, without);
}

TEST_F(Job, BoundsOfThePrinterClampTheLabel) {
  home.WriteFile("system.toml",
                 "[[printer]]\nname = \"label printer\"\ndriver = \"Klein\"\n[printer.label]\n"
                 "min_width_um = 60000\nmax_width_um = 70099\nmin_length_um = 10000\n"
                 "max_length_um = 20000\n");
  EXPECT_TRUE(driver.PrintDocument("a"));
  const Events events = Take();
  EXPECT_NE(events[0].find(";Printer model: Klein\r\n"), std::string::npos);
  EXPECT_NE(events[events.size() - 3].find(",20.00,23.00,60.00"), std::string::npos);
  EXPECT_TRUE(events[events.size() - 3].ends_with(kPlace));  // the placement keeps the paper's size
}

TEST_F(Job, LogFollowsThePage) {
  EXPECT_TRUE(driver.PrintDocument("a"));
  std::string log;
  for (const std::string& line : home.LogLines()) log += line + "\n";
  for (std::size_t at; (at = log.find("=0x")) != log.npos;) {
    log.replace(at, log.find_first_not_of("0123456789abcdef", at + 3) - at, "=#");
  }
  for (const char* part : {
           R"(
trace	Rendering	OEMStartDoc BEGIN (dwJobId=7, OemPDEV=#)
)",
           R"(
trace	Rendering	OEMStartPage BEGIN (OemPDEV=#)
trace	Rendering	ProcessImageData BEGIN
trace	Rendering	ProcessImageData END (no bitmap)
trace		OEMStartPage calling DrvStartPage...
trace	Rendering	OEMStartPage END (1 = 1 && 1)
trace	Rendering	OEMStartBanding BEGIN (OemPDEV=#, pptl.x=0, pptl.y=0)
trace		OEMStartBanding calling DrvStartBanding...
trace	Rendering	OEMStartBanding END (1)
trace	Rendering	ImageProcessing BEGIN (Portrait, y-Pixel 0-10, OemPDEV=#)
trace	Rendering	ImageProcessing END (S_OK)
trace	Rendering	OEMNextBand BEGIN (OemPDEV=#, pptl.x=0, pptl.y=0)
trace		OEMNextBand calling DrvNextBand...
trace	Rendering	OEMNextBand END (1)
trace	Rendering	ImageProcessing BEGIN (Portrait, y-Pixel 10-20, OemPDEV=#)
)",
           R"(
trace	Rendering	OEMEndDoc BEGIN (OemPDEV=#)
trace	Rendering	ProcessImageData BEGIN
trace	Rendering	SendImageToPrinter START
trace	Rendering	SendImageToPrinter END (1)
trace	Rendering	ProcessImageData END (1)
trace		OEMEndDoc calling DrvEndDoc...
trace	Rendering	OEMEndDoc END (1 = 1 && 1)
)"}) {
    EXPECT_NE(log.find(part), std::string::npos) << log;
  }
}

}  // namespace
