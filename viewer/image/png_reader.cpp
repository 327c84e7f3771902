#include <png.h>

#include <cstring>

#include "viewer/image/png.h"

namespace viewer {

namespace {

constexpr std::uint64_t kMostInterlacedDots = 20'000'000;  // held as one byte per dot
constexpr int kMiddleGrey = 128;

std::uint32_t BigEndian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char c : bytes.substr(0, 4)) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

struct Source {
  std::string_view bytes;
};

void ReadBytes(png_structp png, png_bytep to, std::size_t size) {
  Source& source = *static_cast<Source*>(png_get_io_ptr(png));
  if (size > source.bytes.size()) png_error(png, "it ends too early");
  std::memcpy(to, source.bytes.data(), size);
  source.bytes.remove_prefix(size);
}

void KeepError(png_structp png, png_const_charp message) {
  *static_cast<std::string*>(png_get_error_ptr(png)) = message;
  png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

void PackRow(const std::vector<png_byte>& grey, std::size_t at, std::uint32_t y, BitImage& image) {
  for (std::uint32_t x = 0; x < image.width; ++x) {
    if (grey[at + x] < kMiddleGrey) image.Set(x, y);
  }
}

// libpng reports errors by a long jump out of this function, so the caller owns every object with a
// destructor.
bool ReadRows(png_structp png, png_infop info, Source& source, BitImage& image,
              std::vector<png_byte>& grey) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_read_fn(png, &source, ReadBytes);
  png_set_user_limits(png, kMostDotsASide, kMostDotsASide);
  png_read_info(png, info);
  png_set_expand(png);
  png_set_strip_16(png);
  png_set_strip_alpha(png);
  if ((png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) != 0) {
    png_set_rgb_to_gray(png, PNG_ERROR_ACTION_NONE, -1, -1);
  }
  const int passes = png_set_interlace_handling(png);
  const std::uint64_t dots = std::uint64_t{image.width} * image.height;
  if (passes > 1 && dots > kMostInterlacedDots) png_error(png, "it is too large for interlacing");
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != image.width) png_error(png, "its rows are of another width");
  grey.resize(passes > 1 ? dots : image.width);
  for (int pass = 0; pass < passes; ++pass) {
    for (std::uint32_t y = 0; y < image.height; ++y) {
      const std::size_t at = passes > 1 ? std::size_t{y} * image.width : 0;
      png_read_row(png, grey.data() + at, nullptr);
      if (pass == passes - 1) PackRow(grey, at, y, image);
    }
  }
  png_read_end(png, nullptr);
  return true;
}

}  // namespace

PngHeader ReadPngHeader(std::string_view png) {
  PngHeader header;
  if (png.size() < 26 || !png.starts_with("\x89PNG\r\n\x1A\n") || png.substr(12, 4) != "IHDR") {
    return header;
  }
  header.found = true;
  header.width = BigEndian(png.substr(16));
  header.height = BigEndian(png.substr(20));
  header.depth = static_cast<unsigned char>(png[24]);
  const int type = static_cast<unsigned char>(png[25]);
  header.channels = type == 2 ? 3 : type == 4 ? 2 : type == 6 ? 4 : 1;
  return header;
}

std::shared_ptr<const BitImage> ReadPng(std::string_view bytes, std::string& why) {
  const PngHeader header = ReadPngHeader(bytes);
  const std::string size = std::to_string(header.width) + " x " + std::to_string(header.height);
  if (!header.found) {
    why = "is not a PNG file: send one, which begins with the bytes 89 50 4E 47";
    return nullptr;
  }
  if (header.width == 0 || header.height == 0 || header.width > kMostDotsASide ||
      header.height > kMostDotsASide || std::uint64_t{header.width} * header.height > kMostDots) {
    why = "claims to be " + size + " dots: send an image of 1 to " +
          std::to_string(kMostDotsASide) + " dots a side and " + std::to_string(kMostDots) +
          " in all";
    return nullptr;
  }
  std::string error;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &error, KeepError, IgnoreWarning);
  png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
  auto image = std::make_shared<BitImage>(header.width, header.height);
  std::vector<png_byte> grey;
  Source source = {bytes};
  const bool read = info != nullptr && ReadRows(png, info, source, *image, grey);
  png_destroy_read_struct(&png, &info, nullptr);
  if (read) return image;
  why = "of " + size + " dots cannot be read as PNG (" + error + "): send the whole file unchanged";
  return nullptr;
}

}  // namespace viewer
