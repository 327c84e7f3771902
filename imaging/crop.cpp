#include "imaging/crop.h"

#include <algorithm>

BitmapOwner CropBitmap(Gdiplus::Bitmap* source, INT x, INT y, INT width, INT height) {
  width = std::max(width, 1);
  height = std::max(height, 1);
  BitmapOwner cropped =
      MakeBitmap(width, height, source->GetPixelFormat(), WTEXT("pCroppedBitmap"));
  if (cropped == nullptr) return nullptr;
  const GraphicsOwner graphics = DrawOn(cropped.get());
  if (graphics == nullptr) return nullptr;
  graphics->Clear(kOpaqueWhite);
  graphics->DrawImage(source, 0, 0, Gdiplus::Rect{x, y, width, height});
  return cropped;
}

CroppedImage CropToContent(Gdiplus::Bitmap* given, DWORD rotation) {
  CroppedImage image{given, nullptr};
  const bool byColumns = rotation == 1 || rotation == 3;
  const INT width = static_cast<INT>(given->GetWidth());
  const INT height = static_cast<INT>(given->GetHeight());
  INT first = byColumns ? BitmapHelper::GetFirstContentColumn1BPP(given)
                        : BitmapHelper::GetFirstContentRow1BPP(given);
  INT count = 1;
  image.empty = first < 0;
  if (image.empty) {
    first = 0;
  } else {
    const INT last = byColumns ? BitmapHelper::GetLastContentColumn1BPP(given)
                               : BitmapHelper::GetLastContentRow1BPP(given);
    count = last - first + 1;
  }
  if (count == (byColumns ? width : height)) return image;

  image.copy = byColumns ? CropBitmap(given, first, 0, count, height)
                         : CropBitmap(given, 0, first, width, count);
  if (image.copy != nullptr) {
    image.used = image.copy.get();
    image.offsetPx = first;
  }
  return image;
}
