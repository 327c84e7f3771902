// Fixture for bitmap tests: starts GDI+ and reads pixels as colours.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/gdiplus.h"

class GdiPlusTest : public ::testing::Test {
 protected:
  using Bitmap = Gdiplus::Bitmap;
  using Colors = std::vector<DWORD>;  // 0xRRGGBB, row by row

  GdiPlusTest() {
    const Gdiplus::GdiplusStartupInput input;
    EXPECT_EQ(Gdiplus::GdiplusStartup(&m_token, &input, nullptr), Gdiplus::Ok);
  }
  ~GdiPlusTest() override { Gdiplus::GdiplusShutdown(m_token); }

  // The whole bitmap, to read and to write.
  static Gdiplus::BitmapData Lock(Bitmap& bitmap) {
    Gdiplus::BitmapData data = {};
    bitmap.LockBits(nullptr, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite,
                    bitmap.GetPixelFormat(), &data);
    return data;
  }
  static BYTE* Row(const Gdiplus::BitmapData& data, INT y) {
    return static_cast<BYTE*>(data.Scan0) + y * data.Stride;
  }
  // The pixels of either format.
  static Colors ColorsOf(const Gdiplus::BitmapData& data) {
    Colors colors;
    for (UINT i = 0; i < data.Width * data.Height; ++i) {
      const UINT x = i % data.Width;
      const BYTE* row = Row(data, static_cast<INT>(i / data.Width));
      colors.push_back(data.PixelFormat == PixelFormat24bppRGB
                           ? row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16
                           : (row[x / 8] >> (7 - x % 8) & 1) * 0xFFFFFF);
    }
    return colors;
  }
  static Colors ColorsOf(Bitmap& bitmap) { return ColorsOf(Lock(bitmap)); }

  std::mt19937 random{11};

 private:
  ULONG_PTR m_token = 0;
};
