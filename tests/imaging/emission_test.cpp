#include <gtest/gtest.h>

#include "imaging/bitmap_owner.h"
#include "imaging/image_emission.h"
#include "tests/support/page_device.h"

namespace {

using Gdiplus::PixelFormat1bppIndexed;

class Emission : public ::testing::Test {
 protected:
  Emission() {
    device.state.dwPageCount = 1;
    device.state.job.dwPageNumber = 1;
    device.state.strPageSetup = "SETUP";
    device.state.dmPublicCopy = device.publicDevmode;
    device.state.dmPrivateCopy = device.devmode;
  }

  // A white image with a black rectangle (right and bottom not included).
  static BitmapOwner Image(INT width, INT height, const RECTL& black) {
    BitmapOwner bitmap = MakeBitmap(width, height, PixelFormat1bppIndexed, WTEXT("test"));
    Gdiplus::BitmapData data;
    Gdiplus::DllExports::GdipBitmapLockBits(bitmap->nativeImage, nullptr, 3, PixelFormat1bppIndexed,
                                            &data);
    for (INT i = 0; i < width * height; ++i) {
      const INT x = i % width, y = i / width;
      const bool inside = x >= black.left && x < black.right && y >= black.top && y < black.bottom;
      if (!inside) static_cast<BYTE*>(data.Scan0)[y * data.Stride + x / 8] |= 0x80 >> x % 8;
    }
    return bitmap;
  }
  INT Send(const BitmapOwner& background, const BitmapOwner& highlight = nullptr) {
    device.writes.clear();
    return SendImageToPrinter(&device.surface, background.get(), highlight.get(), false, false);
  }
  PageDevice device;
};

TEST_F(Emission, FirstPageOpensWithBlocksAndErase) {
  device.SetBlock(0, 3, "zero");
  device.SetBlock(2, 4, "two");
  const BitmapOwner image = Image(100, 50, {10, 10, 20, 20});
  EXPECT_EQ(Send(image), 1);
  EXPECT_TRUE(device.Stream().starts_with("zero\r\ntwo\r\neIMG;*\r\ndPNG;0\r\n\x1B:"));
  EXPECT_EQ(device.state.job.dwJobBytesWritten, device.Stream().size());
  device.devmode.wCustomType0 = kBlockInline;
  Send(image);
  EXPECT_EQ(device.writes[0], "two\r\n");
  device.state.dwPageCount = 2;
  Send(image);
  EXPECT_EQ(device.writes[0], "dPNG;0\r\n\x1B:");
}

TEST_F(Emission, CropKeepsContentAndMovesTheImage) {
  struct Row {
    DWORD rotation;
    RECTL black;
    unsigned width;
    unsigned height;
    const char* place;
  };
  const Row rows[] = {
      {0, {30, 40, 50, 60}, 90, 20, "100.00,45.00,180"},  // 40 rows are 5.00 mm
      {2, {30, 40, 50, 60}, 90, 20, "0.00,5.00,0"},
      {1, {30, 40, 50, 60}, 20, 200, "0.00,96.25,90"},  // 30 columns are 3.75 mm
      {3, {30, 40, 50, 60}, 20, 200, "50.00,3.75,270"},
      {0, {0, 0, 0, 0}, 90, 1, "100.00,50.00,180"},
      {1, {0, 0, 0, 0}, 1, 200, "0.00,100.00,90"},
      {0, {0, 0, 1, 200}, 90, 200, "100.00,50.00,180"},
  };
  device.devmode.bCropToContent = 1;
  for (const Row& row : rows) {
    device.devmode.dwRotation = device.state.dmPrivateCopy.dwRotation = row.rotation;
    Send(Image(90, 200, row.black));
    const std::vector<PngImage> images = device.Downloads("0");
    ASSERT_EQ(images.size(), 1u);
    EXPECT_EQ(std::pair(images[0].width, images[0].height), std::pair(row.width, row.height));
    EXPECT_EQ(device.writes.back(), "SETUP\r\nI:Image0;" + std::string(row.place) + ";0");
  }
  device.publicDevmode.dmYResolution = 1;
  device.devmode.dwRotation = device.state.dmPrivateCopy.dwRotation = 2;
  Send(Image(90, 200, {0, 2, 1, 3}));
  EXPECT_EQ(device.writes.back(), "SETUP\r\nI:Image0;0.00,50.80,0;0");
}

TEST_F(Emission, BothSidesShowTheOneColourImageTwice) {
  device.devmode.bTopSideSameAsBottom = 1;
  Send(Image(30, 8, {2, 3, 5, 6}));
  const PngImage twice = device.Downloads("0").at(0);
  EXPECT_EQ(std::tuple(twice.width, twice.height, twice.bitDepth, twice.colorType),
            std::tuple(60u, 8u, 8, PNG_COLOR_TYPE_RGB));
  for (unsigned i = 0; i < 60 * 8; ++i) {
    const unsigned x = i % 30, y = i / 60;
    ASSERT_EQ(twice.grey[i] == 0, x >= 2 && x < 5 && y >= 3 && y < 6) << x << " " << y;
  }
  device.devmode.dwColorMode = device.state.dmPrivateCopy.dwColorMode =
      2;  // the option is one-colour only
  Send(Image(30, 8, {2, 3, 5, 6}), Image(30, 8, {7, 3, 9, 6}));
  EXPECT_EQ(device.Downloads("0").at(0).width, 30u);
  EXPECT_EQ(device.Downloads("1").at(0).width, 30u);
}

TEST_F(Emission, WhatIsMissingIsNotPlacedOrNotWritten) {
  const BitmapOwner image = Image(8, 8, {});
  device.object.pPublicDM = nullptr;
  EXPECT_EQ(Send(image), 1);
  EXPECT_EQ(device.writes.size(), 4u);  // the image alone
  EXPECT_EQ(SendImageToPrinter(nullptr, nullptr, nullptr, false, false), 0);
  const auto refused = [&] { return Send(image) == 0 && device.writes.empty(); };
  device.object.pOEMDM = nullptr;
  EXPECT_TRUE(refused());
  device.object.pdevOEM = nullptr;
  EXPECT_TRUE(refused());
  device.surface.dhpdev = nullptr;
  EXPECT_TRUE(refused());
  EXPECT_EQ(GetLastError(), 87u);
}

}  // namespace
