#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "config/vlx_shared.h"
#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

namespace {

using Gdiplus::Bitmap;
using Gdiplus::PixelFormat1bppIndexed;
using Gdiplus::PixelFormat24bppRGB;

class Bitmaps : public ::testing::Test {
 protected:
  Bitmaps() {
    const Gdiplus::GdiplusStartupInput input = {1, nullptr, FALSE, FALSE};
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
  }
  ~Bitmaps() override {
    for (Bitmap* bitmap : owned) BitmapHelper::DeleteBitmap(bitmap);
    Gdiplus::GdiplusShutdown(token);
  }
  Bitmap* Own(Bitmap* bitmap) {
    owned.push_back(bitmap);
    return bitmap;
  }
  static Gdiplus::BitmapData Lock(Bitmap* bitmap) {
    Gdiplus::BitmapData data = {};
    Gdiplus::DllExports::GdipBitmapLockBits(bitmap->nativeImage, nullptr, 3,
                                            bitmap->GetPixelFormat(), &data);
    return data;
  }
  static BYTE* Row(const Gdiplus::BitmapData& data, INT y) {
    return static_cast<BYTE*>(data.Scan0) + y * data.Stride;
  }
  // A 24-bit bitmap; color gives 0xRRGGBB.
  template <typename Color>
  Bitmap* Page(INT width, INT height, const Color& color) {
    Bitmap* bitmap =
        Own(BitmapHelper::CreateBitmap(width, height, PixelFormat24bppRGB, WTEXT("page")));
    const Gdiplus::BitmapData data = Lock(bitmap);
    for (INT y = 0; y < height; ++y) {
      for (INT x = 0; x < width; ++x) {
        const DWORD rgb = color(x, y);
        for (int i = 0; i < 3; ++i) Row(data, y)[3 * x + i] = static_cast<BYTE>(rgb >> (8 * i));
      }
    }
    return bitmap;
  }
  static DWORD Pixel(Bitmap* bitmap, INT x, INT y) {
    const BYTE* pixel = Row(Lock(bitmap), y) + 3 * x;
    return pixel[0] | pixel[1] << 8 | pixel[2] << 16;
  }

  ULONG_PTR token = 0;
  std::vector<Bitmap*> owned;
  std::mt19937 random{3};
};

TEST_F(Bitmaps, PureColoursComeOutBitForBit) {
  const DWORD colors[] = {0x000000, 0xFFFFFF, 0x12AB34};
  for (const INT width : {1, 7, 64, 65}) {
    std::vector<DWORD> pixels(width * 40);
    for (DWORD& pixel : pixels) pixel = colors[random() % 3];
    const auto at = [&](INT x, INT y) { return pixels[y * width + x]; };
    Bitmap* page = Page(width, 40, at);
    Bitmap* black = Page(width, 40, [&](INT x, INT y) { return at(x, y) == 0 ? 0u : 0xFFFFFFu; });
    for (const WORD ditherer : {0, 1, 9}) {
      for (const double tolerance : {0.0, -1.0, 0.25, 7.0, std::nan("")}) {
        Bitmap *background = nullptr, *highlight = nullptr;
        ASSERT_EQ(BitmapHelper::SplitImage(page, 0xFF12AB34, tolerance, eBitmapDitherer{ditherer},
                                           99, &background, &highlight),
                  1);
        Own(background);
        Own(highlight);
        for (INT i = 0; i < width * 40; ++i) {
          ASSERT_EQ(Pixel(background, i % width, i / width) == 0, pixels[i] == 0);
          ASSERT_EQ(Pixel(highlight, i % width, i / width) == 0, pixels[i] == 0x12AB34);
        }
      }
      Bitmap* dithered = Own(BitmapRasterizer::Dither(black, eBitmapDitherer{ditherer}, 200));
      for (INT i = 0; i < width * 40; ++i) {
        ASSERT_EQ(Pixel(dithered, i % width, i / width), Pixel(black, i % width, i / width));
      }
    }
  }
}

TEST_F(Bitmaps, ErrorDiffusionKeepsTheGreyLevel) {
  for (const DWORD level : {10u, 64u, 128u, 200u, 250u}) {
    Bitmap* dithered = Own(BitmapRasterizer::Dither(
        Page(200, 200, [level](INT, INT) { return level * 0x010101; }), eFloydSteinberg, 0));
    double white = 0;
    for (INT i = 0; i < 40000; ++i) {
      const DWORD pixel = Pixel(dithered, i % 200, i / 200);
      ASSERT_TRUE(pixel == 0 || pixel == 0xFFFFFF);
      white += pixel != 0;
    }
    EXPECT_NEAR(white / 40000, level / 255.0, 0.01) << level;
  }
}

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
