// Rows of other pixel forms as rows of blue, green and red bytes. Simple loops cost more time here
// than the rest of a page takes to read.
#pragma once

#include <cstddef>
#include <cstdint>

// Copies pixels of red, green and blue. Both have 3 x widthPx bytes and must not overlap.
void SwapRedAndBlue(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row);

// Lays pixels of blue, green, red and opacity on white. row: 3 x widthPx bytes, must not overlap.
void LayOnWhite(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row);

// Makes three equal bytes of each grey level. row: 3 x widthPx bytes, must not overlap levels.
void SpreadGrey(const std::uint8_t* levels, std::size_t widthPx, std::uint8_t* row);

// Makes three bytes of each bit, the highest bit of a byte first, 1 is black. row as above.
void SpreadBits(const std::uint8_t* bits, std::size_t widthPx, std::uint8_t* row);
