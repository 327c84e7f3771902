#include "tests/support/gdiplus_test.h"

#include <hwy/targets.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <tuple>
#include <utility>

#include "platform/extensions.h"
#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

namespace {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

class GdiPlus : public GdiPlusTest {
 protected:
  GdiPlus() {
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
    EXPECT_EQ(bitmap.Save(stream.Get(), &Encoders()->Clsid, nullptr), Ok);
    STATSTG statistics;
    stream->Stat(&statistics, STATFLAG_NONAME);
    std::string file(statistics.cbSize.QuadPart, '\0');
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    stream->Read(file.data(), static_cast<ULONG>(file.size()), nullptr);
    return file;
  }
  static Colors ColorsOfPng(const std::string& file) {
    const PngImage png = DecodePng(file);
    Colors colors;
    for (auto at = png.color.begin(); at != png.color.end(); at += 3) {
      colors.push_back(at[0] << 16 | at[1] << 8 | at[2]);
    }
    return colors;
  }
  void FillAtRandom(const BitmapData& data) {
    for (UINT i = 0; i < data.Stride * data.Height; ++i) {
      static_cast<BYTE*>(data.Scan0)[i] = static_cast<BYTE>(random());
    }
  }

  std::vector<BYTE> room;
};

// Pages are drawn late: borders and turns wait until somebody reads pixels. Whatever happens in
// between, each bitmap shows what it would if it had been drawn at once.
class Drawings : public GdiPlus {
 protected:
  // A page of random pixels that lie in a buffer of their own.
  struct Page {
    Page(INT pageWidth, INT pageHeight, std::mt19937& random)
        : width(pageWidth),
          height(pageHeight),
          buffer(std::size_t((3 * width + 3) / 4 * 4) * height),
          bitmap(width, height, PixelFormat24bppRGB) {
      for (BYTE& byte : buffer) byte = static_cast<BYTE>(random());
      EXPECT_EQ(PlatformLendPixels(&bitmap, buffer.data()), Ok);
    }
    DWORD At(INT x, INT y) const {
      if (x < 0 || y < 0 || x >= width || y >= height) return 0xFFFFFF;
      const BYTE* pixel = &buffer[y * ((3 * width + 3) / 4 * 4) + 3 * x];
      return pixel[0] | pixel[1] << 8 | pixel[2] << 16;
    }
    const INT width, height;
    std::vector<BYTE> buffer;
    Bitmap bitmap;
  };

  // The page on white, moved by (dx, dy), then turned.
  static std::unique_ptr<Bitmap> Draw(Page& page, INT dx, INT dy, RotateFlipType turn) {
    auto drawn = std::make_unique<Bitmap>(page.width, page.height, PixelFormat24bppRGB);
    Graphics graphics(drawn.get());
    graphics.Clear(0xFFFFFFFF);
    graphics.DrawImage(&page.bitmap, Rect(dx, dy, page.width, page.height), 0, 0, page.width,
                       page.height, UnitPixel);
    EXPECT_EQ(drawn->RotateFlip(turn), Ok);
    return drawn;
  }
  static Colors Expected(const Page& page, INT dx, INT dy, RotateFlipType turn) {
    Colors colors(page.width * page.height);
    for (INT y = 0; y < page.height; ++y) {
      for (INT x = 0; x < page.width; ++x) {
        const INT to = turn == Rotate90FlipNone    ? x * page.height + page.height - 1 - y
                       : turn == Rotate270FlipNone ? (page.width - 1 - x) * page.height + y
                                                   : y * page.width + x;
        colors[to] = page.At(x - dx, y - dy);
      }
    }
    return colors;
  }
  // The greens of all rows, read some rows at a time in two planes: green and its complement.
  static Colors GreensOf(Bitmap& bitmap) {
    class Greens final : public PixelReduction {
      void Reduce(const BYTE* pixels, INT count, BYTE* const* planes) override {
        for (INT i = 0; i < count; ++i) {
          planes[0][i] = pixels[3 * i + 1];
          planes[1][i] = static_cast<BYTE>(~pixels[3 * i + 1]);
        }
      }
    } reduction;
    const INT width = static_cast<INT>(bitmap.GetWidth());
    const INT height = static_cast<INT>(bitmap.GetHeight());
    Colors greens;
    for (INT top = 0; top < height; top += 50) {
      const INT rows = std::min(50, height - top), stride = width + 2;
      std::vector<BYTE> bytes(2 * stride * rows, 0x5A);
      const BytePlane planes[] = {{bytes.data() + 1, stride},
                                  {bytes.data() + stride * rows + 1, stride}};
      EXPECT_EQ(PlatformReadPlanes(&bitmap, top, rows, reduction, planes, 2), Ok);
      for (INT i = 0; i < rows * width; ++i) {
        const BYTE* at = &bytes[i / width * stride + 1 + i % width];
        EXPECT_EQ(at[stride * rows], static_cast<BYTE>(~at[0]));
        greens.push_back(at[0]);
      }
      for (INT row = 0; row < 2 * rows; ++row) {  // bytes beside the rows stay
        EXPECT_EQ(bytes[row * stride], 0x5A);
        EXPECT_EQ(bytes[row * stride + width + 1], 0x5A);
      }
    }
    return greens;
  }
};

TEST_F(Drawings, PageIsDrawnWithBordersAndTurnedOnEveryProcessor) {
  for (std::int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
    hwy::SetSupportedTargetsForTest(left & -left);
    hwy::GetChosenTarget().Update(left & -left);
    SCOPED_TRACE(hwy::TargetName(left & -left));
    for (const auto& [width, height] : {std::pair(1, 1), {5, 300}, {131, 64}, {260, 97}}) {
      for (const auto& [dx, dy] : {std::pair(0, 0), {7, 3}, {-2, 90}, {400, 0}}) {
        for (const RotateFlipType turn :
             {RotateNoneFlipNone, Rotate90FlipNone, Rotate270FlipNone}) {
          Page page(width, height, random);
          const std::unique_ptr<Bitmap> drawn = Draw(page, dx, dy, turn);
          const Colors expected = Expected(page, dx, dy, turn);
          Colors greens = expected;
          for (DWORD& color : greens) color = color >> 8 & 0xFF;
          ASSERT_EQ(GreensOf(*drawn), greens) << width << ' ' << dx << ' ' << turn;
          ASSERT_EQ(ColorsOfPng(Png(*drawn)), expected);
          ASSERT_EQ(ColorsOf(*drawn), expected);
        }
      }
    }
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

TEST_F(Drawings, StayWhateverHappensToThePageTheyWereDrawnFrom) {
  for (int fate = 0; fate < 5; ++fate) {
    auto page = std::make_unique<Page>(40, 30, random);
    const std::vector<BYTE> captured = page->buffer;
    const Colors expected = Expected(*page, 4, 2, Rotate90FlipNone);
    std::unique_ptr<Bitmap> drawn = Draw(*page, 4, 2, Rotate90FlipNone);
    BitmapData dots = {};
    switch (fate) {
      case 0:
        Graphics(&page->bitmap).Clear(0xFF00FF00);
        break;
      case 1:
        *static_cast<BYTE*>(Lock(page->bitmap).Scan0) ^= 0xFF;
        break;
      case 2:
        EXPECT_EQ(page->bitmap.RotateFlip(Rotate270FlipNone), Ok);
        break;
      case 3:
        EXPECT_EQ(PlatformLockDots(&page->bitmap, ImageLockModeWrite, &dots), Ok);
        std::memset(dots.Scan0, 0x55, dots.Stride * dots.Height);
        break;
      case 4:
        EXPECT_EQ(page->buffer, captured);
        page.reset();
    }
    EXPECT_TRUE(page == nullptr || page->buffer == captured);  // it is only read
    EXPECT_EQ(ColorsOf(*drawn), expected) << fate;
  }
}

TEST_F(Drawings, DotsAreKeptAsBitsUntilPixelsAreWanted) {
  Bitmap page(37, 9, PixelFormat24bppRGB), oneBit(37, 9, PixelFormat1bppIndexed);
  BitmapData dots = {};
  EXPECT_EQ(PlatformLockDots(&page, ImageLockModeRead, &dots), InvalidParameter);
  ASSERT_EQ(PlatformLockDots(&page, ImageLockModeWrite, &dots), Ok);
  FillAtRandom(dots);
  const Colors written = ColorsOf(dots);
  ASSERT_EQ(PlatformUnlockDots(&page, &dots), Ok);
  ASSERT_EQ(PlatformLockDots(&page, ImageLockModeRead, &dots), Ok);
  EXPECT_EQ(ColorsOf(dots), written);
  Bitmap shown(37, 9, PixelFormat24bppRGB);
  Graphics(&shown).DrawImage(&page, 0, 0);
  EXPECT_EQ(ColorsOf(shown), written);
  EXPECT_EQ(ColorsOf(page), written);
  EXPECT_EQ(PlatformLockDots(&page, ImageLockModeRead, &dots), InvalidParameter);

  // As published: no drawing on indexed bitmaps, but drawing from them.
  EXPECT_EQ(Graphics(&oneBit).GetLastStatus(), OutOfMemory);
  FillAtRandom(Lock(oneBit));
  Graphics(&shown).DrawImage(&oneBit, 0, 0);
  EXPECT_EQ(ColorsOf(shown), ColorsOf(oneBit));
}

TEST_F(GdiPlus, EveryLinkGetsTheSamePicture) {
  const TempHome home;
  ASSERT_EQ(std::u16string(Encoders()->MimeType), u"image/png");
  for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat1bppIndexed}) {
    const bool oneBit = format == PixelFormat1bppIndexed;
    Bitmap bitmap(301, 400, format);
    const BitmapData data = Lock(bitmap);
    FillAtRandom(data);
    auto* bits = static_cast<BYTE*>(data.Scan0);
    for (const INT noisyRows : {400, 100, 0}) {
      for (INT y = noisyRows; y < 400; ++y) std::memset(bits + y * data.Stride, y / 9, data.Stride);
      std::vector<std::size_t> sizes;
      for (const char* link : {"network", "usb", "wifi", "serial", "fast", "default", "small"}) {
        home.WriteFile("system.toml", "png = \"" + std::string(link) + "\"");
        const std::string file = Png(bitmap);
        const PngImage png = DecodePng(file);
        ASSERT_EQ(std::tuple(png.width, png.height, png.bitDepth, png.colorType),
                  std::tuple(301u, 400u, oneBit ? 1 : 8, oneBit ? 0 : 2));
        ASSERT_TRUE(ColorsOfPng(file) == ColorsOf(bitmap)) << link;
        sizes.push_back(file.size());
      }
      EXPECT_TRUE(noisyRows == 400 || sizes[3] <= sizes[0]);  // bytes count on a serial line
    }
  }
  home.WriteFile("system.toml", "\npng = \"tiny\"");
  Bitmap small(1, 1, PixelFormat1bppIndexed);
  Png(small);
  ASSERT_FALSE(home.LogLines().empty());
  EXPECT_NE(home.LogLines().back().find("line 2: png must be"), std::string::npos);
}

// The compressor's memory has another address each time.
TEST_F(GdiPlus, SamePictureHasTheSameBytes) {
  const TempHome home;
  Bitmap bitmap(96, 56, PixelFormat1bppIndexed);
  const BitmapData data = Lock(bitmap);
  for (UINT i = 0; i < 96 * 56; ++i) {
    const int bit = 0x80 >> i % 8;
    BYTE& byte = Row(data, static_cast<INT>(i / 96))[i % 96 / 8];
    byte = static_cast<BYTE>(i * i / 7 % 3 == 0 ? byte & ~bit : byte | bit);
  }
  const std::string first = Png(bitmap);
  std::vector<std::unique_ptr<char[]>> pads;
  int others = 0;
  for (int i = 0; i < 8000; ++i) {
    pads.emplace_back(new char[1 << 16]);
    others += Png(bitmap) != first;
  }
  EXPECT_EQ(others, 0);
}

}  // namespace
