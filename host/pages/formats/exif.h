// What the Exif data of a picture says about its orientation and size.
#pragma once

#include <string_view>

// Precedes the Exif data in a JPEG marker.
inline constexpr std::string_view kExifName("Exif\0\0", 6);

struct ExifData {
  int orientation = 1;  // 1 to 8, see TurnPage
  double xDpi = 0;      // 0: not stated
  double yDpi = 0;
};

// data: a TIFF header with its directories. Damaged entries count as not stated.
ExifData ReadExif(std::string_view data);
