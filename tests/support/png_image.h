// A PNG file as decoded by libpng: shape from its header, pixels as colours and, of their red, as
// grey levels.
#pragma once

#include <png.h>

#include <cstring>
#include <string>
#include <vector>

struct PngImage {
  unsigned width = 0;
  unsigned height = 0;
  int bitDepth = 0;
  int colorType = -1;
  std::vector<unsigned char> grey;   // width x height, 0 black
  std::vector<unsigned char> color;  // the same as red, green, blue

  unsigned char At(unsigned x, unsigned y) const { return grey[y * width + x]; }
};

// Returns an image of width 0 unless the bytes are a whole PNG file.
inline PngImage DecodePng(const std::string& bytes) {
  PngImage decoded;
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (bytes.size() < 26 || !png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) {
    return decoded;
  }
  image.format = PNG_FORMAT_RGB;
  decoded.color.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, decoded.color.data(), 0, nullptr)) return decoded;
  for (std::size_t i = 0; i < decoded.color.size(); i += 3)
    decoded.grey.push_back(decoded.color[i]);
  decoded.width = image.width;
  decoded.height = image.height;
  decoded.bitDepth = bytes[24];
  decoded.colorType = bytes[25];
  return decoded;
}

// Encodes pixels of that format, row by row, with libpng. The height follows from their count.
inline std::string EncodePng(png_uint_32 format, const std::string& pixels, std::size_t width) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.format = format;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(pixels.size() / width / PNG_IMAGE_PIXEL_SIZE(format));
  png_alloc_size_t size = pixels.size() + 4096;
  std::string file(size, '\0');
  png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr);
  file.resize(size);
  return file;
}
