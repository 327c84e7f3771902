// What the images of a page are, and where they are placed.

#include <set>

#include "platform/extensions.h"
#include "tests/driver/job_test.h"

namespace {

class Pages : public JobTest {
 protected:
  ~Pages() override {
    PlatformSetFaultHook(nullptr, nullptr);
    unsetenv("VLX_SAVE_BITMAPS");
  }

  using Picture = DWORD (*)(LONG x, LONG y);
  // A document of one page, of that size and those colours.
  void Print(LONG width, LONG height, Picture picture) {
    driver.widthPx = width;
    driver.heightPx = height;
    driver.paint = picture;
    driver.writes.clear();
    EXPECT_TRUE(driver.PrintDocument("a"));
  }
  // Lets one platform call fail, the n-th of that name.
  void FailCall(const char* name, int n) {
    m_failing = {name, n};
    PlatformSetFaultHook(
        [](const char* call, void* context) {
          auto& failing = *static_cast<std::pair<std::string, int>*>(context);
          return failing.first == call && --failing.second == 0;
        },
        &m_failing);
  }
  // The names of the stages saved since SaveStages, sorted.
  Events Stages() const {
    Events names;
    for (const auto& entry : std::filesystem::directory_iterator(home.Path("stages"))) {
      names.push_back(entry.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  PngImage Stage(const std::string& name) const {
    std::ifstream file(home.Path("stages/" + name + ".png"), std::ios::binary);
    return DecodePng({std::istreambuf_iterator<char>(file), {}});
  }
  void SaveStages() {
    std::filesystem::remove_all(home.Path("stages"));
    std::filesystem::create_directory(home.Path("stages"));
    setenv("VLX_SAVE_BITMAPS", home.Path("stages").c_str(), 1);
  }

 private:
  std::pair<std::string, int> m_failing;
};

DWORD Grey(LONG, LONG) { return 0x606060; }
DWORD Paper(LONG, LONG) { return 0xFFFFFF; }
DWORD DotAt30And40(LONG x, LONG y) { return x == 30 && y == 40 ? 0 : 0xFFFFFF; }
DWORD Speckles(LONG x, LONG y) { return x * x % 3 == 0 || (x + 3 * y) % 5 == 0 ? 0 : 0xFFFFFF; }
DWORD Orange(LONG, LONG) { return 0xFF6030; }
// Black, and to the right of it red, away from the edges.
DWORD TwoBlocks(LONG x, LONG y) {
  if (y < 8 || y >= 24) return 0xFFFFFF;
  return x >= 12 && x < 20 ? 0x000000 : x >= 30 && x < 44 ? 0xFF0000 : 0xFFFFFF;
}

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

TEST_F(Pages, ToleranceCountsInHundredths) {
  std::set<std::vector<unsigned char>> pictures;
  for (const char* tolerance : {"0", "60"}) {
    Set("dwColorMode=2 nColorTolerance=" + std::string(tolerance));
    Print(64, 64, Orange);
    PngImage both = Image("0");
    const PngImage background = Image("1");
    both.grey.insert(both.grey.end(), background.grey.begin(), background.grey.end());
    pictures.insert(both.grey);
  }
  EXPECT_EQ(pictures.size(), 2u);
}

TEST_F(Pages, PageWithoutColourModeIsNotSent) {
  for (const char* mode : {"dwColorMode=0", "dwColorMode=3", "dwColorMode=4294967295"}) {
    Set(mode);
    NewLog();
    Print(60, 40, Grey);
    EXPECT_EQ(Take(), (Events{kHeader, "DrvStartDoc", "DrvStartPage", "DrvSendPage", "\r\nA1\r\n",
                              "DrvEndDoc"}));
    const Events log = NewLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "trace\tRendering\tProcessImageData END (1)"), 1);
  }
}

TEST_F(Pages, ShortBufferIsCompletedWithWhite) {
  SaveStages();
  for (const bool withMemory : {true, false}) {
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.StartPage());
    SendOddBand(driver, 12, 9, 36 * 4, {0, 0}, false);  // four rows of nine
    EXPECT_TRUE(driver.SendPage());
    if (!withMemory) FailCall("LocalReAlloc", 1);
    EXPECT_EQ(driver.EndDocument(), withMemory);
  }
  std::vector<unsigned char> grey(12 * 9, 255);
  std::fill(grey.begin(), grey.begin() + 12 * 4, 0x55);
  EXPECT_EQ(Stage("job00007_page0001_a_OriginalBuffer").grey, grey);
}

TEST_F(Pages, RefusedBandHandsNothingBack) {
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.StartPage());
  NewLog();
  EXPECT_FALSE(driver.SendBand({4, 4, 48, {0, 0}, nullptr}));
  EXPECT_EQ(driver.bandResult, nullptr);
  EXPECT_EQ(NewLog(), Events{"error\tRendering\tImageProcessing END (E_FAIL, invalid argument)"});
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  EXPECT_FALSE(driver.SendBand({0, 4, 48, {0, 0}, nullptr, true}));
  EXPECT_EQ(driver.bandResult, nullptr);
  driver.publicDevmode.dmOrientation = DMORIENT_PORTRAIT;
  NewLog();
  EXPECT_TRUE(driver.SendBand({4, 4, 48, {0, 7}, nullptr, true}));
  EXPECT_EQ(NewLog()[0],
            "trace\tRendering\tImageProcessing BEGIN (Portrait, y-Pixel 7-11, OemPDEV=#)");
}

TEST_F(Pages, FailedStageEndsThePage) {
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  // Page copy, borders, orientation, dithered image and 1-bit image, in two colours both twice.
  for (int i = 0; i < 5 + 7; ++i) {
    const int n = i < 5 ? i + 1 : i - 4;
    Set("dwUnprintableTop=1000 dwSpeed=100 dwColorMode=" + std::string(i < 5 ? "1" : "2"));
    EXPECT_TRUE(driver.EnableDevice());
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    Set("dwSpeed=55");
    Take();
    FailCall("GdipCreateBitmapFromScan0", n);
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
  for (const int n : {1, 2}) {  // the quarter turn
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    FailCall("GdipImageRotateFlip", n);
    EXPECT_FALSE(driver.StartPage());
    PlatformSetFaultHook(nullptr, nullptr);
    EXPECT_TRUE(driver.AbortDocument());
  }
}

TEST_F(Pages, ImageThatCannotBeEncodedIsNotSent) {
  const std::string stream = "CreateStreamOnHGlobal for pPngStream";
  const std::string why = " (hResult=E_OUTOFMEMORY, GetLastError=5)";
  const std::tuple<const char*, int, const char*, std::string> rows[] = {
      {"GdipGetImageEncodersSize", 1, "", "GetCLSID for img/png failed"},
      {"GdipGetImageEncoders", 1, "", "GetCLSID for img/png failed"},
      {"CreateStreamOnHGlobal", 1, "", stream + " failed" + why},
      {"CreateStreamOnHGlobal", 2, "", stream + "Highlight failed" + why},
      {"GdipSaveImageToStream", 1, "dwColorMode=2", "pUsedBackgroundBitmap->Save failed!!!"},
      {"GdipSaveImageToStream", 2, "", "pUsedHighlightBitmap->Save failed!!!"},
      {"GdipSaveImageToStream", 1, "dwColorMode=1 bTopSideSameAsBottom=1",
       "pTopSideSameAsBottomBitmap->Save failed!!!"},
      {"GdipAlloc", 5, "", "Graphics::FromImage(pTopSideSameAsBottomBitmap) failed!!!"},
      {"GdipCreateBitmapFromScan0", 4, "", ""},
      {"IStream::Stat", 1, "bTopSideSameAsBottom=0", ""},
      {"IStream::Seek", 1, "", ""},
      {"IStream::Read", 1, "", ""},
      {"LocalAlloc", 2, "", ""},
      {"IStream::Read", 2, "dwColorMode=2", ""}};
  for (const auto& [call, n, fields, line] : rows) {
    Set(fields);
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    Take();
    NewLog();
    SetLastError(5);
    FailCall(call, n);
    EXPECT_TRUE(driver.StartPage());
    PlatformSetFaultHook(nullptr, nullptr);
    Events events = Take();
    if (std::string(fields) == "dwColorMode=2" && line.empty()) {  // the first image is out already
      events.erase(events.begin() + 1, events.begin() + 4);
    }
    EXPECT_EQ(events, (Events{"eIMG;*\r\n", "\r\nA1\r\n", "DrvStartPage"})) << call << line;
    const Events log = NewLog();
    Events expected = {"trace\tRendering\tSendImageToPrinter START"};
    if (!line.empty()) expected.push_back("error\t\tSendImageToPrinter: " + line);
    expected.push_back("trace\tRendering\tSendImageToPrinter END (0)");
    ASSERT_GE(log.size(), 2 + expected.size());
    EXPECT_EQ((Events{log.begin() + 2, log.begin() + 2 + expected.size()}), expected);
    EXPECT_TRUE(driver.AbortDocument());
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
  const struct {
    std::string fields;
    Picture picture;
    unsigned width, height;
    int dot;  // the only black one, counted row by row
    std::string place;
  } rows[] = {{"dwRotation=0", DotAt30And40, 90, 1, 30, "100.00,45.00,180"},  // 40 rows: 5.00 mm
              {"dwRotation=1", DotAt30And40, 1, 200, 40, "0.00,96.25,90"},    // 30 columns: 3.75 mm
              {"dwRotation=3", DotAt30And40, 1, 200, 40, "50.00,3.75,270"},
              {"dwRotation=5", DotAt30And40, 90, 1, 30, "50.00,95.00,270"},
              {"dwRotation=0", Paper, 90, 1, -1, "100.00,50.00,180"},
              {"dwRotation=1", Paper, 1, 200, -1, "0.00,100.00,90"}};
  driver.publicDevmode.dmPaperWidth = 1000;
  driver.publicDevmode.dmPaperLength = 500;
  const auto placed = [this] { return driver.writes[driver.writes.size() - 3]; };
  for (const auto& row : rows) {
    Set("bCropToContent=1 " + row.fields);
    Print(90, 200, row.picture);
    std::vector<unsigned char> dots(row.width * row.height, 255);
    if (row.dot >= 0) dots[row.dot] = 0;
    EXPECT_EQ(Image().width, row.width);
    EXPECT_EQ(Image().grey, dots) << row.fields;
    EXPECT_TRUE(placed().ends_with("\r\nI:Image0;" + row.place + ";0")) << placed();
  }
  driver.publicDevmode.dmYResolution = 1;
  Set("dwRotation=2");
  Print(90, 200, DotAt30And40);
  EXPECT_TRUE(placed().ends_with("\r\nI:Image0;0.00,1016.00,0;0")) << placed();
}

TEST_F(Pages, CropByColumnsKeepsEveryBit) {
  for (const auto& [first, last] : {std::pair(3, 60), {5, 13}, {8, 23}, {9, 61}, {1, 8}}) {
    static LONG from, to;
    from = first;
    to = last;
    Set("bCropToContent=1 dwRotation=1");
    Print(62, 7, [](LONG x, LONG y) {
      return x >= from && x <= to ? Speckles(x - from, y) & Speckles(to - x, y) : 0xFFFFFF;
    });
    const PngImage cropped = Image();
    ASSERT_EQ(cropped.width, static_cast<unsigned>(last - first + 1)) << first;
    for (LONG y = 0; y < 7; ++y) {
      for (LONG x = 0; x <= last - first; ++x) {
        EXPECT_EQ(cropped.At(x, y), driver.paint(first + x, y) & 0xFF) << first << ": " << x;
      }
    }
  }
}

TEST_F(Pages, HighlightIsTheColourOfTheRecord) {
  for (const auto& [color, ink] :
       {std::pair("255", 0xFF0000u), {"65280", 0x00FF00u}, {"16711680", 0x0000FFu}}) {
    static DWORD painted;
    painted = ink;
    Set("dwColorMode=2 crHighlightColor=" + std::string(color));
    Print(16, 8, [](LONG x, LONG) { return x < 8 ? painted : 0xFFFFFF; });
    EXPECT_EQ(Image("0").At(3, 3), 0) << color;
    EXPECT_EQ(Image("1").width, 0u) << color;  // nothing is left for black
  }
}

// Two images can differ and yet be alike where they have content.
TEST_F(Pages, CroppedImagesAreComparedUncropped) {
  Set("dwColorMode=2 bCropToContent=1");
  static LONG down;
  down = 0;
  driver.paint = [](LONG x, LONG y) { return TwoBlocks(x, y - down); };
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  down = 8;
  Take();
  for (const int downloads : {2, 2, 0}) {
    EXPECT_TRUE(downloads != 0 ? driver.PrintPage('a') : driver.EndDocument());
    const Events events = Take();
    EXPECT_EQ(std::count(events.begin(), events.end(), "<png 60x16 1-bit>"), downloads);
  }
  // Content in the first row is content.
  Print(60, 40, [](LONG x, LONG y) { return TwoBlocks(x, y + 8); });
  EXPECT_EQ(std::pair(Image("0").height, Image("1").height), std::pair(16u, 16u));
}

TEST_F(Pages, StagesAreSavedByJobPageAndName) {
  driver.publicDevmode.dmOrientation = DMORIENT_LANDSCAPE;
  Set("dwColorMode=2 bCropToContent=1 dwUnprintableTop=1000 dwUnprintableRight=500");
  EXPECT_TRUE(driver.EnableDevice());
  SaveStages();
  driver.jobId = 12;
  driver.paint = TwoBlocks;
  EXPECT_TRUE(driver.PrintDocument("aa"));
  const std::string prefix = "job00012_page0002_";
  Events expected;
  for (const std::string& page : {std::string("job00012_page0001_"), prefix}) {
    for (const char* stage :
         {"a_OriginalBuffer", "b_NonprintableBorders", "c_CorrectedOrientation",
          "d_2C_Background24BPP", "d_2C_Highlight24BPP", "e_2C_Background1BPP",
          "e_2C_Highlight1BPP", "f_2C_Background1BPP_Opt", "f_2C_Highlight1BPP_Opt"}) {
      expected.push_back(page + stage);
    }
  }
  ASSERT_EQ(Stages(), expected);
  EXPECT_EQ(Stage(prefix + "f_2C_Background1BPP_Opt").grey, Image("1").grey);
  EXPECT_EQ(Stage(prefix + "f_2C_Highlight1BPP_Opt").grey, Image("0").grey);
  const PngImage whole = Stage(prefix + "a_OriginalBuffer");
  const PngImage bordered = Stage(prefix + "b_NonprintableBorders");
  const PngImage turned = Stage(prefix + "c_CorrectedOrientation");
  ASSERT_EQ(std::tuple(whole.width, bordered.width, turned.width), std::tuple(60u, 60u, 40u));
  const LONG left = driver.info.ptlPhysOffset.x, top = driver.info.ptlPhysOffset.y;
  EXPECT_EQ(std::pair(left, top), std::pair(7, 3));
  for (LONG i = 0; i < 60 * 40; ++i) {
    const LONG x = i % 60, y = i / 60;
    EXPECT_EQ(whole.At(x, y), TwoBlocks(x, y) >> 16);
    EXPECT_EQ(bordered.At(x, y), x < left || y < top ? 255 : whole.At(x - left, y - top));
    EXPECT_EQ(turned.At(39 - y, x), bordered.At(x, y));
  }

  driver.publicDevmode.dmOrientation = DMORIENT_PORTRAIT;
  Set("dwColorMode=1 bTopSideSameAsBottom=1 dwUnprintableTop=0 dwUnprintableRight=0");
  EXPECT_TRUE(driver.EnableDevice());
  SaveStages();
  driver.jobId = 3;
  EXPECT_TRUE(driver.PrintDocument("a"));
  EXPECT_EQ(
      Stages(),
      (Events{"job00003_page0001_a_OriginalBuffer", "job00003_page0001_d_1C_Background24BPP",
              "job00003_page0001_e_1C_Background1BPP", "job00003_page0001_f_1C_Background1BPP_Opt",
              "job00003_page0001_g_1C_Background_TopSideSameAsBottom"}));
  EXPECT_EQ(Stage("job00003_page0001_g_1C_Background_TopSideSameAsBottom").width, 120u);
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
