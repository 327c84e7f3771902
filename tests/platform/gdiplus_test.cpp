#include "platform/gdiplus.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

namespace {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

class GdiPlus : public ::testing::Test {
 protected:
  GdiPlus() {
    const GdiplusStartupInput input = {1, nullptr, FALSE, FALSE};
    EXPECT_EQ(GdiplusStartup(&token, &input, nullptr), Ok);
    UINT count = 0, size = 0;
    EXPECT_EQ(GdipGetImageEncodersSize(&count, &size), Ok);
    room.resize(size);
    EXPECT_EQ(GdipGetImageEncoders(count, size, Encoders()), Ok);
  }
  ~GdiPlus() override { GdiplusShutdown(token); }
  ImageCodecInfo* Encoders() { return reinterpret_cast<ImageCodecInfo*>(room.data()); }
  // The bitmap's PNG file.
  std::string Png(Bitmap& bitmap) {
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    EXPECT_EQ(bitmap.Save(stream.Get(), &Encoders()->Clsid), Ok);
    STATSTG statistics;
    stream->Stat(&statistics, STATFLAG_NONAME);
    std::string file(statistics.cbSize, '\0');
    stream->Seek(0, STREAM_SEEK_SET, nullptr);
    stream->Read(file.data(), static_cast<ULONG>(file.size()), nullptr);
    return file;
  }
  // A bitmap of random pixels.
  std::unique_ptr<Bitmap> RandomBitmap(INT width, INT height, PixelFormat format) {
    auto bitmap = std::make_unique<Bitmap>(width, height, format);
    const BitmapData data = Lock(*bitmap);
    for (INT i = 0; i < data.Stride * height; ++i) {
      static_cast<BYTE*>(data.Scan0)[i] = static_cast<BYTE>(random());
    }
    return bitmap;
  }
  static BitmapData Lock(Bitmap& bitmap) {
    BitmapData data = {};
    GdipBitmapLockBits(bitmap.nativeImage, nullptr, 3, bitmap.GetPixelFormat(), &data);
    return data;
  }
  // 0xRRGGBB of each pixel, of either format.
  static std::vector<DWORD> Pixels(Bitmap& bitmap) { return Colors(Lock(bitmap)); }
  static std::vector<DWORD> Colors(const BitmapData& data) {
    std::vector<DWORD> pixels;
    for (UINT i = 0; i < data.Width * data.Height; ++i) {
      const UINT x = i % data.Width;
      const BYTE* row = static_cast<BYTE*>(data.Scan0) + i / data.Width * data.Stride;
      pixels.push_back(data.PixelFormat_ == PixelFormat24bppRGB
                           ? row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16
                           : (row[x / 8] >> (7 - x % 8) & 1) * 0xFFFFFF);
    }
    return pixels;
  }

  // Rows read as two planes, of greens and of what they are not; bytes beside them stay.
  static std::vector<BYTE> Greens(Bitmap& bitmap, INT top, INT rows) {
    class Reduction final : public PixelReduction {
      void Reduce(const BYTE* pixels, INT count, BYTE* const* planes) override {
        for (INT i = 0; i < count; ++i) {
          planes[0][i] = pixels[3 * i + 1];
          planes[1][i] = static_cast<BYTE>(~pixels[3 * i + 1]);
        }
      }
    } reduction;
    const INT width = static_cast<INT>(bitmap.GetWidth()), stride = width + 2;
    std::vector<BYTE> bytes(2 * stride * rows, 0x5A);
    BYTE* second = bytes.data() + stride * rows;
    const BytePlane planes[] = {{bytes.data() + 1, stride}, {second + 1, stride}};
    EXPECT_EQ(PlatformReadPlanes(bitmap.nativeImage, top, rows, reduction, planes, 2), Ok);
    std::vector<BYTE> greens;
    for (INT i = 0; i < stride * rows; ++i) {
      const bool beside = i % stride == 0 || i % stride == stride - 1;
      EXPECT_EQ(second[i], beside ? 0x5A : static_cast<BYTE>(~bytes[i]));
      if (!beside) greens.push_back(bytes[i]);
    }
    return greens;
  }
  static std::vector<BYTE> GreensOf(const std::vector<DWORD>& colors) {
    std::vector<BYTE> greens;
    for (const DWORD color : colors) greens.push_back(static_cast<BYTE>(color >> 8));
    return greens;
  }

  ULONG_PTR token = 0;
  std::vector<BYTE> room;
  std::mt19937 random{11};
};

// How a test draws: with the corner of a part of the source at (x, y), turned, moved.
struct Placing {
  INT turns, x, y, dx, dy;
};

// What a drawing gives, pixel by pixel.
void DrawPlainly(const std::vector<DWORD>& source, INT sourceWidth, const Rect& part,
                 const Placing& placing, std::vector<DWORD>& target, INT targetWidth, bool oneBit) {
  const INT sourceHeight = static_cast<INT>(source.size()) / sourceWidth;
  const INT targetHeight = static_cast<INT>(target.size()) / targetWidth;
  for (INT j = part.Y; j < part.Y + part.Height; ++j) {
    for (INT i = part.X; i < part.X + part.Width; ++i) {
      if (i < 0 || j < 0 || i >= sourceWidth || j >= sourceHeight) continue;
      // The middle of the pixel, in half pixels, turned clockwise and moved.
      INT u = 2 * (placing.x + i - part.X) + 1, v = 2 * (placing.y + j - part.Y) + 1;
      for (INT t = 0; t < (placing.turns + 4) % 4; ++t) u = -std::exchange(v, u);
      const INT tx = (u - 1) / 2 + placing.dx, ty = (v - 1) / 2 + placing.dy;
      if (tx < 0 || ty < 0 || tx >= targetWidth || ty >= targetHeight) continue;
      DWORD color = source[j * sourceWidth + i];
      const DWORD luma = 299 * (color >> 16) + 587 * (color >> 8 & 0xFF) + 114 * (color & 0xFF);
      if (oneBit) color = luma >= 128000 ? 0xFFFFFF : 0;
      target[ty * targetWidth + tx] = color;
    }
  }
}

TEST_F(GdiPlus, DrawsPixelForPixelThroughEveryTurn) {
  const PixelFormat formats[] = {PixelFormat24bppRGB, PixelFormat1bppIndexed};
  for (int round = 0; round < 200; ++round) {
    const auto number = [this](INT least, INT most) {
      return least + static_cast<INT>(random() % (most - least + 1));
    };
    const auto source = RandomBitmap(number(1, 150), number(1, 90), formats[number(0, 1)]);
    const auto target = RandomBitmap(number(1, 150), number(1, 150), formats[number(0, 1)]);
    const INT sourceWidth = static_cast<INT>(source->GetWidth());
    const INT width = static_cast<INT>(target->GetWidth());
    const Rect part = {number(-20, 60), number(-20, 60), number(1, 150), number(1, 100)};
    const INT turns = number(-1, 3), x = number(-30, 60), y = number(-30, 60);
    const INT dx = number(-60, 160), dy = number(-60, 160);

    std::vector<DWORD> expected = Pixels(*target);
    DrawPlainly(Pixels(*source), sourceWidth, part, {turns, x, y, dx, dy}, expected, width,
                target->GetPixelFormat() == PixelFormat1bppIndexed);
    Graphics graphics(target.get());
    graphics.RotateTransform(90.0f * static_cast<float>(turns), MatrixOrderAppend);
    graphics.TranslateTransform(static_cast<float>(dx), static_cast<float>(dy), MatrixOrderAppend);
    graphics.DrawImage(source.get(), x, y, part);
    ASSERT_EQ(graphics.GetLastStatus(), Ok);
    ASSERT_EQ(Pixels(*target), expected) << "round " << round << " turns " << turns;
  }
}

// Pages are drawn late, from pages that are drawn late themselves. Whatever happens in between,
// each shows what it would show if it had been drawn at once.
TEST_F(GdiPlus, DrawingsThatWaitShowTheirSourceAsItWas) {
  constexpr INT kWidths[] = {30, 30, 21, 64}, kHeights[] = {21, 21, 30, 40};
  std::unique_ptr<Bitmap> bitmaps[4];
  std::vector<DWORD> expected[4];
  std::vector<BYTE> page(64 * 40 * 3);
  std::generate(page.begin(), page.end(), [this] { return static_cast<BYTE>(random()); });
  const std::vector<BYTE> captured = page;
  const auto make = [&](int i) {
    expected[i].assign(kWidths[i] * kHeights[i], 0);
    bitmaps[i] = std::make_unique<Bitmap>(kWidths[i], kHeights[i], PixelFormat24bppRGB);
    if (i != 3) return;
    BitmapData data = {64, 40, 192, PixelFormat24bppRGB, page.data(), 0};
    GdipBitmapLockBits(bitmaps[i]->nativeImage, nullptr,
                       ImageLockModeWrite | ImageLockModeUserInputBuf, PixelFormat24bppRGB, &data);
    GdipBitmapUnlockBits(bitmaps[i]->nativeImage, &data);
    expected[i] = Colors(data);
  };
  for (int i = 0; i < 4; ++i) make(i);
  for (int step = 0; step < 20000; ++step) {
    const int at = random() % 4, other = (at + 1 + random() % 3) % 4;
    Bitmap& bitmap = *bitmaps[at];
    switch (random() % 8) {
      case 0:
      case 1: {
        const DWORD color = random() % 2 * 0xFFFFFF;
        Graphics(&bitmap).Clear(0xFF000000 | color);
        expected[at].assign(expected[at].size(), color);
        break;
      }
      case 2:
      case 3:
      case 4: {
        const bool turned = random() % 2, fits = random() % 2;
        const INT dx = fits ? turned * kHeights[other] : static_cast<INT>(random() % 90) - 40;
        const INT dy = fits ? 0 : static_cast<INT>(random() % 60) - 30;
        Graphics graphics(&bitmap);
        if (turned) graphics.RotateTransform(90.0f, MatrixOrderAppend);
        graphics.TranslateTransform(static_cast<float>(dx), static_cast<float>(dy),
                                    MatrixOrderAppend);
        graphics.DrawImage(bitmaps[other].get(), 0, 0);
        DrawPlainly(expected[other], kWidths[other], {0, 0, kWidths[other], kHeights[other]},
                    {turned, 0, 0, dx, dy}, expected[at], kWidths[at], false);
        break;
      }
      case 5: {  // a dot through a lock
        BitmapData data = Lock(bitmap);
        static_cast<BYTE*>(data.Scan0)[data.Stride + 3] ^= 0xFF;
        expected[at][kWidths[at] + 1] ^= 0xFF;
        break;
      }
      case 6:
        make(at);
        break;
      default: {
        const INT top = random() % kHeights[at];
        const INT rows = 1 + static_cast<INT>(random() % (kHeights[at] - top));
        const auto first = expected[at].begin() + top * kWidths[at];
        ASSERT_EQ(Greens(bitmap, top, rows), GreensOf({first, first + rows * kWidths[at]})) << step;
        if (random() % 4 == 0) {
          ASSERT_EQ(Pixels(bitmap), expected[at]) << step;
        }
      }
    }
  }
  EXPECT_EQ(page, captured);  // a buffer is read only
}

// Pages are read turned, from sources of any size, where they are covered and where not.
TEST_F(GdiPlus, ReadsTurnedPagesAlikeOnEveryProcessor) {
  const std::pair<INT, INT> sizes[] = {{1, 1},   {5, 16},   {15, 33},   {16, 4},
                                       {64, 64}, {131, 67}, {270, 130}, {129, 48}};
  const std::int64_t all = hwy::SupportedTargets();
  for (std::int64_t left = all; left != 0; left &= left - 1) {
    const std::int64_t target = left & -left;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    for (const auto& [width, height] : sizes) {
      for (const float moved : {0.0f, 9.0f}) {
        const auto source = RandomBitmap(width, height, PixelFormat24bppRGB);
        Bitmap turned(height, width, PixelFormat24bppRGB);
        Graphics graphics(&turned);
        graphics.Clear(0xFF123456);
        graphics.RotateTransform(90.0f, MatrixOrderAppend);
        graphics.TranslateTransform(static_cast<float>(height) + moved, moved, MatrixOrderAppend);
        graphics.DrawImage(source.get(), 0, 0);
        const INT top = width / 3, rows = width - top - width / 5;
        const std::vector<BYTE> read = Greens(turned, top, rows);
        const std::vector<DWORD> pixels = Pixels(turned);
        const auto first = pixels.begin() + top * height;
        ASSERT_EQ(read, GreensOf({first, first + rows * height}))
            << hwy::TargetName(target) << " " << width << " x " << height;
      }
    }
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

TEST_F(GdiPlus, BitmapsStartBlackAndTakeAColour) {
  RandomBitmap(90, 900, PixelFormat24bppRGB);  // leaves its memory to the next
  Bitmap bitmap(90, 900, PixelFormat24bppRGB), bits(90, 900, PixelFormat1bppIndexed);
  EXPECT_EQ(Pixels(bitmap), std::vector<DWORD>(90 * 900, 0));
  EXPECT_EQ(Pixels(bits), std::vector<DWORD>(90 * 900, 0));
  Graphics(&bitmap).Clear(0xFF123456);
  Graphics(&bits).Clear(0xFFF0F0F0);
  EXPECT_EQ(Pixels(bitmap), std::vector<DWORD>(90 * 900, 0x123456));
  EXPECT_EQ(Pixels(bits), std::vector<DWORD>(90 * 900, 0xFFFFFF));
}

TEST_F(GdiPlus, PageWrittenAsBitsHasTheirPixels) {
  for (const INT width : {1, 2, 31, 33, 100}) {
    const auto page = RandomBitmap(width, 9, PixelFormat24bppRGB);
    BitmapData data;
    const auto lock = [&](UINT flags) {
      return GdipBitmapLockBits(page->nativeImage, nullptr, flags, PixelFormat1bppIndexed, &data);
    };
    EXPECT_EQ(lock(ImageLockModeRead), InvalidParameter);  // it has colours
    EXPECT_EQ(lock(ImageLockModeRead | ImageLockModeWrite), InvalidParameter);
    ASSERT_EQ(lock(ImageLockModeWrite), Ok);
    std::vector<BYTE> bits(data.Stride * 9);
    for (BYTE& byte : bits) byte = static_cast<BYTE>(random());
    std::copy(bits.begin(), bits.end(), static_cast<BYTE*>(data.Scan0));
    ASSERT_EQ(lock(ImageLockModeRead), Ok);
    EXPECT_TRUE(std::equal(bits.begin(), bits.end(), static_cast<BYTE*>(data.Scan0)));
    const std::vector<DWORD> pixels = Pixels(*page);
    for (INT i = 0; i < width * 9; ++i) {
      const BYTE byte = bits[i / width * data.Stride + i % width / 8];
      ASSERT_EQ(pixels[i], (byte >> (7 - i % width % 8) & 1) * 0xFFFFFFu) << width << " at " << i;
    }
    EXPECT_EQ(lock(ImageLockModeRead), InvalidParameter);  // they may have been changed since
  }
}

// A page that is kept as bits is drawn from, drawn on, cleared and saved like any other.
TEST_F(GdiPlus, PageKeptAsBitsIsAPageToEveryCall) {
  const auto page = RandomBitmap(45, 30, PixelFormat24bppRGB);
  const auto source = RandomBitmap(45, 30, PixelFormat1bppIndexed);
  const std::vector<DWORD> dots = Pixels(*source);
  const auto keepAsBits = [&] {
    BitmapData data;
    ASSERT_EQ(GdipBitmapLockBits(page->nativeImage, nullptr, ImageLockModeWrite,
                                 PixelFormat1bppIndexed, &data),
              Ok);
    const BitmapData from = Lock(*source);
    std::memcpy(data.Scan0, from.Scan0, from.Stride * 30);
  };
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    for (const INT moved : {0, 7}) {
      keepAsBits();
      Bitmap target(45, 30, format);
      Graphics(&target).DrawImage(page.get(), moved, 0);
      const std::vector<DWORD> drawn = Pixels(target);
      for (INT i = 0; i < 45 * 30; ++i) {
        ASSERT_EQ(drawn[i], i % 45 < moved ? 0 : dots[i - moved]) << i;
      }
    }
  }
  keepAsBits();
  const PngImage png = DecodePng(Png(*page));
  ASSERT_EQ(png.colorType, PNG_COLOR_TYPE_RGB);
  for (INT i = 0; i < 45 * 30; ++i) ASSERT_EQ(png.grey[i] * 0x010101u, dots[i]);
  keepAsBits();
  Bitmap red(1, 1, PixelFormat24bppRGB);
  Graphics(&red).Clear(0xFFFF0000);
  Graphics(page.get()).DrawImage(&red, 44, 29);
  std::vector<DWORD> expected = dots;
  expected.back() = 0xFF0000;
  EXPECT_EQ(Pixels(*page), expected);
  keepAsBits();
  Graphics(page.get()).Clear(0xFF00FF00);
  EXPECT_EQ(Pixels(*page), std::vector<DWORD>(45 * 30, 0x00FF00));
}

TEST_F(GdiPlus, EverySettingGivesTheSamePicture) {
  const TempHome home;
  ASSERT_EQ(std::u16string(Encoders()->MimeType), u"image/png");
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    const bool oneBit = format == PixelFormat1bppIndexed;
    // Repeating rows, sparse marks and noise are compressed in different ways.
    const auto bitmap = RandomBitmap(301, 400, format);
    const BitmapData data = Lock(*bitmap);
    auto* bits = static_cast<BYTE*>(data.Scan0);
    for (const INT noisyRows : {400, 100, 0}) {
      for (INT y = noisyRows; y < 400; ++y) std::memset(bits + y * data.Stride, y / 9, data.Stride);
      std::vector<std::size_t> sizes;
      for (const char* size : {"fast", "default", "small"}) {
        home.WriteFile("system.toml", "png = \"" + std::string(size) + "\"");
        const std::string file = Png(*bitmap);
        const PngImage png = DecodePng(file);
        ASSERT_EQ(std::tuple(png.width, png.height, png.bitDepth, png.colorType),
                  std::tuple(301u, 400u, oneBit ? 1 : 8, oneBit ? 0 : 2));
        std::vector<DWORD> colors;
        for (auto at = png.color.begin(); at != png.color.end(); at += 3) {
          colors.push_back(at[0] << 16 | at[1] << 8 | at[2]);
        }
        ASSERT_TRUE(colors == Pixels(*bitmap)) << size;
        sizes.push_back(file.size());
      }
      EXPECT_TRUE(!oneBit || std::is_sorted(sizes.rbegin(), sizes.rend()))
          << ::testing::PrintToString(sizes);
    }
  }
  home.WriteFile("system.toml", "\npng = \"tiny\"");
  Png(*RandomBitmap(1, 1, PixelFormat1bppIndexed));
  ASSERT_FALSE(home.LogLines().empty());
  EXPECT_NE(home.LogLines().back().find("line 2: png must be"), std::string::npos);
}

}  // namespace
