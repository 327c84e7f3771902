// Pages for the tests of the bitmap functions.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "config/vlx_shared.h"

class Bitmaps : public ::testing::Test {
 protected:
  using Bitmap = Gdiplus::Bitmap;

  Bitmaps() {
    const Gdiplus::GdiplusStartupInput input = {1, nullptr, FALSE, FALSE};
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
  }
  ~Bitmaps() override {
    for (Bitmap* bitmap : owned) BitmapHelper::DeleteBitmap(bitmap);
    Gdiplus::GdiplusShutdown(token);
  }
  Bitmap* Own(Bitmap* bitmap) {
    owned.push_back(bitmap);
    return bitmap;
  }
  static Gdiplus::BitmapData Lock(Bitmap* bitmap) {
    Gdiplus::BitmapData data = {};
    Gdiplus::DllExports::GdipBitmapLockBits(bitmap->nativeImage, nullptr, 3,
                                            bitmap->GetPixelFormat(), &data);
    return data;
  }
  static BYTE* Row(const Gdiplus::BitmapData& data, INT y) {
    return static_cast<BYTE*>(data.Scan0) + y * data.Stride;
  }
  // A 24-bit bitmap; color gives 0xRRGGBB.
  template <typename Color>
  Bitmap* Page(INT width, INT height, const Color& color) {
    Bitmap* bitmap =
        Own(BitmapHelper::CreateBitmap(width, height, Gdiplus::PixelFormat24bppRGB, WTEXT("page")));
    const Gdiplus::BitmapData data = Lock(bitmap);
    for (INT y = 0; y < height; ++y) {
      for (INT x = 0; x < width; ++x) {
        const DWORD rgb = color(x, y);
        for (int i = 0; i < 3; ++i) Row(data, y)[3 * x + i] = static_cast<BYTE>(rgb >> (8 * i));
      }
    }
    return bitmap;
  }
  static DWORD Pixel(Bitmap* bitmap, INT x, INT y) {
    const BYTE* pixel = Row(Lock(bitmap), y) + 3 * x;
    return pixel[0] | pixel[1] << 8 | pixel[2] << 16;
  }

  ULONG_PTR token = 0;
  std::vector<Bitmap*> owned;
  std::mt19937 random{3};
};
