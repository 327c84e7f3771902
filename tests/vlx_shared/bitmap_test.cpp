#include <cstring>

#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"
#include "tests/vlx_shared/bitmaps.h"

namespace {

using Gdiplus::Bitmap;
using Gdiplus::PixelFormat1bppIndexed;

TEST_F(Bitmaps, ContentAndEqualityIgnoreThePadding) {
  for (INT width = 1; width <= 70; ++width) {
    const INT height = 5;
    Bitmap* one =
        Own(BitmapHelper::CreateBitmap(width, height, PixelFormat1bppIndexed, WTEXT("one")));
    Bitmap* two =
        Own(BitmapHelper::CreateBitmap(width, height, PixelFormat1bppIndexed, WTEXT("two")));
    const Gdiplus::BitmapData bits = Lock(one);
    std::memset(bits.Scan0, 0xFF, bits.Stride * height);
    std::memset(Lock(two).Scan0, 0xFF, bits.Stride * height);
    for (INT y = 0; y < height; ++y) {  // dirt behind the last column
      for (INT x = width; x < bits.Stride * 8; ++x) Row(bits, y)[x / 8] &= ~(0x80 >> x % 8);
    }
    EXPECT_EQ(BitmapHelper::GetFirstContentRow1BPP(one), -1);
    EXPECT_EQ(BitmapHelper::GetLastContentRow1BPP(one), -1);
    EXPECT_EQ(BitmapHelper::GetFirstContentColumn1BPP(one), -1);
    EXPECT_EQ(BitmapHelper::GetLastContentColumn1BPP(one), -1);
    EXPECT_EQ(BitmapHelper::Are1BPPBitmapsEqual(one, two), 1);
    INT left = width, right = -1, top = height, bottom = -1;
    for (int dot = 0; dot < 3; ++dot) {
      const INT x = static_cast<INT>(random() % width);
      const INT y = static_cast<INT>(random() % height);
      Row(bits, y)[x / 8] &= ~(0x80 >> x % 8);
      left = std::min(left, x), right = std::max(right, x);
      top = std::min(top, y), bottom = std::max(bottom, y);
      EXPECT_EQ(BitmapHelper::GetFirstContentColumn1BPP(one), left);
      EXPECT_EQ(BitmapHelper::GetLastContentColumn1BPP(one), right);
      EXPECT_EQ(BitmapHelper::GetFirstContentRow1BPP(one), top);
      EXPECT_EQ(BitmapHelper::GetLastContentRow1BPP(one), bottom);
      EXPECT_EQ(BitmapHelper::Are1BPPBitmapsEqual(one, two), 0);
    }
  }
}

TEST_F(Bitmaps, DiagnosticSaveWritesAPngOrOneLine) {
  const TempHome home;
  CLoggerClient client;
  CLogger::StartLogging(client);
  Bitmap* page = Page(5, 3, [](INT x, INT) { return x == 2 ? 0u : 0xFFFFFFu; });
  setenv("VLX_SAVE_BITMAPS", home.Path("").c_str(), 1);
  BitmapHelper::DevTestSaveBitmapAs(page, 7, 2, WTEXT("a/b"), client);
  std::ifstream file(home.Path("job00007_page0002_a_b.png"), std::ios::binary);
  const PngImage png = DecodePng({std::istreambuf_iterator<char>(file), {}});
  EXPECT_EQ(png.width, 5u);
  EXPECT_EQ(png.At(2, 1), 0);
  EXPECT_EQ(png.At(3, 1), 255);
  setenv("VLX_SAVE_BITMAPS", home.Path("missing").c_str(), 1);
  BitmapHelper::DevTestSaveBitmapAs(page, 7, 2, WTEXT("x"), client);
  unsetenv("VLX_SAVE_BITMAPS");
  EXPECT_EQ(home.LogLines().size(), 1u);
  CLogger::StopLogging(client);
  EXPECT_FALSE(CLogger::IsEnabled(client, LogLevel::Error));
}

}  // namespace
