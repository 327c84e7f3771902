// 1-bit images: a set bit is a dot that prints.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace viewer {

// Rows are padded to whole bytes; the leftmost dot is the highest bit of its byte.
struct BitImage {
  BitImage() = default;
  BitImage(std::uint32_t width_, std::uint32_t height_)
      : width(width_),
        height(height_),
        stride((std::size_t{width_} + 7) / 8),
        bits(stride * height_) {}

  bool At(std::uint32_t x, std::uint32_t y) const {
    return (bits[y * stride + x / 8] >> (7 - x % 8) & 1) != 0;
  }
  void Set(std::uint32_t x, std::uint32_t y) {
    bits[y * stride + x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
  }
  bool operator==(const BitImage&) const = default;

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t stride = 0;
  std::vector<std::uint8_t> bits;
};

// Returns the image turned counter-clockwise by 0, 90, 180 or 270 degrees.
BitImage Turn(const BitImage& image, int degrees);

// Returns the left half of an image whose two halves are equal; null if they differ.
std::shared_ptr<const BitImage> LeftOfTwo(const BitImage& image);

// The smallest rectangle around all dots of an image; empty if it has none.
struct DotBox {
  std::uint32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom are exclusive
  bool Empty() const { return right == 0; }
};
DotBox FindDots(const BitImage& image);

}  // namespace viewer
