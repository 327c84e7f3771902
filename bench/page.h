// The pages that are measured: the sample labels at the size of a printer's page, as a driver
// delivers them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Rows of 24-bit pixels, blue, green, red, padded to 4 bytes.
struct Raster {
  int widthPx = 0;
  int heightPx = 0;
  std::size_t strideBytes = 0;
  std::vector<std::uint8_t> pixels;

  std::uint8_t* Row(int y) { return pixels.data() + y * strideBytes; }
  const std::uint8_t* Row(int y) const { return pixels.data() + y * strideBytes; }
};

// A white raster.
Raster MakeRaster(int widthPx, int heightPx);

// The label "shipping", "photo" or "two-colour" of samples/ as a printed page of that size. The
// photo gets the grain of a camera. Throws std::runtime_error when the file cannot be read.
Raster ReadLabel(const std::string& name, int widthPx, int heightPx);

// The landscape page that is printed as the given one: a quarter turn back.
Raster TurnedBack(const Raster& page);

// Grey levels without padding, ITU-R BT.601.
std::vector<std::uint8_t> GreyOf(const Raster& page);
