#include <gtest/gtest.h>

#include <random>
#include <set>

#include "imaging/page_pipeline.h"
#include "platform/fault.h"
#include "tests/support/page_device.h"

namespace {

constexpr DWORD kBlack = 0x000000;
constexpr DWORD kWhitePixel = 0xFFFFFF;
constexpr DWORD kRed = 0xFF0000;

// A page whose pixels are one of a few colours at random, the same for the same seed.
class RandomPage {
 public:
  RandomPage(INT pageWidth, INT pageHeight, const std::vector<DWORD>& colors, unsigned seed = 1)
      : width(pageWidth), height(pageHeight) {
    std::mt19937 random(seed);
    for (INT i = 0; i < width * height; ++i) pixels.push_back(colors[random() % colors.size()]);
  }
  DWORD operator()(INT x, INT y) const {
    return x < 0 || y < 0 || x >= width || y >= height ? kWhitePixel : pixels[y * width + x];
  }
  INT width;
  INT height;
  std::vector<DWORD> pixels;
};

class Pipeline : public ::testing::Test {
 protected:
  Pipeline() {
    device.state.dwPageCount = 1;
    device.devmode.crHighlightColor = 0x000000FF;
  }
  ~Pipeline() override { PlatformSetFaultHook(nullptr, nullptr); }

  INT Process(const RandomPage& page) {
    device.writes.clear();
    device.CapturePage(page.width, page.height, page);
    return ProcessImageData(&device.surface);
  }
  // The printer holds no image any more.
  void Forget() {
    device.state.KeepBackground(nullptr);
    device.state.KeepHighlight(nullptr);
  }
  // Every pixel of the image is black exactly where color gives that colour.
  static void ExpectImage(const PngImage& image, unsigned width, unsigned height, DWORD inked,
                          const std::function<DWORD(INT, INT)>& color) {
    ASSERT_EQ(std::pair(image.width, image.height), std::pair(width, height));
    for (unsigned i = 0; i < width * height; ++i) {
      const unsigned x = i % width, y = i / width;
      ASSERT_EQ(image.grey[i] == 0, color(x, y) == inked) << x << " " << y;
    }
  }

  PageDevice device;
};

// Borders move the page and drop its end; every orientation but portrait is turned.
TEST_F(Pipeline, PageIsMovedAndTurned) {
  const RandomPage page(37, 70, {kBlack, kWhitePixel});
  struct Row {
    INT x0, y0;
    SHORT orientation;
  };
  const Row rows[] = {{0, 0, 1},  {10, 0, 1}, {0, 7, 1}, {3, 69, 1},
                      {37, 0, 1}, {5, 0, 2},  {5, 2, 0}, {0, 9, 3}};
  for (const auto& [x0, y0, orientation] : rows) {
    device.state.gdiPhysOffsetX = x0;
    device.state.gdiPhysOffsetY = y0;
    device.publicDevmode.dmOrientation = orientation;
    EXPECT_EQ(Process(page), 1);
    const bool turned = orientation != 1;
    ExpectImage(device.Downloads("0").at(0), turned ? 70 : 37, turned ? 37 : 70, kBlack,
                [&, left = x0, top = y0](INT x, INT y) {
                  return turned ? page(y - left, 69 - x - top) : page(x - left, y - top);
                });
  }
}

TEST_F(Pipeline, DithererAndItsParameterReachTheDots) {
  for (const DWORD mode : {1u, 2u}) {
    device.devmode.dwColorMode = mode;
    std::set<std::vector<unsigned char>> pictures;
    for (const auto& [ditherer, parameter] :
         {std::pair(eThreshold, 0), {eOrdered, 1}, {eOrdered, 2}, {eBlueNoise, 2}}) {
      device.devmode.wDitherer = static_cast<WORD>(ditherer);
      device.devmode.byDitherParam = static_cast<BYTE>(parameter);
      Forget();
      EXPECT_EQ(Process(RandomPage(64, 64, {0x606060})), 1);
      pictures.insert(device.Downloads(std::to_string(mode - 1)).at(0).grey);
    }
    EXPECT_EQ(pictures.size(), 4u) << mode;
  }
}

TEST_F(Pipeline, EmptyPlaneLeavesTheKeptOne) {
  device.devmode.dwColorMode = 2;
  const RandomPage both(40, 20, {kBlack, kWhitePixel, kRed});
  Process(both);
  device.state.dwPageCount = 2;
  Process(RandomPage(40, 20, {kBlack, kWhitePixel}, 2));
  Process(both);  // the printer still holds the first page's highlight
  EXPECT_EQ(device.Downloads("0").size(), 0u);
  EXPECT_EQ(device.Downloads("1").size(), 1u);
}

// Memory is re-used from page to page: nothing of a page may show on the next one, whatever stages
// it runs through. While a fault hook is there, nothing is re-used.
TEST_F(Pipeline, PageNeverShowsThroughOnTheNext) {
  struct Row {
    INT width, height, offsetX;
    SHORT orientation;
    DWORD mode, crop;
  };
  const Row rows[] = {{333, 150, 0, 1, 1, 0}, {333, 150, 40, 2, 1, 0}, {150, 333, 3, 2, 2, 0},
                      {331, 151, 0, 1, 2, 1}, {90, 60, 9, 1, 1, 1},    {700, 40, 0, 2, 1, 1}};
  const RandomPage dirt(350, 340, {kBlack, kWhitePixel, kRed, 0x808080}, 5);
  const auto files = [this] {
    std::erase_if(device.writes, [](const auto& write) { return !write.starts_with("\x89PNG"); });
    return device.writes;
  };
  for (const Row& row : rows) {
    // Mostly paper, with grey and red and an edge left blank.
    RandomPage page(row.width, row.height, {kWhitePixel, kWhitePixel, 0x606060, kRed, kBlack}, 8);
    for (INT i = 0; i < row.width * row.height; ++i) {
      if (i % row.width <= 20 || i / row.width <= 10) page.pixels[i] = kWhitePixel;
    }
    device.devmode.dwColorMode = row.mode;
    device.devmode.bCropToContent = device.devmode.dwRotation = row.crop;
    device.state.gdiPhysOffsetX = row.offsetX;
    device.publicDevmode.dmOrientation = row.orientation;
    Forget();
    PlatformSetFaultHook([](const char*, void*) { return false; }, nullptr);
    EXPECT_EQ(Process(page), 1);
    const std::vector<std::string> alone = files();
    EXPECT_EQ(alone.size(), row.mode);
    PlatformSetFaultHook(nullptr, nullptr);
    for (int round = 0; round < 3; ++round) {
      Forget();
      EXPECT_EQ(Process(dirt), 1);
      Forget();
      EXPECT_EQ(Process(page), 1);
      EXPECT_TRUE(files() == alone) << row.width << " x " << row.height;
    }
  }
}

TEST_F(Pipeline, PageWithoutColourModeIsNotSent) {
  for (const DWORD mode : {0u, 3u, 0xFFFFFFFFu}) {
    device.devmode.dwColorMode = mode;
    EXPECT_EQ(Process(RandomPage(8, 8, {kBlack})), 1);
    EXPECT_TRUE(device.writes.empty());
    EXPECT_EQ(device.state.pBitmapBuffer, nullptr);
  }
  EXPECT_NE(device.state.strPageSetup, "");
}

TEST_F(Pipeline, ShortBufferIsCompletedWithWhite) {
  device.CapturePage(12, 4, [](INT, INT) { return kBlack; });
  device.state.bmiPage.biHeight = 9;
  EXPECT_EQ(ProcessImageData(&device.surface), 1);
  ExpectImage(device.Downloads("0").at(0), 12, 9, kBlack,
              [](INT, INT y) { return y < 4 ? kBlack : kWhitePixel; });
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
    device.state.strPageSetup.clear();
    EXPECT_EQ(Process(RandomPage(20, 10, {kBlack, kWhitePixel, kRed})), 0) << n;
    EXPECT_TRUE(device.writes.empty()) << n;
    EXPECT_EQ(device.state.strPageSetup.empty(), n <= 3) << n;  // the coming page is still prepared
    device.state.ResetPage();
  }
}

}  // namespace
