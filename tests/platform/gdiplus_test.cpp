#include "platform/gdiplus.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "platform/fault.h"
#include "tests/support/png_image.h"

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

TEST_F(GdiPlus, SavesPngOfTheBitmapsDepth) {
  UINT count = 0, size = 0;
  ASSERT_EQ(GdipGetImageEncodersSize(&count, &size), Ok);
  std::vector<BYTE> room(size);
  auto* encoders = reinterpret_cast<ImageCodecInfo*>(room.data());
  ASSERT_EQ(GdipGetImageEncoders(count, size, encoders), Ok);
  ASSERT_EQ(std::u16string(encoders[0].MimeType), u"image/png");
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    const bool oneBit = format == PixelFormat1bppIndexed;
    const auto bitmap = RandomBitmap(37, 21, format);
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    EXPECT_EQ(bitmap->Save(stream.Get(), &IID_IStream), InvalidParameter);
    ASSERT_EQ(bitmap->Save(stream.Get(), &encoders[0].Clsid), Ok);
    STATSTG statistics;
    stream->Stat(&statistics, STATFLAG_NONAME);
    std::string file(statistics.cbSize, '\0');
    stream->Seek(0, STREAM_SEEK_SET, nullptr);
    stream->Read(file.data(), static_cast<ULONG>(file.size()), nullptr);
    const PngImage png = DecodePng(file);
    EXPECT_EQ(std::tuple(png.width, png.height, png.bitDepth, png.colorType),
              std::tuple(37u, 21u, oneBit ? 1 : 8, oneBit ? 0 : 2));
    for (unsigned i = 0; oneBit && i < 37 * 21; ++i) {
      ASSERT_EQ(png.grey[i] * 0x010101u, Pixel(*bitmap, i % 37, i / 37));
    }
    PlatformSetFaultHook(
        [](const char* call, void*) { return std::string(call) == "IStream::Write"; }, nullptr);
    EXPECT_EQ(bitmap->Save(stream.Get(), &encoders[0].Clsid), Win32Error);
    PlatformSetFaultHook(nullptr, nullptr);
  }
}

}  // namespace
