#include "Renderer/band_capture.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/fault.h"
#include "platform/palette.h"

namespace {

LONG Stride(LONG widthPx) { return (3 * widthPx + 3) / 4 * 4; }

class BandCapture : public ::testing::Test {
 protected:
  ~BandCapture() override { PlatformSetFaultHook(nullptr, nullptr); }

  // Sends a band whose bytes are first, first + 1 and so on, modulo 251.
  bool SendBand(LONG x, LONG width, LONG height, int first = 0, bool blank = false) {
    const DWORD size = static_cast<DWORD>(Stride(width) * height);
    bytes.resize(size);
    for (DWORD i = 0; i < size; ++i) bytes[i] = Pattern(first + static_cast<int>(i));
    const BITMAPINFOHEADER header = {40, width, height, 1, 24, 0, size, 11, 12, 13, 14};
    return CaptureBand(
        state, {blank ? nullptr : bytes.data(), &header, format, {x, 0}, blank, orientation});
  }
  // A band that says another size than its rows have.
  bool SendSized(LONG x, LONG width, LONG height, DWORD size, int first = 0) {
    bytes.resize(Stride(width) * height);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = Pattern(first + static_cast<int>(i));
    const BITMAPINFOHEADER header = {40, width, height, 1, 24, 0, size, 11, 12, 13, 14};
    return CaptureBand(state, {bytes.data(), &header, format, {x, 0}, false, orientation});
  }
  static BYTE Pattern(int i) { return static_cast<BYTE>(i % 251); }
  BYTE At(LONG i) const { return state.pBitmapBuffer[i]; }

  static bool FailAllocation(const char* call, void* left) {
    const bool allocates =
        std::strcmp(call, "LocalAlloc") == 0 || std::strcmp(call, "LocalReAlloc") == 0;
    return allocates && --*static_cast<int*>(left) == 0;
  }
  void FailAllocationNumber(int n) {
    allocationsLeft = n;
    PlatformSetFaultHook(FailAllocation, &allocationsLeft);
  }

  COemPDEV state;
  DWORD format = 5;
  SHORT orientation = DMORIENT_PORTRAIT;
  std::vector<BYTE> bytes;
  int allocationsLeft = 0;
};

TEST_F(BandCapture, PortraitBandsAreAppended) {
  EXPECT_TRUE(SendBand(0, 100, 10));
  EXPECT_TRUE(SendBand(0, 100, 10, 77));
  EXPECT_TRUE(SendBand(0, 100, 1, 0, true));
  EXPECT_EQ(state.bmiPage.biWidth, 100);
  EXPECT_EQ(state.bmiPage.biHeight, 21);
  EXPECT_EQ(state.bmiPage.biSizeImage, 6300u);
  EXPECT_EQ(state.bmiPage.biClrImportant, 14u);
  EXPECT_EQ(state.dwBitmapBufferSize, 6300u);
  EXPECT_EQ(At(2999), Pattern(2999));
  EXPECT_EQ(At(3000), Pattern(77));
  for (LONG i = 6000; i < 6300; ++i) ASSERT_EQ(At(i), 0xFF);
}

TEST_F(BandCapture, LandscapeStripsLieBesideEachOther) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(400, 200, 50));
  EXPECT_EQ(state.dwBitmapBufferSize, 50u * 1800);
  EXPECT_EQ(state.bmiPage.biSizeImage, 0u);
  EXPECT_TRUE(SendBand(200, 200, 50, 7));
  for (const LONG row : {0, 49}) {
    EXPECT_EQ(At(row * 1800 + 599), 0xFF);
    EXPECT_EQ(At(row * 1800 + 600), Pattern(7 + row * 600));
    EXPECT_EQ(At(row * 1800 + 1199), Pattern(7 + row * 600 + 599));
    EXPECT_EQ(At(row * 1800 + 1200), Pattern(row * 600));
  }
  EXPECT_TRUE(SendBand(200, 200, 50, 0, true));
  EXPECT_EQ(At(600), 0xFF);
}

TEST_F(BandCapture, OverhangingStripsAreCutToThePage) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(8, 5, 3));  // rows of 16 bytes at byte 24 of 40: the padding just fits
  EXPECT_EQ(state.dwBitmapBufferSize, 3u * 40);
  EXPECT_TRUE(SendBand(-2, 4, 3, 50));  // begins 6 bytes into each row
  EXPECT_EQ(At(0), Pattern(56));
  EXPECT_EQ(At(5), Pattern(61));
  EXPECT_EQ(At(6), 0xFF);
  EXPECT_EQ(At(40), Pattern(68));
  EXPECT_TRUE(SendBand(12, 4, 9, 100));  // one column and three rows are on the page
  EXPECT_EQ(At(36), Pattern(100));
  EXPECT_EQ(At(39), Pattern(103));
  EXPECT_EQ(At(2 * 40 + 36), Pattern(124));
  EXPECT_EQ(At(40), Pattern(68));
  for (const LONG x : {14, 2000000000, -4, -2000000000}) EXPECT_TRUE(SendBand(x, 4, 3, 200));
  EXPECT_EQ(At(0), Pattern(56));
  EXPECT_EQ(At(39), Pattern(103));
}

TEST_F(BandCapture, StripsGiveNoMoreThanTheyHave) {
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(0, 4, 3, 0, true));
  EXPECT_TRUE(SendSized(0, 4, 3, 12 + 1, 100));  // a row and a byte
  EXPECT_EQ(At(11), Pattern(111));
  EXPECT_EQ(At(12), Pattern(112));
  EXPECT_EQ(At(13), 0xFF);
  EXPECT_EQ(At(24), 0xFF);
  EXPECT_TRUE(SendSized(0, 4, 3, 0, 50));  // no size: all of its rows
  EXPECT_EQ(At(0), Pattern(50));
  EXPECT_EQ(At(35), Pattern(85));
  EXPECT_TRUE(SendBand(0, 4, 1, 0, true));  // a blank row over the first
  EXPECT_EQ(At(11), 0xFF);
  EXPECT_EQ(At(12), Pattern(62));
  EXPECT_TRUE(SendBand(-1, 1, 1, 30));  // only its padding is on the page
  EXPECT_EQ(At(0), Pattern(33));
  EXPECT_EQ(At(1), 0xFF);
}

TEST_F(BandCapture, SmallestPagesAndBandsCount) {
  EXPECT_TRUE(SendSized(0, 1, 1, 0));
  EXPECT_EQ(state.dwBitmapBufferSize, 0u);
  EXPECT_TRUE(SendSized(0, 1, 1, 1, 9));
  EXPECT_EQ(state.dwBitmapBufferSize, 1u);
  EXPECT_EQ(At(0), Pattern(9));
  state.ResetPage();
  orientation = DMORIENT_LANDSCAPE;
  EXPECT_TRUE(SendBand(0, 1, 1, 5));
  EXPECT_EQ(state.dwBitmapBufferSize, 4u);
  EXPECT_EQ(At(0), Pattern(5));
}

TEST_F(BandCapture, PageOfNoSizeIsRefused) {
  orientation = DMORIENT_LANDSCAPE;
  const struct {
    LONG x, width, height;
  } rows[] = {{-4, 4, 1}, {0, 4, -1}, {0, 4, 0}, {2147483647, 4, 4}, {0, 2000000000, 2000000000}};
  for (const auto& row : rows) {
    const BITMAPINFOHEADER header = {40, row.width, row.height, 1, 24, 0, 0, 0, 0, 0, 0};
    SetLastError(0);
    EXPECT_FALSE(CaptureBand(state, {nullptr, &header, 5, {row.x, 0}, true, orientation}));
    EXPECT_EQ(GetLastError(), 14u);
    EXPECT_FALSE(state.bPageStarted);
  }
  EXPECT_TRUE(SendBand(0, 4, 4));
}

TEST_F(BandCapture, FailedGrowthStartsThePageAnew) {
  EXPECT_TRUE(SendBand(0, 4, 4));
  FailAllocationNumber(1);
  EXPECT_FALSE(SendBand(0, 4, 4));
  EXPECT_EQ(state.pBitmapBuffer, nullptr);
  EXPECT_EQ(state.dwBitmapBufferSize, 0u);
  EXPECT_EQ(state.bmiPage.biHeight, 0);
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
  for (const auto& [code, entries] : {std::pair(1u, 2), {2u, 16}, {3u, 256}}) {
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
    FailAllocationNumber(1);
    EXPECT_FALSE(SendBand(0, 4, 4));
    PlatformSetFaultHook(nullptr, nullptr);
    EXPECT_EQ(state.pColorTable, nullptr);
    EXPECT_EQ(state.cColorTableEntries, entries);
    EXPECT_TRUE(state.bPageStarted);
    state.ResetPage();
  }
  EngDeletePalette(state.hDevicePalette);
  EXPECT_FALSE(SendBand(0, 4, 4));  // the palette is gone
}

TEST_F(BandCapture, BandOfOneStateDoesNotReachTheOther) {
  SendBand(0, 100, 200);
  COemPDEV older = state;
  EXPECT_TRUE(SendBand(0, 100, 200, 77));
  EXPECT_EQ(older.dwBitmapBufferSize, 60000u);
  EXPECT_EQ(state.dwBitmapBufferSize, 120000u);
  EXPECT_NE(older.pBitmapBuffer, state.pBitmapBuffer);
  state.pBitmapBuffer[0] = 0xAB;
  EXPECT_EQ(older.pBitmapBuffer[0], Pattern(0));
  older.ResetPage();
  EXPECT_TRUE(SendBand(0, 100, 200, 5));  // alone again
  EXPECT_EQ(At(59999), Pattern(59999));
  EXPECT_EQ(At(60000), Pattern(77));
  EXPECT_EQ(At(120000), Pattern(5));
}

TEST_F(BandCapture, CopiedStateSharesThePageUntilTheLastHolderGoes) {
  auto newer = std::make_unique<COemPDEV>();
  {
    COemPDEV older;
    std::swap(older, state);
    SendBand(0, 4, 4);
    *newer = state;
    state = older;
  }
  EXPECT_EQ(newer->pBitmapBuffer[5], Pattern(5));
  COemPDEV newest;
  newest = *newer;
  newer->ResetPage();
  newer.reset();
  EXPECT_EQ(newest.pBitmapBuffer[5], Pattern(5));
}

}  // namespace
