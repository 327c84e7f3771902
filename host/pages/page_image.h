// A page as pixels, the form in which every page source delivers it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Rows from the top; each has width x 3 bytes in the order blue, green, red and is padded with
// white to a multiple of 4 bytes. One image serves all pages of a job, so its memory is allocated
// once.
struct PageImage {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::size_t strideBytes = 0;
  // The renderer rounded the page's size up to whole dots: the page covers the last column and row
  // only in part.
  bool roundedUp = false;
  std::vector<std::uint8_t> pixels;

  std::uint8_t* Row(std::uint32_t y) { return pixels.data() + y * strideBytes; }
  const std::uint8_t* Row(std::uint32_t y) const { return pixels.data() + y * strideBytes; }
};

// Gives the page this size; its pixels are undefined, the padding is white. Throws HostError
// (input) that names the source if a side is 0 or the pixels exceed 1 GiB.
void ShapePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx,
               const std::string& source);

// Crops the page in place to its top left corner. The new size must not be larger.
void TrimPage(PageImage& page, std::uint32_t widthPx, std::uint32_t heightPx);
