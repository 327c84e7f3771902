#include <gtest/gtest.h>

#include "Renderer/gdiplus_guard.h"
#include "imaging/bitmap_owner.h"
#include "imaging/image_emission.h"
#include "tests/support/device.h"

namespace {

TEST(Emission, WhatIsMissingIsNotPlacedOrNotWritten) {
  g_gdiPlusGuard.Start();
  Device device;
  BitmapOwner image = MakeBitmap(8, 8, Gdiplus::PixelFormat1bppIndexed, WTEXT("test"));
  const auto send = [&](SURFOBJ* surface) {
    return SendImageToPrinter(surface, image.get(), nullptr, false, false);
  };
  device.object.pPublicDM = nullptr;
  EXPECT_EQ(send(&device.surface), 1);
  EXPECT_EQ(device.writes.size(), 3u);  // the image alone
  EXPECT_EQ(send(nullptr), 0);
  for (void** argument : {&device.object.pOEMDM, &device.object.pdevOEM}) {
    *argument = nullptr;
    SetLastError(0);
    EXPECT_EQ(send(&device.surface), 0);
    EXPECT_EQ(GetLastError(), 87u);
  }
  EXPECT_EQ(device.writes.size(), 3u);
  image.reset();
  g_gdiPlusGuard.Stop();
}

}  // namespace
