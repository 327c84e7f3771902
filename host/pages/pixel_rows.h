// Converts rows of other pixel formats to blue, green and red bytes. Simple loops would take more
// time here than everything else in reading a page.
#pragma once

#include <cstddef>
#include <cstdint>

// Converts red, green, blue. Both rows have 3 x widthPx bytes and must not overlap.
void SwapRedAndBlue(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row);

// Lays pixels of blue, green, red and opacity on white. pixels: 4 x widthPx bytes. row: 3 x widthPx
// bytes, must not overlap pixels.
void LayOnWhite(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row);

// Writes each grey level as three bytes. row: 3 x widthPx bytes, must not overlap levels.
void SpreadGrey(const std::uint8_t* levels, std::size_t widthPx, std::uint8_t* row);

// Writes each bit as three bytes; 1 is black, the highest bit of a byte comes first. row: as above.
void SpreadBits(const std::uint8_t* bits, std::size_t widthPx, std::uint8_t* row);
