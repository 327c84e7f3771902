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

// Bitmaps and, beside each, what its pixels must be. Pages are drawn late, from pages that are
// drawn late themselves; whatever happens in between, each shows what it would if drawn at once.
class Drawings : public GdiPlus {
 protected:
  struct Sheet {
    INT width = 30, height = 20;
    std::unique_ptr<Bitmap> bitmap;
    Colors pixels;
  };

  Drawings() : page(904 * 300) {
    for (BYTE& byte : page) byte = static_cast<BYTE>(random());
  }
  INT Number(INT least, INT most) {
    return least + static_cast<INT>(random() % (most - least + 1));
  }
  // A new one, often of the size of another, which may be turned. Some lie over a buffer.
  void Make(Sheet& sheet, const Sheet& other) {
    const INT like = Number(0, 3);
    std::tie(sheet.width, sheet.height) = like == 0   ? std::pair(other.width, other.height)
                                          : like == 1 ? std::pair(other.height, other.width)
                                                      : std::pair(Number(1, 300), Number(1, 150));
    const bool oneBit = Number(0, 3) == 0;
    sheet.bitmap = std::make_unique<Bitmap>(sheet.width, sheet.height,
                                            oneBit ? PixelFormat1bppIndexed : PixelFormat24bppRGB);
    sheet.pixels.assign(sheet.width * sheet.height, 0);
    if (oneBit || Number(0, 2) != 0) return;
    ASSERT_EQ(PlatformLendPixels(sheet.bitmap.get(), page.data()), Ok);
    const INT stride = (3 * sheet.width + 3) / 4 * 4;
    sheet.pixels = ColorsOf({static_cast<UINT>(sheet.width), static_cast<UINT>(sheet.height),
                             stride, PixelFormat24bppRGB, page.data(), 0});
  }
  // What a bitmap makes of a colour.
  static DWORD ColorOn(const Sheet& sheet, DWORD color) {
    if (sheet.bitmap->GetPixelFormat() == PixelFormat24bppRGB) return color;
    const DWORD luma = 299 * (color >> 16) + 587 * (color >> 8 & 0xFF) + 114 * (color & 0xFF);
    return luma >= 128000 ? 0xFFFFFF : 0;
  }
  void Clear(Sheet& sheet) {
    const DWORD color = Number(0, 2) == 0 ? random() & 0xFFFFFF : Number(0, 1) * 0xFFFFFF;
    Graphics(sheet.bitmap.get()).Clear(0xFF000000 | color);
    sheet.pixels.assign(sheet.pixels.size(), ColorOn(sheet, color));
  }
  // Draws as a page is drawn, or a part of it somewhere.
  void Draw(Sheet& target, const Sheet& source) {
    const bool whole = Number(0, 1) == 0;
    const auto border = [this] { return Number(0, 2) == 0 ? Number(-2, 2) : 0; };
    const INT dx = whole ? border() : Number(-60, 160), dy = whole ? border() : Number(-60, 160);
    const Rect part = whole ? Rect(0, 0, source.width, source.height)
                            : Rect(Number(-20, 60), Number(-20, 60), Number(1, 150), Number(1, 99));
    Graphics graphics(target.bitmap.get());
    graphics.DrawImage(source.bitmap.get(), Rect(dx, dy, part.Width, part.Height), part.X, part.Y,
                       part.Width, part.Height, UnitPixel);
    EXPECT_EQ(graphics.GetLastStatus(), Ok);
    for (INT j = std::max(part.Y, 0); j < std::min(part.Y + part.Height, source.height); ++j) {
      for (INT i = std::max(part.X, 0); i < std::min(part.X + part.Width, source.width); ++i) {
        const INT tx = i - part.X + dx, ty = j - part.Y + dy;
        if (tx < 0 || ty < 0 || tx >= target.width || ty >= target.height) continue;
        target.pixels[ty * target.width + tx] =
            ColorOn(target, source.pixels[j * source.width + i]);
      }
    }
  }
  void Turn(Sheet& sheet) {
    const bool clockwise = Number(0, 2) != 0;
    ASSERT_EQ(sheet.bitmap->RotateFlip(clockwise ? Rotate90FlipNone : Rotate270FlipNone), Ok);
    const Colors before = sheet.pixels;
    const INT width = sheet.width, height = sheet.height;
    for (INT y = 0; y < height; ++y) {
      for (INT x = 0; x < width; ++x) {
        const INT to = clockwise ? x * height + height - 1 - y : (width - 1 - x) * height + y;
        sheet.pixels[to] = before[y * width + x];
      }
    }
    std::swap(sheet.width, sheet.height);
  }
  void ChangeDot(Sheet& sheet) {
    const BitmapData data = Lock(*sheet.bitmap);
    *static_cast<BYTE*>(data.Scan0) ^= 0xC0;
    sheet.pixels = ColorsOf(data);
  }
  void WriteAsDots(Sheet& sheet) {
    if (sheet.bitmap->GetPixelFormat() == PixelFormat1bppIndexed) return ChangeDot(sheet);
    BitmapData data = {};
    ASSERT_EQ(PlatformLockDots(sheet.bitmap.get(), ImageLockModeWrite, &data), Ok);
    FillAtRandom(data);
    sheet.pixels = ColorsOf(data);
  }
  // Rows read as planes, of greens and of what they are not; bytes beside them stay.
  void CompareGreens(const Sheet& sheet) {
    class Greens final : public PixelReduction {
      void Reduce(const BYTE* pixels, INT count, BYTE* const* planes) override {
        for (INT i = 0; i < count; ++i) {
          planes[0][i] = pixels[3 * i + 1];
          planes[1][i] = static_cast<BYTE>(~pixels[3 * i + 1]);
        }
      }
    } reduction;
    const INT top = Number(0, sheet.height - 1), rows = Number(1, sheet.height - top);
    const INT stride = sheet.width + 2;
    std::vector<BYTE> bytes(2 * stride * rows, 0x5A), expected = bytes;
    const BytePlane planes[] = {{bytes.data() + 1, stride},
                                {bytes.data() + stride * rows + 1, stride}};
    ASSERT_EQ(PlatformReadPlanes(sheet.bitmap.get(), top, rows, reduction, planes, 2), Ok);
    for (INT i = 0; i < rows * sheet.width; ++i) {
      const BYTE green = static_cast<BYTE>(sheet.pixels[top * sheet.width + i] >> 8);
      BYTE* at = &expected[i / sheet.width * stride + 1 + i % sheet.width];
      at[0] = green, at[stride * rows] = static_cast<BYTE>(~green);
    }
    ASSERT_EQ(bytes, expected);
  }
  void Compare(const Sheet& sheet) {
    BitmapData data = {};
    if (sheet.bitmap->GetPixelFormat() == PixelFormat24bppRGB) CompareGreens(sheet);
    // Only some pages can be read as bits too.
    if (PlatformLockDots(sheet.bitmap.get(), ImageLockModeRead, &data) == Ok) {
      ASSERT_EQ(ColorsOf(data), sheet.pixels);
    }
    if (Number(0, 9) == 0) {
      ASSERT_EQ(ColorsOfPng(Png(*sheet.bitmap)), sheet.pixels);
    }
    if (Number(0, 3) == 0) {
      ASSERT_EQ(ColorsOf(*sheet.bitmap), sheet.pixels);
    }
  }

  std::vector<BYTE> page;  // for the widest bitmap
};

TEST_F(Drawings, ShowWhatTheyWouldShowIfMadeAtOnceOnEveryProcessor) {
  const std::vector<BYTE> captured = page;
  for (std::int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
    hwy::SetSupportedTargetsForTest(left & -left);
    hwy::GetChosenTarget().Update(left & -left);
    Sheet sheets[5];
    for (Sheet& sheet : sheets) Make(sheet, sheets[0]);
    for (int step = 0; step < 12000 && !HasFatalFailure(); ++step) {
      SCOPED_TRACE(hwy::TargetName(left & -left) + std::string(", step ") + std::to_string(step));
      const INT at = Number(0, 4);
      Sheet &sheet = sheets[at], &other = sheets[(at + Number(1, 4)) % 5];
      switch (Number(0, 9)) {
        case 0:
          Make(sheet, other);
          break;
        case 1:
          Clear(sheet);
          break;
        case 2:
          ChangeDot(sheet);
          break;
        case 3:
          WriteAsDots(sheet);
          break;
        case 4:
          Turn(sheet);
          break;
        case 5:
          Compare(sheet);
          break;
        default:
          Draw(sheet, other);
      }
    }
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  EXPECT_EQ(page, captured);  // a buffer is read only
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

}  // namespace
