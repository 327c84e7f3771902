#include <gtest/gtest.h>

#include <set>

#include "imaging/bitmap_owner.h"
#include "imaging/image_emission.h"
#include "imaging/page_pipeline.h"
#include "platform/fault.h"
#include "tests/support/page_device.h"

namespace {

constexpr DWORD kBlack = 0x000000, kPaper = 0xFFFFFF, kRed = 0xFF0000;

using Picture = std::function<DWORD(INT x, INT y)>;

Picture Speckles(const std::vector<DWORD>& colors) {
  return [=](INT x, INT y) { return colors[(x * x + 31 * y + x * y) % colors.size()]; };
}
Picture Dot(INT left, INT top) {
  return [=](INT x, INT y) { return x == left && y == top ? kBlack : kPaper; };
}

class Pipeline : public ::testing::Test {
 protected:
  Pipeline() {
    device.state.dwPageCount = 1;
    device.devmode.crHighlightColor = 0x000000FF;
  }
  ~Pipeline() override { PlatformSetFaultHook(nullptr, nullptr); }

  // Prepares a page, which takes the settings, and sends it.
  INT Process(INT width, INT height, const Picture& picture) {
    device.state.ResetPage();
    ProcessImageData(&device.surface);
    device.writes.clear();
    device.CapturePage(width, height, picture);
    return ProcessImageData(&device.surface);
  }
  PngImage Image(const std::string& name = "0") const { return device.Downloads(name).at(0); }

  PageDevice device;
};

TEST_F(Pipeline, DithererAndItsParameterReachTheDots) {
  for (const DWORD mode : {1u, 2u}) {
    device.devmode.dwColorMode = mode;
    std::set<std::vector<unsigned char>> pictures;
    for (const auto& [ditherer, parameter] :
         {std::pair(eThreshold, 0), {eOrdered, 1}, {eOrdered, 2}, {eBlueNoise, 2}}) {
      device.devmode.wDitherer = static_cast<WORD>(ditherer);
      device.devmode.byDitherParam = static_cast<BYTE>(parameter);
      device.state.KeepBackground(nullptr);  // the printer holds no image any more
      EXPECT_EQ(Process(64, 64, Speckles({0x606060})), 1);
      pictures.insert(Image(std::to_string(mode - 1)).grey);
    }
    EXPECT_EQ(pictures.size(), 4u) << mode;
  }
}

TEST_F(Pipeline, PageWithoutColourModeIsNotSent) {
  for (const DWORD mode : {0u, 3u, 0xFFFFFFFFu}) {
    device.devmode.dwColorMode = mode;
    EXPECT_EQ(Process(8, 8, Speckles({kBlack})), 1);
    EXPECT_TRUE(device.writes.empty());
    EXPECT_EQ(device.state.pBitmapBuffer, nullptr);
  }
  EXPECT_NE(device.state.strPageSetup, "");
}

TEST_F(Pipeline, ShortBufferIsCompletedWithWhite) {
  device.CapturePage(12, 4, Speckles({kBlack}));
  device.state.bmiPage.biHeight = 9;
  EXPECT_EQ(ProcessImageData(&device.surface), 1);
  std::vector<unsigned char> grey(12 * 9, 255);
  std::fill(grey.begin(), grey.begin() + 12 * 4, 0);
  EXPECT_EQ(Image().grey, grey);
}

TEST_F(Pipeline, FailedStageEndsThePage) {
  device.devmode.dwColorMode = 2;
  device.publicDevmode.dmOrientation = 2;
  device.state.gdiPhysOffsetX = 2;
  // Page copy, borders, orientation, both split planes, both 1-bit images.
  for (int n = 1; n <= 7; ++n) {
    int left = n;
    PlatformSetFaultHook(
        [](const char* call, void* context) {
          return std::string_view(call) == "GdipCreateBitmapFromScan0" &&
                 --*static_cast<int*>(context) == 0;
        },
        &left);
    device.state.dwPageCount = static_cast<DWORD>(n);
    device.devmode.dwSpeed = 100 + n;
    device.CapturePage(20, 10, Speckles({kBlack, kPaper, kRed}));
    EXPECT_EQ(ProcessImageData(&device.surface), 0) << n;
    EXPECT_TRUE(device.writes.empty()) << n;
    // The coming page is still prepared.
    const bool prepared = device.state.dmPrivateCopy.dwSpeed == device.devmode.dwSpeed;
    EXPECT_EQ(prepared, n > 3) << n;
    device.state.ResetPage();
  }
}

TEST_F(Pipeline, FirstPageOpensWithBlocksAndErase) {
  device.SetBlock(0, 3, "zero");
  device.SetBlock(2, 4, "two");
  EXPECT_EQ(Process(100, 50, Dot(0, 0)), 1);
  EXPECT_TRUE(device.Stream().starts_with("zero\r\ntwo\r\neIMG;*\r\ndPNG;0\r\n\x1B:"));
  EXPECT_EQ(device.state.job.dwJobBytesWritten, device.Stream().size());
  device.devmode.wCustomType0 = kBlockInline;
  Process(100, 50, Dot(0, 0));
  EXPECT_EQ(device.writes[0], "two\r\n");
  device.state.dwPageCount = 2;
  Process(100, 50, Dot(0, 0));
  EXPECT_EQ(device.writes[0], "dPNG;0\r\n\x1B:");
}

TEST_F(Pipeline, CropKeepsContentAndMovesTheImage) {
  struct Row {
    DWORD rotation;
    Picture picture;
    unsigned width, height;
    const char* place;
  };
  const Row rows[] = {{0, Dot(30, 40), 90, 1, "100.00,45.00,180"},  // 40 rows are 5.00 mm
                      {1, Dot(30, 40), 1, 200, "0.00,96.25,90"},    // 30 columns are 3.75 mm
                      {0, Speckles({kPaper}), 90, 1, "100.00,50.00,180"},
                      {1, Speckles({kPaper}), 1, 200, "0.00,100.00,90"}};
  device.devmode.bCropToContent = 1;
  for (const Row& row : rows) {
    device.devmode.dwRotation = row.rotation;
    Process(90, 200, row.picture);
    EXPECT_EQ(std::pair(Image().width, Image().height), std::pair(row.width, row.height));
    EXPECT_TRUE(device.writes.back().ends_with(";" + std::string(row.place) + ";0"));
  }
  device.publicDevmode.dmYResolution = 1;
  device.devmode.dwRotation = 2;
  Process(90, 200, Dot(0, 2));
  EXPECT_TRUE(device.writes.back().ends_with("\r\nI:Image0;0.00,50.80,0;0"));
}

TEST_F(Pipeline, BothSidesShowTheOneColourImageTwice) {
  const Picture picture = Speckles({kBlack, kPaper, kPaper});
  Process(30, 8, picture);
  const PngImage once = Image();
  device.devmode.bTopSideSameAsBottom = 1;
  Process(30, 8, picture);
  const PngImage twice = Image();
  EXPECT_EQ(std::tuple(twice.width, twice.height, twice.bitDepth, twice.colorType),
            std::tuple(60u, 8u, 8, PNG_COLOR_TYPE_RGB));
  for (unsigned i = 0; i < 60 * 8; ++i) ASSERT_EQ(twice.grey[i], once.At(i % 30, i / 60)) << i;
  device.devmode.dwColorMode = 2;  // the option is one-colour only
  Process(30, 8, Speckles({kBlack, kRed}));
  EXPECT_EQ(std::pair(Image("0").width, Image("1").width), std::pair(30u, 30u));
}

TEST_F(Pipeline, WhatIsMissingIsNotPlacedOrNotWritten) {
  const BitmapOwner image = MakeBitmap(8, 8, Gdiplus::PixelFormat1bppIndexed, WTEXT("test"));
  const auto send = [&](SURFOBJ* surface) {
    return SendImageToPrinter(surface, image.get(), nullptr, false, false);
  };
  device.object.pPublicDM = nullptr;
  EXPECT_EQ(send(&device.surface), 1);
  EXPECT_EQ(device.writes.size(), 4u);  // the image alone
  EXPECT_EQ(send(nullptr), 0);
  for (void** argument : {&device.object.pOEMDM, &device.object.pdevOEM}) {
    *argument = nullptr;
    SetLastError(0);
    EXPECT_EQ(send(&device.surface), 0);
    EXPECT_EQ(GetLastError(), 87u);
  }
  EXPECT_EQ(device.writes.size(), 4u);
}

}  // namespace
