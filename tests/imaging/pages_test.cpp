// What the images of a page are.

#include "tests/imaging/pages.h"

#include <set>

#include "config/vlx_shared.h"
#include "tests/torture/faults.h"

namespace {

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

// The record has the colour as 0xBBGGRR and the tolerance in hundredths.
TEST_F(Pages, ColourAndToleranceReachTheSplit) {
  constexpr INT kSize = 64;
  Gdiplus::Bitmap page(kSize, kSize, PixelFormat24bppRGB);
  Gdiplus::BitmapData data = {};
  const Gdiplus::Rect whole(0, 0, kSize, kSize);
  page.LockBits(&whole, Gdiplus::ImageLockModeWrite, PixelFormat24bppRGB, &data);
  for (INT i = 0; i < kSize * kSize; ++i) {
    const DWORD color = Mixtures(i % kSize, i / kSize);
    BYTE* pixel = static_cast<BYTE*>(data.Scan0) + i / kSize * data.Stride + 3 * (i % kSize);
    for (int shift : {0, 8, 16}) *pixel++ = static_cast<BYTE>(color >> shift);
  }
  page.UnlockBits(&data);
  for (const auto& [record, argb] :
       {std::pair(0x4A2C86, 0xFF862C4Au), {0x4B2D87, 0xFF872D4Bu}, {0x0000FF, 0xFFFF0000u}}) {
    for (const int hundredths : {0, 37, 60}) {
      Set("dwColorMode=2 nColorTolerance=" + std::to_string(hundredths) +
          " crHighlightColor=" + std::to_string(record));
      Print(kSize, kSize, Mixtures);
      Gdiplus::Bitmap *background = nullptr, *highlight = nullptr;
      ASSERT_EQ(BitmapHelper::SplitImage(&page, argb, hundredths / 100.0, eFloydSteinberg, 0,
                                         &background, &highlight),
                1);
      for (const auto& [name, expected] : {std::pair("0", highlight), {"1", background}}) {
        const PngImage image = Image(name);
        expected->LockBits(&whole, Gdiplus::ImageLockModeRead, PixelFormat24bppRGB, &data);
        for (INT i = 0; i < kSize * kSize; ++i) {
          const auto* row = static_cast<const BYTE*>(data.Scan0) + i / kSize * data.Stride;
          ASSERT_EQ(image.At(i % kSize, i / kSize), row[3 * (i % kSize)]) << record << ": " << i;
        }
        expected->UnlockBits(&data);
        BitmapHelper::DeleteBitmap(expected);
      }
    }
  }
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
    if (!withMemory) Set("dwUnprintableTop=1000");
    EXPECT_TRUE(driver.EnableDevice() && driver.StartDocument());
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
    NewLog();
    FailCall("GdipCreateBitmapFromScan0", n);
    EXPECT_FALSE(driver.StartPage());
    PlatformSetFaultHook(nullptr, nullptr);
    EXPECT_EQ(Take(), Events{"DrvStartPage"}) << n;
    for (const std::string& line : NewLog()) EXPECT_EQ(line.find("SendImage"), line.npos) << line;
    // The page that comes has been prepared all the same.
    EXPECT_TRUE(driver.SendBand());
    EXPECT_TRUE(driver.SendPage());
    EXPECT_TRUE(driver.EndDocument());
    const Events last = Take();
    EXPECT_EQ(last[last.size() - 3].find("H55,") != std::string::npos, n > 3) << n;
  }
  for (const auto& [call, n] : {std::pair("GdipImageRotateFlip", 1),  // the quarter turn
                                {"GdipImageRotateFlip", 2},
                                {"GdipAlloc", 5}}) {
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    FailCall(call, n);
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
      {"IStream::Read", 1, "dwColorMode=2 dwSpeed=100", ""},
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

// Also if there is no memory for the commands of the page that comes.
TEST_F(Pages, EmittedPageHasItsLineInTheLog) {
  const std::string end = "trace\tRendering\tProcessImageData END (";
  bool failed = true;
  for (long n = 1; failed; ++n) {
    EXPECT_TRUE(driver.StartDocument());
    EXPECT_TRUE(driver.PrintPage('a'));
    NewLog();
    Arm(Domain::Memory, n, false);
    const bool passed = driver.StartPage();
    Disarm();
    failed = HasFailed();
    const Events log = NewLog();
    const auto lines = [&log](const std::string& text) {
      return std::count_if(log.begin(), log.end(),
                           [&](const std::string& line) { return line.find(text) != line.npos; });
    };
    EXPECT_TRUE(passed || lines("SendImageToPrinter END") == 0 || lines(end) == 1) << n;
    EXPECT_FALSE(passed && lines(end + "0)") != 0) << n;
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

TEST_F(Pages, ImageWithoutDotsLeavesTheHeldOne) {
  Set("dwColorMode=2");
  static DWORD missing;
  driver.paint = [](LONG x, LONG y) {
    return TwoBlocks(x, y) == missing ? 0xFFFFFF : TwoBlocks(x, y);
  };
  EXPECT_TRUE(driver.StartDocument());
  for (const DWORD color : {0xFFFFFF, 0x000000, 0xFFFFFF, 0xFF0000, 0xFFFFFF}) {
    missing = color;
    EXPECT_TRUE(driver.PrintPage('a'));
  }
  EXPECT_TRUE(driver.EndDocument());
  const Events events = Take();
  EXPECT_EQ(std::count(events.begin(), events.end(), "<png 60x40 1-bit>"), 2);
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
  SaveStages();
  driver.paint = [](LONG, LONG) { return DWORD{0}; };  // nothing to crop
  EXPECT_TRUE(driver.PrintDocument("a"));
  EXPECT_EQ(Stages().size(), 4u);
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
