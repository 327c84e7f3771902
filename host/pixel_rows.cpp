#include "host/pixel_rows.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are moved as words");

// Eight pixels of every byte of bits.
using SpreadTable = std::array<std::array<std::uint8_t, 24>, 256>;

constexpr SpreadTable MakeSpreadTable() {
  SpreadTable table = {};
  for (std::size_t byte = 0; byte < 256; ++byte) {
    for (std::size_t i = 0; i < 24; ++i) table[byte][i] = (byte << (i / 3) & 0x80) ? 0 : 255;
  }
  return table;
}
constexpr SpreadTable kSpread = MakeSpreadTable();

}  // namespace

void SwapRedAndBlue(std::uint8_t* row, std::size_t widthPx) {
  // Four pixels are three words: RGBR GBRG BRGB becomes BGRB GRBG RBGR.
  for (; widthPx >= 4; widthPx -= 4, row += 12) {
    std::uint32_t words[3];
    std::memcpy(words, row, sizeof words);
    const auto [a, b, c] = words;
    words[0] = (a >> 16 & 0xFF) | (a & 0xFF00) | (a & 0xFF) << 16 | (b & 0xFF00) << 16;
    words[1] = (b & 0xFF0000FF) | (a >> 16 & 0xFF00) | (c & 0xFF) << 16;
    words[2] = (b >> 16 & 0xFF) | (c >> 16 & 0xFF00) | (c & 0xFF0000) | (c & 0xFF00) << 16;
    std::memcpy(row, words, sizeof words);
  }
  for (; widthPx > 0; --widthPx, row += 3) {
    const std::uint8_t first = row[0];
    row[0] = row[2];
    row[2] = first;
  }
}

void SpreadGrey(const std::uint8_t* levels, std::size_t widthPx, std::uint8_t* row) {
  // One word a pixel; its fourth byte is the next pixel's first.
  for (; widthPx > 1; --widthPx, row += 3) {
    const std::uint32_t word = *levels++ * std::uint32_t{0x010101};
    std::memcpy(row, &word, sizeof word);
  }
  if (widthPx > 0) std::memset(row, *levels, 3);
}

void SpreadBits(const std::uint8_t* bits, std::size_t widthPx, std::uint8_t* row) {
  for (; widthPx >= 8; widthPx -= 8, row += 24) std::memcpy(row, kSpread[*bits++].data(), 24);
  if (widthPx > 0) std::memcpy(row, kSpread[*bits].data(), 3 * widthPx);
}
