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
    for (INT i = 0; i < width * height; ++i) {
      const DWORD rgb = color(i % width, i / width);
      BYTE* pixel = Row(data, i / width) + i % width * 3;
      for (int k = 0; k < 3; ++k) pixel[k] = static_cast<BYTE>(rgb >> (8 * k));
    }
    return bitmap;
  }
  static DWORD Pixel(Bitmap* bitmap, INT x, INT y) {
    const BYTE* pixel = Row(Lock(bitmap), y) + 3 * x;
    return pixel[0] | pixel[1] << 8 | pixel[2] << 16;
  }

  // The part of a bitmap that is covered with dots.
  static double Covered(Bitmap* dots) {
    const INT width = static_cast<INT>(dots->GetWidth());
    const INT count = width * static_cast<INT>(dots->GetHeight());
    double black = 0;
    for (INT i = 0; i < count; ++i) black += Pixel(dots, i % width, i / width) == 0;
    return black / count;
  }

  ULONG_PTR token = 0;
  std::vector<Bitmap*> owned;
  std::mt19937 random{3};
};
