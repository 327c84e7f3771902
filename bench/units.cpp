#include "bench/units.h"

#include <png.h>

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <utility>
#include <vector>

void TextbookFloydSteinberg(std::span<std::uint8_t> levels, int widthPx) {
  const int height = static_cast<int>(levels.size()) / widthPx;
  std::vector<int> below(widthPx + 2), row(widthPx + 2);
  for (int y = 0; y < height; ++y) {
    row.swap(below);
    below.assign(below.size(), 0);
    for (int x = 0; x < widthPx; ++x) {
      std::uint8_t& level = levels[static_cast<std::size_t>(y) * widthPx + x];
      const int wanted = level + row[x + 1] / 16;
      const int printed = wanted < 128 ? 0 : 255;
      const int error = wanted - printed;
      row[x + 2] += 7 * error;
      below[x] += 3 * error;
      below[x + 1] += 5 * error;
      below[x + 2] += error;
      level = static_cast<std::uint8_t>(printed);
    }
  }
}

double StageClock::Now() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double StageClock::Lap() {
  const double now = Now();
  return now - std::exchange(m_last, now);
}

namespace {

void Fail(png_structp, png_const_charp why) { throw std::runtime_error(why); }

struct Reader {
  std::span<const char> left;
};

}  // namespace

std::size_t LibpngLevel9Bytes(std::span<const char> png) {
  png_structp reader = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Fail, nullptr);
  png_infop info = png_create_info_struct(reader);
  Reader input{png};
  png_set_read_fn(reader, &input, [](png_structp self, png_bytep to, png_size_t size) {
    auto& source = *static_cast<Reader*>(png_get_io_ptr(self));
    if (size > source.left.size()) png_error(self, "a short file");
    std::copy_n(source.left.data(), size, to);
    source.left = source.left.subspan(size);
  });
  png_read_png(reader, info, PNG_TRANSFORM_IDENTITY, nullptr);
  const unsigned lastDots = png_get_image_width(reader, info) % 8;
  if (png_get_bit_depth(reader, info) == 1 && lastDots != 0) {
    // What libpng leaves behind the last dots is chance.
    for (png_uint_32 y = 0; y < png_get_image_height(reader, info); ++y) {
      png_get_rows(reader, info)[y][png_get_rowbytes(reader, info) - 1] &= 0xFF00 >> lastDots;
    }
  }

  std::size_t bytes = 0;
  png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Fail, nullptr);
  png_set_write_fn(
      writer, &bytes,
      [](png_structp self, png_bytep, png_size_t size) {
        *static_cast<std::size_t*>(png_get_io_ptr(self)) += size;
      },
      nullptr);
  png_set_compression_level(writer, 9);
  png_set_filter(writer, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_write_png(writer, info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&writer, nullptr);
  png_destroy_read_struct(&reader, &info, nullptr);
  return bytes;
}
