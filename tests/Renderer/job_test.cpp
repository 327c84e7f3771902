#include <gtest/gtest.h>

#include <thread>

#include "tests/Renderer/client.h"
#include "tests/support/temp_home.h"

namespace {

using Events = std::vector<std::string>;

DWORD Checks(LONG x, LONG y) { return (x / 3 + y / 5) % 2 == 0 ? 0x000000 : 0xFFFFFF; }
DWORD RedAndBlack(LONG x, LONG y) { return x < 20 ? 0xFF0000 : Checks(x, y); }
DWORD BlackOnly(LONG x, LONG y) { return x < 20 ? 0xFFFFFF : Checks(x, y); }

class Job : public ::testing::Test {
 protected:
  void SetUp() override { client.Enable(60, 40); }

  // The events between the driver's own calls, page images as <png>.
  Events Take() {
    Events events = client.Events();
    client.ClearEvents();
    for (std::string& event : events) {
      if (event.starts_with("<png")) event = event.substr(0, event.rfind(' ')) + ">";
    }
    return events;
  }

  TempHome home;
  Client client;
  const std::string header =
      ";Created: <time>\r\n;Driver version: 1.3.0.25\r\n;Printer model: VLX Label\r\n"
      ";Print job name: job\r\n";
  const std::string setup = "mm\r\nzO\r\nJ\r\nH100,0,T,R0\r\nSl0;0.00,0.00,30.00,33.00,50.00";
  const std::string place = "\r\nI:Image0;50.00,30.00,180;0";
};

TEST_F(Job, PagesGoOutOneHookLate) {
  client.publicDevmode.dmCopies = 3;
  EXPECT_TRUE(client.StartDoc());
  EXPECT_EQ(Take(), (Events{header, "DrvStartDoc"}));
  EXPECT_TRUE(client.Page(Checks));
  EXPECT_EQ(Take(), (Events{"DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(client.Page(Checks));
  const Events download = {"dPNG;0\r\n\x1B:", "<png 60x40 1-bit>",
                           "\x1B"
                           "end-of-data\r\n"};
  EXPECT_EQ(Take(), (Events{"eIMG;*\r\n", download[0], download[1], download[2], setup + place,
                            "\r\nA3\r\n", "DrvStartPage", "DrvSendPage"}));
  EXPECT_TRUE(client.EndDoc());
  EXPECT_EQ(Take(), (Events{download[0], download[1], download[2], setup + place, "\r\nA3\r\n",
                            "DrvEndDoc"}));
  EXPECT_TRUE(client.StartDoc());  // the next document opens like the first
  EXPECT_TRUE(client.EndDoc());
  EXPECT_EQ(Take(), (Events{header, "DrvStartDoc", "\r\nA3\r\n", "DrvEndDoc"}));
}

TEST_F(Job, AbortWritesNothingMore) {
  client.StartDoc();
  client.Page(Checks);
  Take();
  EXPECT_TRUE(client.EndDoc(ED_ABORTDOC));
  EXPECT_EQ(Take(), Events{"DrvEndDoc"});
  client.driverResult = FALSE;
  EXPECT_FALSE(client.StartDoc());
  EXPECT_FALSE(client.Page(Checks));
  EXPECT_FALSE(client.EndDoc(ED_ABORTDOC));
}

TEST_F(Job, UnchangedImagesAreReused) {
  client.devmode.dwColorMode = 2;
  client.devmode.dwSetupOnFirstPageOnly = 1;
  client.StartDoc();
  client.Page(RedAndBlack);
  client.Page(RedAndBlack);
  const Events first = Take();
  EXPECT_EQ(std::count(first.begin(), first.end(), "<png 60x40 1-bit>"), 2);
  client.Page(BlackOnly);
  EXPECT_EQ(Take(),
            (Events{"\r\nR Image0;0\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  client.Page(Checks);
  EXPECT_EQ(Take(), (Events{"\r\nR Image1;1", "\r\nA1\r\n", "DrvStartPage", "DrvSendPage"}));
  client.EndDoc();
  EXPECT_EQ(Take()[0], "dPNG;1\r\n\x1B:");
}

TEST_F(Job, SettingsOfAPageAreThoseOfItsStart) {
  client.StartDoc();
  client.Page(Checks);
  client.devmode.dwSpeed = 55;
  client.publicDevmode.dmPaperWidth = 400;
  client.Page(Checks);
  Events events = Take();
  EXPECT_EQ(events[events.size() - 4], setup + place);
  client.EndDoc();
  events = Take();
  EXPECT_NE(events[3].find("H55,"), std::string::npos);
  EXPECT_NE(events[3].find("I:Image0;40.00,"), std::string::npos);
}

TEST_F(Job, ResetCarriesTheDocumentOver) {
  const auto print = [this](bool reset) {
    client.devmode.dwColorMode = 2;
    client.StartDoc();
    client.Page(RedAndBlack);
    client.Page(RedAndBlack);
    if (reset) {
      client.Reset();
      EXPECT_TRUE(client.StartDoc(nullptr, 0));
    }
    client.Page(BlackOnly);
    client.EndDoc();
    Events events = client.Events();
    client.ClearEvents();
    EXPECT_EQ(std::erase(events, "DrvStartDoc"), reset ? 2u : 1u);
    return events;
  };
  EXPECT_EQ(print(true), print(false));
}

TEST_F(Job, DeviceContextMayEndWithinADocument) {
  client.devmode.dwColorMode = 2;
  client.StartDoc();
  client.Page(RedAndBlack);
  client.Page(RedAndBlack);  // leaves a captured page and two kept images behind: nothing leaks
}

TEST_F(Job, BoundsOfThePrinterClampTheLabel) {
  home.WriteFile("system.toml",
                 "[[printer]]\nname = \"label printer\"\ndriver = \"Klein\"\n[printer.label]\n"
                 "min_width_um = 60000\nmax_width_um = 70099\nmin_length_um = 10000\n"
                 "max_length_um = 20000\n");
  client.StartDoc();
  client.Page(Checks);
  client.EndDoc();
  const Events events = Take();
  EXPECT_NE(events[0].find(";Printer model: Klein\r\n"), std::string::npos);
  EXPECT_NE(events[events.size() - 3].find(",20.00,23.00,60.00"), std::string::npos);
  EXPECT_TRUE(events[events.size() - 3].ends_with(place));  // the placement keeps the paper's size
}

// Prints a document whose page numbers, byte counts and images are its own.
Events PrintDocument(int pages, const std::string& text) {
  Client client;
  client.Enable(60, 40);
  client.devmode.dwColorMode = 2;
  client.devmode.wCustomType0 = kBlockInline;
  text.copy(client.devmode.szCustomText0, 70);
  client.StartDoc();
  for (int page = 0; page < pages; ++page) {
    client.Page([page](LONG x, LONG y) { return RedAndBlack(x + page / 3, y); });
  }
  client.EndDoc();
  return client.Events();
}

TEST(Jobs, TwoAtOnceAreAsTwoOneAfterTheOther) {
  const TempHome home;
  const Events first = PrintDocument(40, "first {n}");
  const Events second = PrintDocument(25, "second {n}");
  Events firstAtOnce, secondAtOnce;
  std::thread other([&] { secondAtOnce = PrintDocument(25, "second {n}"); });
  firstAtOnce = PrintDocument(40, "first {n}");
  other.join();
  EXPECT_EQ(firstAtOnce, first);
  EXPECT_EQ(secondAtOnce, second);
}

TEST(Jobs, LogTellsTheRoadOfAPage) {
  const TempHome home;
  PrintDocument(1, "");
  std::vector<std::string> lines = home.LogLines();
  const auto start = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.find("OEMStartDoc BEGIN") != line.npos;
  });
  lines.erase(lines.begin(), start);
  for (std::string& line : lines) {
    for (std::size_t at; (at = line.find("=0x")) != line.npos;) {
      line.replace(at, line.find_first_of(",)", at) - at, "=#");
    }
  }
  const Events page(lines.begin() + 3, lines.begin() + 20);
  const std::string trace = "trace\tRendering\t";
  EXPECT_EQ(lines[0], trace + "OEMStartDoc BEGIN (dwJobId=7, OemPDEV=#)");
  EXPECT_EQ(page, (Events{
                      trace + "OEMStartPage BEGIN (OemPDEV=#)",
                      trace + "ProcessImageData BEGIN",
                      trace + "ProcessImageData END (no bitmap)",
                      "trace\t\tOEMStartPage calling DrvStartPage...",
                      trace + "OEMStartPage END (1 = 1 && 1)",
                      trace + "OEMStartBanding BEGIN (OemPDEV=#, pptl.x=0, pptl.y=0)",
                      "trace\t\tOEMStartBanding calling DrvStartBanding...",
                      trace + "OEMStartBanding END (1)",
                      trace + "OEMNextBand BEGIN (OemPDEV=#, pptl.x=0, pptl.y=0)",
                      "trace\t\tOEMNextBand calling DrvNextBand...",
                      trace + "ImageProcessing BEGIN (Portrait, y-Pixel 0-10, OemPDEV=#)",
                      trace + "ImageProcessing END (S_OK)",
                      trace + "OEMNextBand END (1)",
                      trace + "OEMNextBand BEGIN (OemPDEV=#, pptl.x=0, pptl.y=10)",
                      "trace\t\tOEMNextBand calling DrvNextBand...",
                      trace + "ImageProcessing BEGIN (Portrait, y-Pixel 10-20, OemPDEV=#)",
                      trace + "ImageProcessing END (S_OK)",
                  }));
  const Events end = {
      trace + "OEMEndDoc BEGIN (OemPDEV=#)", trace + "ProcessImageData BEGIN",
      trace + "SendImageToPrinter START",    trace + "SendImageToPrinter END (1)",
      trace + "ProcessImageData END (1)",    "trace\t\tOEMEndDoc calling DrvEndDoc...",
      trace + "OEMEndDoc END (1 = 1 && 1)"};
  EXPECT_NE(std::search(lines.begin(), lines.end(), end.begin(), end.end()), lines.end());
}

}  // namespace
