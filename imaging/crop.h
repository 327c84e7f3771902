// Cropping a page's 1-bit images to the rows or columns that hold content, so that no empty stripes
// travel to the printer.
#pragma once

#include "config/device_state.h"
#include "imaging/bitmap_owner.h"

// The bitmap that is sent in place of a given one.
struct CroppedImage {
  Gdiplus::Bitmap* used;  // the copy below, or the given bitmap
  BitmapOwner copy;
  INT offsetPx = 0;    // content's first row or column
  bool empty = false;  // no content at all
};

// Crops by columns when the label is turned by a quarter (rotation 1 or 3), else by rows. An image
// without content becomes one row or column. Without memory the given bitmap is used as it is.
CroppedImage CropToContent(Gdiplus::Bitmap* given, DWORD rotation);
