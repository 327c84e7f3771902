// Owners of the bitmaps and drawing objects of a page's stages.
#pragma once

#include <memory>

#include "config/device_state.h"
#include "config/process.h"

struct BitmapDeleter {
  void operator()(Gdiplus::Bitmap* bitmap) const { BitmapHelper::DeleteBitmap(bitmap); }
};
using BitmapOwner = std::unique_ptr<Gdiplus::Bitmap, BitmapDeleter>;

inline BitmapOwner MakeBitmap(UINT widthPx, UINT heightPx, Gdiplus::PixelFormat format,
                              LPCWSTR name) {
  return BitmapOwner(BitmapHelper::CreateBitmap(static_cast<INT>(widthPx),
                                                static_cast<INT>(heightPx), format, name));
}

// Hands the bitmap of a stage to the library's diagnostic save.
inline void SaveStage(const COemPDEV& state, Gdiplus::Bitmap* bitmap, LPCWSTR stage) {
  BitmapHelper::DevTestSaveBitmapAs(bitmap, state.dwJobId, state.dwPageCount, stage, g_logClient);
}

// Null if the drawing object cannot be allocated.
using GraphicsOwner = std::unique_ptr<Gdiplus::Graphics>;
inline GraphicsOwner DrawOn(Gdiplus::Bitmap* bitmap) {
  return GraphicsOwner(Gdiplus::Graphics::FromImage(bitmap));
}

inline constexpr Gdiplus::ARGB kOpaqueWhite = 0xFFFFFFFF;
