// Crops a page's 1-bit images to the rows or columns with content, so that the printer gets no
// empty stripes.
#pragma once

#include "config/device_state.h"
#include "imaging/bitmap_owner.h"

// The bitmap that is sent in place of a given one.
struct CroppedImage {
  Gdiplus::Bitmap* used;  // the copy below, or the given bitmap
  BitmapOwner copy = nullptr;
  INT offsetPx = 0;    // the first row or column of the content
  bool empty = false;  // no content at all
};

// Crops by columns if the label is turned by a quarter (rotation 1 or 3), otherwise by rows. An
// image without content becomes one row or column. Without memory the given bitmap is used whole.
CroppedImage CropToContent(Gdiplus::Bitmap* given, DWORD rotation);
