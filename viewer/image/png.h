// PNG files in memory: reads the images that a job downloads, writes pictures of labels.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "viewer/image/bit_image.h"

namespace viewer {

// The header of a PNG file. The rest of the file may still be damaged.
struct PngHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int depth = 0;     // bits per channel
  int channels = 0;  // 1 grey or palette, 2 grey with alpha, 3 RGB, 4 RGBA
  bool found = false;
};
PngHeader ReadPngHeader(std::string_view png);

// Limits of an image or a label. Larger ones are not drawn, and the report says so.
constexpr std::uint32_t kMostDotsASide = 100'000;
constexpr std::uint64_t kMostDots = 200'000'000;

// Decodes a PNG file. A pixel darker than middle grey becomes a dot. On failure returns null, and
// `why` says what is wrong and what to do.
std::shared_ptr<const BitImage> ReadPng(std::string_view png, std::string& why);

struct Colour {
  std::uint8_t red, green, blue;
};

// Fills row y of a picture with one palette index per dot.
using FillRow = std::function<void(std::uint32_t y, std::uint8_t* row)>;

// Encodes a picture of up to 16 colours as a PNG file. Calls fillRow once per row, from the top.
std::string WritePng(std::uint32_t width, std::uint32_t height, double dpi,
                     const std::vector<Colour>& palette, const FillRow& fillRow);

}  // namespace viewer
