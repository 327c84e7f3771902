// What Exif data of a picture says about its place on a page.
#pragma once

#include <string_view>

// Stands before Exif data in a JPEG marker.
inline constexpr std::string_view kExifName("Exif\0\0", 6);

struct ExifData {
  int orientation = 1;  // 1 to 8, see TurnPage
  double xDpi = 0;      // 0: not stated
  double yDpi = 0;
};

// data: a TIFF header and its directories. What is damaged counts as not stated.
ExifData ReadExif(std::string_view data);
