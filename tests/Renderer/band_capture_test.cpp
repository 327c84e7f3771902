#include "Renderer/band_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "platform/extensions.h"
#include "platform/palette.h"
#include "tests/support/logged_home.h"

namespace {

LONG Stride(LONG widthPx) { return (3 * widthPx + 3) / 4 * 4; }

class BandCapture : public ::testing::Test {
 protected:
  ~BandCapture() override { PlatformSetFaultHook(nullptr, nullptr); }

  // Sends a band whose bytes are first, first + 1 and so on, modulo 251.
  bool SendBand(LONG x, LONG width, LONG height, int first = 0, bool blank = false) {
    return SendSized(x, width, height, static_cast<DWORD>(Stride(width) * height), first, blank);
  }
  // A band whose header gives another size than its rows have.
  bool SendSized(LONG x, LONG width, LONG height, DWORD size, int first = 0, bool blank = false) {
    const BITMAPINFOHEADER header = {40, width, height, 1, 24, 3, size, 11, 12, 13, 14};
    std::vector<BYTE> bytes;
    const LONG count = blank ? 0 : std::max(static_cast<LONG>(size), Stride(width) * height);
    for (LONG i = 0; i < count; ++i) bytes.push_back(Pattern(first + i));
    bytes.shrink_to_fit();
    return CaptureBand(
        state, {blank ? nullptr : bytes.data(), &header, format, {x, 0}, blank, orientation});
  }
  static BYTE Pattern(int i) { return static_cast<BYTE>(i % 251); }
  // Compares bytes of the page, by their numbers in the pattern; kPaper: white.
  static constexpr int kPaper = -1;
  void ExpectBytes(std::initializer_list<std::pair<LONG, int>> bytes) const {
    for (const auto& [at, number] : bytes) {
      EXPECT_EQ(state.pBitmapBuffer[at], number == kPaper ? 0xFF : Pattern(number)) << at;
    }
  }

  static bool FailAllocation(const char* call, void* left) {
    const bool allocates =
        std::strcmp(call, "LocalAlloc") == 0 || std::strcmp(call, "LocalReAlloc") == 0;
    return allocates && --*static_cast<int*>(left) == 0;
  }
  void FailAllocationNumber(int n) {
    allocationsLeft = n;
    PlatformSetFaultHook(FailAllocation, &allocationsLeft);
  }

  // The last lines of the log, joined.
  std::string LastLines(std::size_t count) const {
    const std::vector<std::string> lines = home.LogLines();
    std::string text;
    for (std::size_t i = lines.size() - count; i < lines.size(); ++i) text += lines[i] + "|";
    return text;
  }

  LoggedHome home;
  COemPDEV state;
  DWORD format = 5;
  SHORT orientation = DMORIENT_PORTRAIT;
  int allocationsLeft = 0;
};

TEST_F(BandCapture, PortraitBandsAreAppended) {
  EXPECT_TRUE(SendBand(0, 100, 10));
  EXPECT_TRUE(SendBand(0, 100, 10, 77));
  EXPECT_TRUE(SendBand(0, 100, 1, 0, true));
  const BITMAPINFOHEADER page = {40, 100, 21, 1, 24, 3, 6300, 11, 12, 13, 14};
  EXPECT_EQ(std::memcmp(&state.bmiPage, &page, sizeof page), 0);
  EXPECT_EQ(state.dwBitmapBufferSize, 6300u);
  ExpectBytes({{2999, 2999}, {3000, 77}});
  EXPECT_EQ(std::count(state.pBitmapBuffer + 6000, state.pBitmapBuffer + 6300, 0xFF), 300);
}

TEST_F(BandCapture, LandscapeStripsLieBesideEachOther) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(400, 200, 50));
  EXPECT_EQ(state.dwBitmapBufferSize, 50u * 1800);
  EXPECT_EQ(std::tuple(state.bmiPage.biWidth, state.bmiPage.biHeight, state.bmiPage.biSizeImage),
            std::tuple(600, 50, 0u));
  EXPECT_TRUE(SendBand(200, 200, 50, 7));
  for (const LONG row : {0, 49}) {
    ExpectBytes({{row * 1800 + 599, kPaper},
                 {row * 1800 + 600, 7 + row * 600},
                 {row * 1800 + 1199, 7 + row * 600 + 599},
                 {row * 1800 + 1200, row * 600}});
  }
  EXPECT_TRUE(SendBand(200, 200, 50, 0, true));
  ExpectBytes({{600, kPaper}});
}

TEST_F(BandCapture, OverhangingStripsAreCutToThePage) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(8, 5, 3));  // rows of 16 bytes at byte 24 of 40: the padding just fits
  EXPECT_EQ(state.dwBitmapBufferSize, 3u * 40);
  EXPECT_TRUE(SendBand(-2, 4, 3, 50));  // begins 6 bytes into each row
  ExpectBytes({{0, 56}, {5, 61}, {6, kPaper}, {40, 68}});
  EXPECT_TRUE(SendBand(12, 4, 9, 100));  // one column and three rows are on the page
  ExpectBytes({{36, 100}, {39, 103}, {2 * 40 + 36, 124}, {40, 68}});
  for (const LONG x : {14, 2000000000, -4, -2000000000}) {
    EXPECT_TRUE(SendBand(x, 4, 3, 200));
    EXPECT_TRUE(SendBand(x, 4, 3, 0, true));
  }
  EXPECT_TRUE(SendSized(0, 4, 0, 12, 200));  // without a row
  EXPECT_TRUE(SendSized(0, 4, -1, 12, 200));
  ExpectBytes({{0, 56}, {39, 103}});
}

TEST_F(BandCapture, StripsGiveNoMoreThanTheyHave) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(0, 4, 3, 0, true));
  EXPECT_TRUE(SendSized(0, 4, 3, 12 + 1, 100));  // a row and a byte
  ExpectBytes({{11, 111}, {12, 112}, {13, kPaper}, {24, kPaper}});
  EXPECT_TRUE(SendSized(0, 4, 3, 0, 50));  // no size: all of its rows
  ExpectBytes({{0, 50}, {35, 85}});
  EXPECT_TRUE(SendBand(0, 4, 1, 0, true));  // a blank row over the first
  ExpectBytes({{11, kPaper}, {12, 62}});
  EXPECT_TRUE(SendBand(-1, 1, 1, 30));  // only its padding is on the page
  ExpectBytes({{0, 33}, {1, kPaper}});
}

TEST_F(BandCapture, SmallestPagesAndBandsCount) {
  EXPECT_TRUE(SendSized(0, 1, 1, 0));
  EXPECT_EQ(state.dwBitmapBufferSize, 0u);
  EXPECT_TRUE(SendSized(0, 1, 1, 1, 9));
  EXPECT_EQ(state.dwBitmapBufferSize, 1u);
  ExpectBytes({{0, 9}});
  state.ResetPage();
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(0, 1, 1, 5));
  EXPECT_EQ(state.dwBitmapBufferSize, 4u);
  ExpectBytes({{0, 5}});
}

TEST_F(BandCapture, PageOfNoSizeIsRefused) {
  orientation = DMORIENT_LANDSCAPE;
  const struct {
    LONG x, width, height, askedBytes;
  } rows[] = {{-4, 4, 1, -1},
              {0, 4, -1, -1},
              {0, 4, 0, -1},
              {2147483647, 4, 4, -1},
              {2147483643, 4, 1, -2147483647 - 1},  // 6 GiB a row
              {0, 2000000000, 2000000000, -659554304}};
  for (const auto& row : rows) {
    SetLastError(0);
    EXPECT_FALSE(SendSized(row.x, row.width, row.height, 0, 0, true));
    EXPECT_EQ(GetLastError(), 14u);
    EXPECT_FALSE(state.bPageStarted);
    EXPECT_EQ(LastLines(2),
              "error\t\tLocalAlloc failed!\\n|error\t\tImageProcessing END (E_FAIL, "
              "no memory for target bitmap (" +
                  std::to_string(row.askedBytes) + " bytes)|");
  }
  EXPECT_TRUE(SendBand(0, 4, 4));
}

TEST_F(BandCapture, StripsHaveNoPlaceOnAPageWithoutWidth) {
  for (const LONG width : {0, -4}) {
    orientation = DMORIENT_PORTRAIT;
    EXPECT_TRUE(SendSized(0, width, 1, 4, 0, true));
    orientation = DMORIENT_LANDSCAPE;
    EXPECT_TRUE(SendBand(0, 4, 1));
    ExpectBytes({{0, kPaper}});
    state.ResetPage();
  }
}

// The size of a page is a 32-bit number; the largest one is still asked for.
TEST_F(BandCapture, PageBeyond4GigabytesIsGivenUp) {
  for (const DWORD more : {0xFFFFFFFBu, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    PlatformSetFaultHook(nullptr, nullptr);
    ASSERT_TRUE(SendBand(0, 1, 1));
    FailAllocationNumber(1);
    EXPECT_FALSE(SendSized(0, 1, 1, more, 0, true));
    EXPECT_EQ(allocationsLeft, more == 0xFFFFFFFBu ? 0 : 1);
    EXPECT_EQ(state.pBitmapBuffer, nullptr);
  }
}

TEST_F(BandCapture, FailedGrowthStartsThePageAnew) {
  EXPECT_TRUE(SendBand(0, 4, 4));
  FailAllocationNumber(1);
  EXPECT_FALSE(SendBand(0, 4, 4));
  EXPECT_EQ(state.pBitmapBuffer, nullptr);
  EXPECT_EQ(state.dwBitmapBufferSize, 0u);
  EXPECT_EQ(state.bmiPage.biHeight, 0);
  EXPECT_EQ(LastLines(2),
            "error\t\tLocalAlloc failed!\\n|error\tRendering\tImageProcessing END (E_FAIL, error "
            "growing bitmap buffer)|");
  EXPECT_TRUE(SendBand(0, 5, 2));
  EXPECT_EQ(state.bmiPage.biWidth, 5);
  EXPECT_EQ(state.dwBitmapBufferSize, 32u);
}

TEST_F(BandCapture, LowDepthsKeepAColourTable) {
  ULONG colors[256] = {0x00665544, 0x00332211};
  state.hDevicePalette = EngCreatePalette(PAL_INDEXED, 20, colors, 0, 0, 0);
  EXPECT_TRUE(SendBand(0, 4, 4));
  EXPECT_FALSE(state.bHasColorTable);
  state.ResetPage();
  for (const auto& [code, entries, name] :
       {std::tuple(1u, 2, "BMF_1BPP"), {2u, 16, "BMF_4BPP"}, {3u, 256, "BMF_8BPP"}}) {
    format = code;
    EXPECT_TRUE(SendBand(0, 4, 4));
    ASSERT_EQ(state.cColorTableEntries, entries);
    EXPECT_TRUE(state.bHasColorTable);
    const RGBQUAD& last = state.pColorTable[entries - 1];
    EXPECT_EQ(last.rgbBlue & last.rgbGreen & last.rgbRed, 0xFF);
    EXPECT_EQ(last.rgbReserved | state.pColorTable[1].rgbReserved, 0);
    EXPECT_EQ(state.pColorTable[0].rgbBlue, entries > 2 ? 0x66 : 0);
    EXPECT_EQ(state.pColorTable[1].rgbBlue, entries > 2 ? 0x33 : 0xFF);
    EXPECT_EQ(state.pColorTable[1].rgbRed, entries > 2 ? 0x11 : 0xFF);
    state.ResetPage();
    for (int n = 1; n <= (entries > 2 ? 2 : 1); ++n) {
      FailAllocationNumber(n);
      EXPECT_FALSE(SendBand(0, 4, 4));
      PlatformSetFaultHook(nullptr, nullptr);
      EXPECT_EQ(state.pColorTable, nullptr);
      EXPECT_EQ(state.cColorTableEntries, entries);
      EXPECT_TRUE(state.bPageStarted);
      EXPECT_EQ(LastLines(1),
                "error\t\tImageProcessing END (E_FAIL, error handling " + std::string(name) + ")|");
      state.ResetPage();
    }
  }
  EngDeletePalette(state.hDevicePalette);
  EXPECT_FALSE(SendBand(0, 4, 4));  // the palette is gone
}

TEST_F(BandCapture, CopiedStatesShareThePageUntilOneGrows) {
  SendBand(0, 100, 200);
  auto older = std::make_unique<COemPDEV>(state);
  EXPECT_EQ(older->pBitmapBuffer, state.pBitmapBuffer);
  EXPECT_TRUE(SendBand(0, 100, 200, 77));
  EXPECT_EQ(older->dwBitmapBufferSize, 60000u);
  EXPECT_EQ(state.dwBitmapBufferSize, 120000u);
  state.pBitmapBuffer[0] = 0xAB;
  COemPDEV newest;
  newest = *older;
  older->ResetPage();
  older.reset();
  EXPECT_EQ(newest.pBitmapBuffer[0], Pattern(0));  // the last holder
  EXPECT_TRUE(SendBand(0, 100, 200, 5));
  ExpectBytes({{59999, 59999}, {60000, 77}, {120000, 5}});
}

}  // namespace
