// Pages for the tests of the bitmap functions.
#pragma once

#include <algorithm>

#include "config/vlx_shared.h"
#include "tests/support/gdiplus_test.h"

class Bitmaps : public GdiPlusTest {
 protected:
  ~Bitmaps() override {
    for (Bitmap* bitmap : owned) BitmapHelper::DeleteBitmap(bitmap);
  }
  Bitmap* Own(Bitmap* bitmap) {
    owned.push_back(bitmap);
    return bitmap;
  }
  // A 24-bit bitmap.
  Bitmap* Page(INT width, const Colors& colors) {
    const INT height = static_cast<INT>(colors.size()) / width;
    Bitmap* bitmap =
        Own(BitmapHelper::CreateBitmap(width, height, PixelFormat24bppRGB, WTEXT("page")));
    const Gdiplus::BitmapData data = Lock(*bitmap);
    for (INT i = 0; i < width * height; ++i) {
      BYTE* pixel = Row(data, i / width) + i % width * 3;
      for (int k = 0; k < 3; ++k) pixel[k] = static_cast<BYTE>(colors[i] >> (8 * k));
    }
    return bitmap;
  }
  Bitmap* FlatPage(DWORD color) { return Page(256, Colors(65536, color)); }

  // The part of a picture that is covered with dots.
  static double Covered(const Colors& dots) {
    return static_cast<double>(std::count(dots.begin(), dots.end(), 0u)) / dots.size();
  }

  std::vector<Bitmap*> owned;
};
