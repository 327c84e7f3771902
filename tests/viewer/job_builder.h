// Jobs written by hand: what a test needs of a printer's stream, byte by byte.
#pragma once

#include <png.h>

#include <string>
#include <vector>

// A 1-bit PNG file of rows like "#..#", # a dot; written by libpng, not by the code under test.
inline std::string PngOf(const std::vector<std::string>& rows) {
  std::string grey;
  for (const std::string& row : rows) {
    for (const char c : row) grey += c == '#' ? '\0' : '\xFF';
  }
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(rows.front().size());
  image.height = static_cast<png_uint_32>(rows.size());
  image.format = PNG_FORMAT_GRAY;
  png_alloc_size_t size = 0;
  png_image_write_to_memory(&image, nullptr, &size, 0, grey.data(), 0, nullptr);
  std::string file(size, '\0');
  png_image_write_to_memory(&image, file.data(), &size, 0, grey.data(), 0, nullptr);
  file.resize(size);
  return file;
}

inline std::string Download(const std::string& name, const std::string& png) {
  return "dPNG;" + name + "\r\n\x1B:" + png +
         "\x1B"
         "end-of-data\r\n";
}

// At 25.4 dpi a millimetre is a dot.
constexpr double kDotAMm = 25.4;

inline std::string PageSetUp(const std::string& size, const std::string& options = "") {
  return "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\n" + options + "Sl0;0.00,0.00," + size + "\r\n";
}
