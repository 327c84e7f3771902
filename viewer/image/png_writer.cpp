#include <png.h>

#include <cmath>
#include <new>

#include "viewer/image/png.h"

namespace viewer {

namespace {

void Append(png_structp png, png_bytep bytes, std::size_t size) {
  static_cast<std::string*>(png_get_io_ptr(png))
      ->append(reinterpret_cast<const char*>(bytes), size);
}
void NoFlush(png_structp) {}

// libpng reports errors by a long jump, so the caller owns every object with a destructor.
bool WriteRows(png_structp png, png_infop info, std::uint32_t width, std::uint32_t height,
               png_uint_32 dotsAMetre, const std::vector<png_color>& palette,
               const FillRow& fillRow, std::vector<std::uint8_t>& row, std::string& file) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_write_fn(png, &file, Append, NoFlush);
  const int depth = palette.size() <= 2 ? 1 : palette.size() <= 4 ? 2 : 4;
  png_set_IHDR(png, info, width, height, depth, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  png_set_pHYs(png, info, dotsAMetre, dotsAMetre, PNG_RESOLUTION_METER);
  png_set_filter(png, 0, PNG_FILTER_NONE);
  png_set_user_limits(png, kMostDotsASide, kMostDotsASide);
  png_write_info(png, info);
  png_set_packing(png);
  for (std::uint32_t y = 0; y < height; ++y) {
    fillRow(y, row.data());
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  return true;
}

}  // namespace

std::string WritePng(std::uint32_t width, std::uint32_t height, double dpi,
                     const std::vector<Colour>& palette, const FillRow& fillRow) {
  std::vector<png_color> colours;
  colours.reserve(palette.size());
  for (const Colour& colour : palette) {
    colours.push_back({colour.red, colour.green, colour.blue});
  }
  std::string file;
  std::vector<std::uint8_t> row(width);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
  const auto dotsAMetre = static_cast<png_uint_32>(std::lround(dpi / 0.0254));
  const bool written = info != nullptr &&
                       WriteRows(png, info, width, height, dotsAMetre, colours, fillRow, row, file);
  png_destroy_write_struct(&png, &info);
  if (!written) throw std::bad_alloc();  // writing to memory has no other failure
  return file;
}

}  // namespace viewer
