// What the images of a page are, and where they are placed.

#include <set>

#include "platform/fault.h"
#include "tests/driver/job_test.h"

namespace {

class Pages : public JobTest {
 protected:
  ~Pages() override { PlatformSetFaultHook(nullptr, nullptr); }

  // A document of one page, of that size and those colours.
  void Print(LONG width, LONG height, const std::function<DWORD(LONG, LONG)>& picture) {
    driver.widthPx = width;
    driver.heightPx = height;
    driver.paint = picture;
    driver.writes.clear();
    EXPECT_TRUE(driver.PrintDocument("a"));
  }
};

DWORD Grey(LONG, LONG) { return 0x606060; }
DWORD Paper(LONG, LONG) { return 0xFFFFFF; }
DWORD DotAt30And40(LONG x, LONG y) { return x == 30 && y == 40 ? 0 : 0xFFFFFF; }
DWORD Speckles(LONG x, LONG y) { return x * x % 3 == 0 || (x + 3 * y) % 5 == 0 ? 0 : 0xFFFFFF; }

TEST_F(Pages, DithererAndItsParameterReachTheDots) {
  for (const std::string mode : {"1", "2"}) {
    std::set<std::vector<unsigned char>> pictures;
    for (const std::string ditherer :
         {"wDitherer=0 byDitherParam=0", "wDitherer=2 byDitherParam=1",
          "wDitherer=2 byDitherParam=2", "wDitherer=4 byDitherParam=2"}) {
      Set("dwColorMode=" + mode + " " + ditherer);
      Print(64, 64, Grey);
      pictures.insert(Image(mode == "1" ? "0" : "1").grey);
    }
    EXPECT_EQ(pictures.size(), 4u) << mode;
  }
}

TEST_F(Pages, PageWithoutColourModeIsNotSent) {
  for (const char* mode : {"dwColorMode=0", "dwColorMode=3", "dwColorMode=4294967295"}) {
    Set(mode);
    Print(60, 40, Grey);
    EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc", "DrvStartPage", "DrvSendPage", "\r\nA1\r\n",
                              "DrvEndDoc"}));
  }
}

TEST_F(Pages, ShortBufferIsCompletedWithWhite) {
  Set("wDitherer=0");
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.StartPage());
  SendOddBand(driver, 12, 9, 36 * 4, {0, 0}, false);  // four rows of nine
  EXPECT_TRUE(driver.SendPage());
  EXPECT_TRUE(driver.EndDocument());
  std::vector<unsigned char> grey(12 * 9, 255);
  std::fill(grey.begin(), grey.begin() + 12 * 4, 0);
  EXPECT_EQ(Image().grey, grey);
}

TEST_F(Pages, FailedStageEndsThePage) {
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  // Page copy, borders, orientation, both split planes, both 1-bit images.
  for (int n = 1; n <= 7; ++n) {
    Set("dwColorMode=2 dwUnprintableTop=1000 dwSpeed=100");
    EXPECT_TRUE(driver.EnableDevice());
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    Set("dwSpeed=55");
    Take();
    int left = n;
    PlatformSetFaultHook(
        [](const char* call, void* context) {
          return std::string_view(call) == "GdipCreateBitmapFromScan0" &&
                 --*static_cast<int*>(context) == 0;
        },
        &left);
    EXPECT_FALSE(driver.StartPage());
    PlatformSetFaultHook(nullptr, nullptr);
    EXPECT_EQ(Take(), Events{"DrvStartPage"}) << n;
    // The page that comes has been prepared all the same.
    EXPECT_TRUE(driver.SendBand());
    EXPECT_TRUE(driver.SendPage());
    EXPECT_TRUE(driver.EndDocument());
    const Events last = Take();
    EXPECT_EQ(last[last.size() - 3].find("H55,") != std::string::npos, n > 3) << n;
  }
}

TEST_F(Pages, FirstPageOpensWithBlocksAndErase) {
  SetBlock(*driver.devmode, 0, kBlockPlain, "zero");
  SetBlock(*driver.devmode, 2, kBlockInline, "two");
  EXPECT_TRUE(driver.PrintDocument("aa"));
  const Events events = Take();
  EXPECT_EQ((Events{events.begin() + 4, events.begin() + 8}),
            (Events{"zero\r\n", "two\r\n", "eIMG;*\r\n", "dPNG;0\r\n\x1B:"}));
  EXPECT_EQ(std::count(events.begin(), events.end(), "two\r\n"), 1);
  driver.devmode->wCustomType0 = kBlockInline;
  EXPECT_TRUE(driver.PrintDocument("a"));
  EXPECT_EQ(Take()[4], "two\r\n");
}

TEST_F(Pages, CropKeepsContentAndMovesTheImage) {
  const std::tuple<std::string, DWORD (*)(LONG, LONG), unsigned, unsigned, std::string> rows[] = {
      {"dwRotation=0", DotAt30And40, 90, 1, "100.00,45.00,180"},  // 40 rows are 5.00 mm
      {"dwRotation=1", DotAt30And40, 1, 200, "0.00,96.25,90"},    // 30 columns are 3.75 mm
      {"dwRotation=0", Paper, 90, 1, "100.00,50.00,180"},
      {"dwRotation=1", Paper, 1, 200, "0.00,100.00,90"}};
  driver.publicDevmode.dmPaperWidth = 1000;
  driver.publicDevmode.dmPaperLength = 500;
  const auto placed = [this] { return driver.writes[driver.writes.size() - 3]; };
  for (const auto& [rotation, picture, width, height, place] : rows) {
    Set("bCropToContent=1 " + rotation);
    Print(90, 200, picture);
    EXPECT_EQ(std::pair(Image().width, Image().height), std::pair(width, height));
    EXPECT_TRUE(placed().ends_with("\r\nI:Image0;" + place + ";0")) << placed();
  }
  driver.publicDevmode.dmYResolution = 1;
  Set("dwRotation=2");
  Print(90, 200, DotAt30And40);
  EXPECT_TRUE(placed().ends_with("\r\nI:Image0;0.00,1016.00,0;0")) << placed();
}

TEST_F(Pages, BothSidesShowTheOneColourImageTwice) {
  Print(30, 8, Speckles);
  const PngImage once = Image();
  Set("bTopSideSameAsBottom=1");
  Print(30, 8, Speckles);
  const PngImage twice = Image();
  EXPECT_EQ(std::tuple(twice.width, twice.height, twice.bitDepth, twice.colorType),
            std::tuple(60u, 8u, 8, PNG_COLOR_TYPE_RGB));
  for (unsigned i = 0; i < 60 * 8; ++i) ASSERT_EQ(twice.grey[i], once.At(i % 30, i / 60)) << i;
  Set("dwColorMode=2");  // the option is one-colour only
  Print(30, 8, Speckles);
  EXPECT_EQ(Image("1").width, 30u);
}

}  // namespace
