#include <cstring>

#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"
#include "tests/vlx_shared/bitmaps.h"

namespace {

TEST_F(Bitmaps, ContentAndEqualityIgnoreThePadding) {
  for (INT width = 1; width <= 70; ++width) {
    const INT height = 5;
    Bitmap *one, *two;
    for (Bitmap** bitmap : {&one, &two}) {
      *bitmap = Own(BitmapHelper::CreateBitmap(width, height, PixelFormat1bppIndexed, WTEXT("")));
      const Gdiplus::BitmapData bits = Lock(**bitmap);
      std::memset(bits.Scan0, 0xFF, bits.Stride * height);
    }
    const Gdiplus::BitmapData bits = Lock(*one);
    const auto print = [&](INT x, INT y) { Row(bits, y)[x / 8] &= ~(0x80 >> x % 8); };
    for (INT y = 0; y < height; ++y) {  // dirt behind the last column
      for (INT x = width; x < bits.Stride * 8; ++x) print(x, y);
    }
    INT left = -1, right = -1, top = -1, bottom = -1;
    for (int dots = 0; dots < 4; ++dots) {
      if (dots > 0) {
        const INT x = static_cast<INT>(random() % width), y = static_cast<INT>(random() % height);
        print(x, y);
        left = dots == 1 ? x : std::min(left, x), right = std::max(right, x);
        top = dots == 1 ? y : std::min(top, y), bottom = std::max(bottom, y);
      }
      EXPECT_EQ(BitmapHelper::GetFirstContentColumn1BPP(one), left);
      EXPECT_EQ(BitmapHelper::GetLastContentColumn1BPP(one), right);
      EXPECT_EQ(BitmapHelper::GetFirstContentRow1BPP(one), top);
      EXPECT_EQ(BitmapHelper::GetLastContentRow1BPP(one), bottom);
      EXPECT_EQ(BitmapHelper::Are1BPPBitmapsEqual(one, two), dots == 0);
    }
  }
}

TEST_F(Bitmaps, BufferOfAnotherShapeIsNotCopied) {
  const std::vector<BYTE> buffer(2 * 16);
  Bitmap* page = Page(5, Colors(10, 0x112233));
  BitmapHelper::Copy24BPPBufferToBitmap(buffer.data(), 4, 2, page);
  EXPECT_EQ(ColorsOf(*page), Colors(10, 0x112233));
}

TEST_F(Bitmaps, DiagnosticSaveWritesAPngOrOneLine) {
  const TempHome home;
  CLoggerClient client;
  CLogger::StartLogging(client);
  Bitmap* page = Page(2, {0, 0xFFFFFF, 0, 0xFFFFFF});
  setenv("VLX_SAVE_BITMAPS", home.Path("").c_str(), 1);
  BitmapHelper::DevTestSaveBitmapAs(page, 7, 2, WTEXT("a/b"), client);
  std::ifstream file(home.Path("job00007_page0002_a_b.png"), std::ios::binary);
  const PngImage png = DecodePng({std::istreambuf_iterator<char>(file), {}});
  EXPECT_EQ(std::tuple(png.width, png.At(0, 1), png.At(1, 1)), std::tuple(2, 0, 255));
  setenv("VLX_SAVE_BITMAPS", home.Path("missing").c_str(), 1);
  BitmapHelper::DevTestSaveBitmapAs(page, 7, 2, WTEXT("x"), client);
  unsetenv("VLX_SAVE_BITMAPS");
  EXPECT_EQ(home.LogLines().size(), 1u);
  CLogger::StopLogging(client);
  CLogger::LOG_ERROR(client, WTEXT("late"), nullptr);
  EXPECT_EQ(home.LogLines().size(), 1u);
}

}  // namespace
