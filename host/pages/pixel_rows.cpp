#include "host/pages/pixel_rows.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are moved as words");

// The eight pixels of each byte of bits.
using SpreadTable = std::array<std::array<std::uint8_t, 24>, 256>;

constexpr SpreadTable MakeSpreadTable() {
  SpreadTable table = {};
  for (std::size_t byte = 0; byte < 256; ++byte) {
    for (std::size_t i = 0; i < 24; ++i) table[byte][i] = (byte << (i / 3) & 0x80) ? 0 : 255;
  }
  return table;
}
constexpr SpreadTable kSpread = MakeSpreadTable();

#ifdef __x86_64__
// Converts five pixels at a time; the next round overwrites the sixteenth byte. Returns how many
// pixels are done. At least one is left over, which overwrites the last sixteenth byte.
__attribute__((target("ssse3"))) std::size_t SwapInVectors(const std::uint8_t* pixels,
                                                           std::size_t widthPx, std::uint8_t* row) {
  using Vector = std::uint8_t __attribute__((vector_size(16)));
  std::size_t done = 0;
  for (; done + 6 <= widthPx; done += 5) {
    Vector vector;
    std::memcpy(&vector, pixels + 3 * done, sizeof vector);
    vector = __builtin_shufflevector(vector, vector, 2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13,
                                     12, 15);
    std::memcpy(row + 3 * done, &vector, sizeof vector);
  }
  return done;
}
const bool kHasVectors = __builtin_cpu_supports("ssse3");
#else
std::size_t SwapInVectors(const std::uint8_t*, std::size_t, std::uint8_t*) { return 0; }
constexpr bool kHasVectors = false;
#endif

}  // namespace

void SwapRedAndBlue(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row) {
  for (std::size_t x = kHasVectors ? SwapInVectors(pixels, widthPx, row) : 0; x < widthPx; ++x) {
    row[3 * x] = pixels[3 * x + 2];
    row[3 * x + 1] = pixels[3 * x + 1];
    row[3 * x + 2] = pixels[3 * x];
  }
}

void SpreadGrey(const std::uint8_t* levels, std::size_t widthPx, std::uint8_t* row) {
  // One word per pixel; its fourth byte is overwritten by the next pixel.
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

void LayOnWhite(const std::uint8_t* pixels, std::size_t widthPx, std::uint8_t* row) {
  for (; widthPx > 0; --widthPx, pixels += 4, row += 3) {
    const unsigned opaque = pixels[3];
    for (int i = 0; i < 3; ++i) {
      row[i] = static_cast<std::uint8_t>((pixels[i] * opaque + 255 * (255 - opaque)) / 255);
    }
  }
}
