#include "viewer/image/bit_image.h"

#include <algorithm>

namespace viewer {

BitImage Turn(const BitImage& image, int degrees) {
  if (degrees == 0) return image;
  const bool across = degrees == 90 || degrees == 270;
  BitImage turned(across ? image.height : image.width, across ? image.width : image.height);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) {
      if (!image.At(x, y)) continue;
      if (degrees == 90) {
        turned.Set(y, image.width - 1 - x);
      } else if (degrees == 180) {
        turned.Set(image.width - 1 - x, image.height - 1 - y);
      } else {
        turned.Set(image.height - 1 - y, x);
      }
    }
  }
  return turned;
}

std::shared_ptr<const BitImage> LeftOfTwo(const BitImage& image) {
  if (image.width % 2 != 0) return nullptr;
  const std::uint32_t half = image.width / 2;
  auto left = std::make_shared<BitImage>(half, image.height);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < half; ++x) {
      if (image.At(x, y) != image.At(half + x, y)) return nullptr;
      if (image.At(x, y)) left->Set(x, y);
    }
  }
  return left;
}

DotBox FindDots(const BitImage& image) {
  DotBox box = {image.width, image.height, 0, 0};
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) {
      if (!image.At(x, y)) continue;
      box.left = std::min(box.left, x);
      box.top = std::min(box.top, y);
      box.right = std::max(box.right, x + 1);
      box.bottom = y + 1;
    }
  }
  return box.right == 0 ? DotBox() : box;
}

}  // namespace viewer
