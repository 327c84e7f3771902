#include "platform/gdiplus.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "platform/fault.h"
#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

namespace {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

class GdiPlus : public ::testing::Test {
 protected:
  GdiPlus() { Start(); }
  ~GdiPlus() override {
    PlatformSetFaultHook(nullptr, nullptr);
    GdiplusShutdown(token);
  }
  void Start() {
    const GdiplusStartupInput input = {1, nullptr, FALSE, FALSE};
    EXPECT_EQ(GdiplusStartup(&token, &input, nullptr), Ok);
    UINT count = 0, size = 0;
    EXPECT_EQ(GdipGetImageEncodersSize(&count, &size), Ok);
    room.resize(size);
    EXPECT_EQ(GdipGetImageEncoders(count, size, Encoders()), Ok);
  }
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
  // 0xRRGGBB of a pixel of either format.
  static DWORD Pixel(Bitmap& bitmap, INT x, INT y) {
    const BitmapData data = Lock(bitmap);
    const BYTE* row = static_cast<BYTE*>(data.Scan0) + y * data.Stride;
    if (data.PixelFormat_ == PixelFormat1bppIndexed) {
      return (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 0xFFFFFF : 0;
    }
    return row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16;
  }

  ULONG_PTR token = 0;
  std::vector<BYTE> room;
  std::mt19937 random{11};
};

TEST_F(GdiPlus, DrawsPixelForPixelThroughEveryTurn) {
  const PixelFormat formats[] = {PixelFormat24bppRGB, PixelFormat1bppIndexed};
  for (int round = 0; round < 200; ++round) {
    const auto number = [this](INT least, INT most) {
      return least + static_cast<INT>(random() % (most - least + 1));
    };
    const auto source = RandomBitmap(number(1, 150), number(1, 90), formats[number(0, 1)]);
    const auto target = RandomBitmap(number(1, 150), number(1, 150), formats[number(0, 1)]);
    const INT sourceWidth = static_cast<INT>(source->GetWidth());
    const INT sourceHeight = static_cast<INT>(source->GetHeight());
    const INT width = static_cast<INT>(target->GetWidth());
    const INT height = static_cast<INT>(target->GetHeight());
    const Rect part = {number(-20, 60), number(-20, 60), number(1, 150), number(1, 100)};
    const INT turns = number(-1, 3), x = number(-30, 60), y = number(-30, 60);
    const INT dx = number(-60, 160), dy = number(-60, 160);

    std::vector<DWORD> expected(width * height);
    for (INT i = 0; i < width * height; ++i) expected[i] = Pixel(*target, i % width, i / width);
    for (INT j = part.Y; j < part.Y + part.Height; ++j) {
      for (INT i = part.X; i < part.X + part.Width; ++i) {
        if (i < 0 || j < 0 || i >= sourceWidth || j >= sourceHeight) continue;
        // The middle of the pixel, in half pixels, turned clockwise and moved.
        INT u = 2 * (x + i - part.X) + 1, v = 2 * (y + j - part.Y) + 1;
        for (INT t = 0; t < (turns + 4) % 4; ++t) u = -std::exchange(v, u);
        const INT tx = (u - 1) / 2 + dx, ty = (v - 1) / 2 + dy;
        if (tx < 0 || ty < 0 || tx >= width || ty >= height) continue;
        DWORD color = Pixel(*source, i, j);
        if (target->GetPixelFormat() == PixelFormat1bppIndexed) {
          const DWORD luma = 299 * (color >> 16) + 587 * (color >> 8 & 0xFF) + 114 * (color & 0xFF);
          color = luma >= 128000 ? 0xFFFFFF : 0;
        }
        expected[ty * width + tx] = color;
      }
    }
    Graphics graphics(target.get());
    graphics.RotateTransform(90.0f * static_cast<float>(turns), MatrixOrderAppend);
    graphics.TranslateTransform(static_cast<float>(dx), static_cast<float>(dy), MatrixOrderAppend);
    graphics.DrawImage(source.get(), x, y, part);
    ASSERT_EQ(graphics.GetLastStatus(), Ok);
    for (INT i = 0; i < width * height; ++i) {
      ASSERT_EQ(Pixel(*target, i % width, i / width), expected[i])
          << "round " << round << " turns " << turns << " at " << i % width << " " << i / width;
    }
  }
}

TEST_F(GdiPlus, TurnsWholePagesAlikeOnEveryProcessor) {
  const std::pair<INT, INT> sizes[] = {{1, 1},   {5, 16},   {6, 16},  {7, 33},   {16, 4},
                                       {64, 64}, {131, 67}, {70, 15}, {201, 130}};
  const std::int64_t all = hwy::SupportedTargets();
  for (std::int64_t left = all; left != 0; left &= left - 1) {
    const std::int64_t target = left & -left;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    for (const auto& [width, height] : sizes) {
      const auto source = RandomBitmap(width, height, PixelFormat24bppRGB);
      const auto turned = RandomBitmap(height, width, PixelFormat24bppRGB);
      Graphics graphics(turned.get());
      graphics.RotateTransform(90.0f, MatrixOrderAppend);
      graphics.TranslateTransform(static_cast<float>(height), 0.0f, MatrixOrderAppend);
      graphics.DrawImage(source.get(), 0, 0);
      for (INT i = 0; i < width * height; ++i) {
        const INT x = i % width, y = i / width;
        ASSERT_EQ(Pixel(*turned, height - 1 - y, x), Pixel(*source, x, y))
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
  EXPECT_EQ(Pixel(bitmap, 89, 899) | Pixel(bits, 89, 899), 0u);
  Graphics graphics(&bitmap), bitGraphics(&bits);
  graphics.Clear(0xFF123456);
  bitGraphics.Clear(0xFFF0F0F0);
  EXPECT_EQ(Pixel(bitmap, 0, 0), 0x123456u);
  EXPECT_EQ(Pixel(bitmap, 89, 899), 0x123456u);
  EXPECT_EQ(Pixel(bits, 89, 899), 0xFFFFFFu);
  graphics.Clear(0xFF654321);
  graphics.DrawImage(RandomBitmap(1, 1, PixelFormat24bppRGB).get(), 3, 4);
  EXPECT_EQ(Pixel(bitmap, 4, 4), 0x654321u);
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
    const INT stride = data.Stride;
    for (INT i = 0; i < width * 9; ++i) {
      const INT x = i % width, y = i / width;
      const bool white = (bits[y * stride + x / 8] >> (7 - x % 8) & 1) != 0;
      ASSERT_EQ(Pixel(*page, x, y), white ? 0xFFFFFFu : 0u) << width << " at " << x << " " << y;
    }
    EXPECT_EQ(lock(ImageLockModeRead), InvalidParameter);  // they may have been changed since
  }
}

// A page that is kept as bits is drawn from, drawn on, cleared and saved like any other.
TEST_F(GdiPlus, PageKeptAsBitsIsAPageToEveryCall) {
  const auto page = RandomBitmap(45, 30, PixelFormat24bppRGB);
  const auto dots = RandomBitmap(45, 30, PixelFormat1bppIndexed);
  const auto keepAsBits = [&] {
    BitmapData data;
    ASSERT_EQ(GdipBitmapLockBits(page->nativeImage, nullptr, ImageLockModeWrite,
                                 PixelFormat1bppIndexed, &data),
              Ok);
    const BitmapData from = Lock(*dots);
    std::memcpy(data.Scan0, from.Scan0, from.Stride * 30);
  };
  const auto expectDots = [&](Bitmap& bitmap, INT dx, INT dy, DWORD outside) {
    for (INT i = 0; i < 45 * 30; ++i) {
      const INT x = i % 45, y = i / 45;
      const bool inside = x >= dx && y >= dy;
      ASSERT_EQ(Pixel(bitmap, x, y), inside ? Pixel(*dots, x - dx, y - dy) : outside)
          << x << " " << y;
    }
  };
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    keepAsBits();
    Bitmap target(45, 30, format);
    Graphics onTarget(&target);
    onTarget.Clear(0xFFFFFFFF);
    onTarget.DrawImage(page.get(), 7, 3);
    expectDots(target, 7, 3, 0xFFFFFF);
    keepAsBits();
    onTarget.DrawImage(page.get(), 0, 0);
    expectDots(target, 0, 0, 0);
  }
  keepAsBits();
  const PngImage png = DecodePng(Png(*page));
  ASSERT_EQ(png.colorType, PNG_COLOR_TYPE_RGB);
  for (unsigned i = 0; i < 45 * 30; ++i)
    ASSERT_EQ(png.grey[i] * 0x010101u, Pixel(*dots, i % 45, i / 45));
  keepAsBits();
  Graphics onPage(page.get());
  Bitmap red(1, 1, PixelFormat24bppRGB);
  Graphics(&red).Clear(0xFFFF0000);
  onPage.DrawImage(&red, 44, 29);
  EXPECT_EQ(Pixel(*page, 44, 29), 0xFF0000u);
  EXPECT_EQ(Pixel(*page, 43, 29), Pixel(*dots, 43, 29));
  keepAsBits();
  onPage.Clear(0xFF00FF00);
  EXPECT_EQ(Pixel(*page, 0, 0), 0x00FF00u);
}

TEST_F(GdiPlus, SavesPngOfTheBitmapsDepth) {
  ASSERT_EQ(std::u16string(Encoders()->MimeType), u"image/png");
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    const bool oneBit = format == PixelFormat1bppIndexed;
    const auto bitmap = RandomBitmap(37, 21, format);
    const PngImage png = DecodePng(Png(*bitmap));
    EXPECT_EQ(std::tuple(png.width, png.height, png.bitDepth, png.colorType),
              std::tuple(37u, 21u, oneBit ? 1 : 8, oneBit ? 0 : 2));
    for (unsigned i = 0; i < 37 * 21; ++i) {
      const DWORD color = Pixel(*bitmap, i % 37, i / 37);
      ASSERT_EQ(png.color[3 * i] << 16 | png.color[3 * i + 1] << 8 | png.color[3 * i + 2], color);
    }
  }
}

TEST_F(GdiPlus, EverySettingGivesTheSamePicture) {
  const TempHome home;
  // Repeating rows, sparse marks and noise are compressed in different ways.
  const auto bitmap = RandomBitmap(300, 400, PixelFormat1bppIndexed);
  const BitmapData data = Lock(*bitmap);
  auto* bits = static_cast<BYTE*>(data.Scan0);
  for (const INT noisyRows : {400, 100, 0}) {
    for (INT y = noisyRows; y < 400; ++y) std::memset(bits + y * data.Stride, y / 9, data.Stride);
    std::vector<std::size_t> sizes;
    for (const char* size : {"fast", "default", "small"}) {
      home.WriteFile("system.toml", "png = \"" + std::string(size) + "\"");
      const std::string file = Png(*bitmap);
      const PngImage png = DecodePng(file);
      ASSERT_EQ(png.grey.size(), 300u * 400u);
      for (unsigned i = 0; i < 300 * 400; ++i) {
        ASSERT_EQ(png.grey[i] != 0, Pixel(*bitmap, i % 300, i / 300) != 0) << size;
      }
      sizes.push_back(file.size());
    }
    EXPECT_TRUE(std::is_sorted(sizes.rbegin(), sizes.rend())) << ::testing::PrintToString(sizes);
  }
  home.WriteFile("system.toml", "\npng = \"tiny\"");
  Png(*bitmap);
  ASSERT_FALSE(home.LogLines().empty());
  EXPECT_NE(home.LogLines().back().find("line 2: png must be"), std::string::npos);
}

TEST_F(GdiPlus, FailedPngLeavesNothingBehind) {
  const auto bitmap = RandomBitmap(37, 21, PixelFormat1bppIndexed);
  struct Row {
    const char* call;
    Status status;
  };
  for (const Row& row : {Row{"PngBuffer", OutOfMemory}, Row{"PngCompressor", OutOfMemory},
                         Row{"IStream::Write", Win32Error}}) {
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    EXPECT_EQ(bitmap->Save(stream.Get(), &IID_IStream), InvalidParameter);
    PlatformSetFaultHook(
        [](const char* call, void* name) {
          return std::strcmp(call, static_cast<const char*>(name)) == 0;
        },
        const_cast<char*>(row.call));
    EXPECT_EQ(bitmap->Save(stream.Get(), &Encoders()->Clsid), row.status) << row.call;
    PlatformSetFaultHook(nullptr, nullptr);
    STATSTG statistics;
    stream->Stat(&statistics, STATFLAG_NONAME);
    EXPECT_EQ(statistics.cbSize, 0u) << row.call;
  }
}

}  // namespace
