// A page as pixels, the form in which every page source delivers it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Rows from the top; each has width x 3 bytes in the order blue, green, red and is padded with
// white to a multiple of 4 bytes. A job uses one image for all its pages, so that its memory is
// allocated once.
struct PageImage {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::size_t strideBytes = 0;
  // The program that drew the page rounded its size up to whole dots: the page covers the last
  // column and row only in part.
  bool roundedUp = false;
  // The resolution that a picture states, in dots per inch. 0: none, one pixel is one dot.
  double xDpi = 0;
  double yDpi = 0;
  std::vector<std::uint8_t> pixels;

  std::uint8_t* Row(std::uint32_t y) { return pixels.data() + y * strideBytes; }
  const std::uint8_t* Row(std::uint32_t y) const { return pixels.data() + y * strideBytes; }
};

// Gives the page this size and no resolution; its pixels are undefined, the padding is white.
// Throws HostError (input) that names the source if a side is 0 or the pixels exceed 1 GiB.
void ShapePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx,
               const std::string& source);

// Sets the page's resolution to the one that a picture states, in dots per inch. Leaves the page as
// it is for values that programs write when they know none: 72, 96, below 30 or above 10,000.
void StateResolution(PageImage& page, double xDpi, double yDpi);

// Turns the page upright. orientation: 1 to 8, as TIFF and Exif number them: 1 is upright, 3 upside
// down, 6 lies on its left side, 8 on its right side; 2, 4, 5 and 7 are mirrored. Any other number
// counts as 1. Throws as ShapePage does.
void TurnPage(PageImage& page, int orientation, const std::string& source);

// Crops the page in place to its top left part. The new size must not be larger.
void TrimPage(PageImage& page, std::uint32_t widthPx, std::uint32_t heightPx);
