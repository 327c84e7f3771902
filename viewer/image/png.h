// PNG files in memory: images that a job downloads, and pictures of labels.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "viewer/image/bit_image.h"

namespace viewer {

// What a PNG header says, whether or not the rest can be read.
struct PngHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int depth = 0;     // bits a channel
  int channels = 0;  // 1, or 3 and 4 in colour and with transparency
  bool found = false;
};
PngHeader ReadPngHeader(std::string_view png);

// The most that an image or a label may hold. Beyond it nothing is drawn, and the text says so.
constexpr std::uint32_t kMostDotsASide = 100'000;
constexpr std::uint64_t kMostDots = 200'000'000;

// Reads a PNG file: what is darker than middle grey is a dot. On failure no image, and `why` says
// what is wrong and what to do.
std::shared_ptr<const BitImage> ReadPng(std::string_view png, std::string& why);

struct Colour {
  std::uint8_t red, green, blue;
};

// Fills one row of a picture with indexes into its palette, one a dot.
using FillRow = std::function<void(std::uint32_t y, std::uint8_t* row)>;

// A picture of up to 16 colours as a PNG file. Rows are asked for from the top, each once.
std::string WritePng(std::uint32_t width, std::uint32_t height, double dpi,
                     const std::vector<Colour>& palette, const FillRow& fillRow);

}  // namespace viewer
