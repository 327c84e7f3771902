// Rows of other pixel forms as rows of blue, green and red bytes. Simple loops cost more time here
// than the rest of a page takes to read.
#pragma once

#include <cstddef>
#include <cstdint>

// Exchanges the first and the third byte of each of the pixels, in place.
void SwapRedAndBlue(std::uint8_t* row, std::size_t widthPx);

// Makes three equal bytes of each grey level. row: 3 x widthPx bytes, must not overlap levels.
void SpreadGrey(const std::uint8_t* levels, std::size_t widthPx, std::uint8_t* row);

// Makes three bytes of each bit, the highest bit of a byte first, 1 is black. row as above.
void SpreadBits(const std::uint8_t* bits, std::size_t widthPx, std::uint8_t* row);
