#include "bench/page.h"

#include <png.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <stdexcept>

namespace {

Raster ReadPng(const std::string& path) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    throw std::runtime_error("The sample " + path + " cannot be read");
  }
  image.format = PNG_FORMAT_BGR;
  Raster raster = MakeRaster(static_cast<int>(image.width), static_cast<int>(image.height));
  if (!png_image_finish_read(&image, nullptr, raster.pixels.data(),
                             static_cast<png_int_32>(raster.strideBytes), nullptr)) {
    throw std::runtime_error("The sample " + path + " is damaged");
  }
  return raster;
}

std::uint8_t Grained(std::uint8_t level, int grain) {
  if (level == 0 || level == 255) return level;  // paper and ink have none
  return static_cast<std::uint8_t>(std::clamp(level + grain, 1, 254));
}

}  // namespace

Raster MakeRaster(int widthPx, int heightPx) {
  Raster raster{widthPx, heightPx, (std::size_t{3} * widthPx + 3) / 4 * 4, {}};
  raster.pixels.assign(raster.strideBytes * heightPx, 0xFF);
  return raster;
}

Raster ReadLabel(const std::string& name, int widthPx, int heightPx) {
  const Raster sample = ReadPng(std::string(VLX_SAMPLES) + "/" + name + ".png");
  Raster page = MakeRaster(widthPx, heightPx);
  std::minstd_rand random(1);
  for (int y = 0; y < heightPx; ++y) {
    const std::uint8_t* from = sample.Row(y * sample.heightPx / heightPx);
    for (int x = 0; x < widthPx; ++x) {
      std::uint8_t* to = page.Row(y) + 3 * x;
      std::memcpy(to, from + 3 * (x * sample.widthPx / widthPx), 3);
      if (name != "photo") continue;
      const int grain = static_cast<int>(random() >> 8 & 7) - 3;
      for (int i = 0; i < 3; ++i) to[i] = Grained(to[i], grain);
    }
  }
  return page;
}

Raster TurnedBack(const Raster& page) {
  Raster turned = MakeRaster(page.heightPx, page.widthPx);
  for (int y = 0; y < turned.heightPx; ++y) {
    for (int x = 0; x < turned.widthPx; ++x) {
      std::memcpy(turned.Row(y) + 3 * x, page.Row(x) + 3 * (page.widthPx - 1 - y), 3);
    }
  }
  return turned;
}

std::vector<std::uint8_t> GreyOf(const Raster& page) {
  std::vector<std::uint8_t> grey;
  grey.reserve(static_cast<std::size_t>(page.widthPx) * page.heightPx);
  for (int y = 0; y < page.heightPx; ++y) {
    const std::uint8_t* pixel = page.Row(y);
    for (int x = 0; x < page.widthPx; ++x, pixel += 3) {
      grey.push_back(
          static_cast<std::uint8_t>((114 * pixel[0] + 587 * pixel[1] + 299 * pixel[2]) / 1000));
    }
  }
  return grey;
}
