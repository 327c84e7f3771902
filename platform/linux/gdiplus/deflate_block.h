// The parts of a deflate stream (RFC 1951): tokens, and the Huffman codes that a block of them has.
#pragma once

#include <bit>

#include "platform/linux/gdiplus/huffman_code.h"

// A literal, or length bytes like those distance bytes before them.
struct DeflateToken {
  static constexpr INT kLeastMatch = 3;
  static constexpr INT kMostMatch = 258;
  static constexpr INT kMostDistance = 32768;

  std::uint16_t length;    // or the literal
  std::uint16_t distance;  // 0 of a literal

  bool IsMatch() const { return distance != 0; }
};

inline constexpr INT kFirstLengthCode = 257;
inline constexpr INT kEndOfBlock = 256;

// A length or distance as deflate writes it: a code, and bits behind it that tell the values apart
// that share the code.
struct CodedValue {
  INT code;
  INT extraBits;
  DWORD extra;
};

// From code 8 on a code has twice the values of the code four before it.
inline CodedValue CodedLength(INT length) {
  if (length == DeflateToken::kMostMatch) return {kFirstLengthCode + 28, 0, 0};
  const auto value = static_cast<DWORD>(length - DeflateToken::kLeastMatch);
  if (value < 8) return {kFirstLengthCode + static_cast<INT>(value), 0, 0};
  const INT extraBits = std::bit_width(value) - 3;
  return {kFirstLengthCode + 4 * extraBits + static_cast<INT>(value >> extraBits), extraBits,
          value & ((1u << extraBits) - 1)};
}

// The same by twos from code 4 on.
inline CodedValue CodedDistance(INT distance) {
  const auto value = static_cast<DWORD>(distance - 1);
  if (value < 4) return {static_cast<INT>(value), 0, 0};
  const INT extraBits = std::bit_width(value) - 2;
  return {2 * extraBits + static_cast<INT>(value >> extraBits), extraBits,
          value & ((1u << extraBits) - 1)};
}

// How often a block has each code.
struct BlockCounts {
  std::array<DWORD, 286> lengths = {};  // and literals
  std::array<DWORD, 30> distances = {};

  void Add(const DeflateToken& token) {
    ++lengths[token.IsMatch() ? CodedLength(token.length).code : token.length];
    if (token.IsMatch()) ++distances[CodedDistance(token.distance).code];
  }
  void Add(const BlockCounts& more);
};

// The lengths of the two codes as they are sent (RFC 1951, 3.2.7): each a symbol, or a run of one.
struct LengthRun {
  BYTE symbol;  // a length; 16 repeats the one before, 17 and 18 are zeros
  BYTE extraBits;
  BYTE extra;
};

struct LengthRuns {
  std::array<LengthRun, 316> runs;
  INT count = 0;

  // The lengths of a code.
  void Add(const BYTE* lengths, INT number);

 private:
  void AddRun(BYTE length, INT same);
};

// The order in which the lengths of the code of runs are sent.
inline constexpr BYTE kRunLengthOrder[19] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                             11, 4,  12, 3, 13, 2, 14, 1, 15};

// The codes that fit the counts best, and the code in which their own lengths are sent.
struct BlockCodes {
  explicit BlockCodes(BlockCounts counts);

  HuffmanCode<286> lengths;  // and literals
  HuffmanCode<30> distances;
  LengthRuns runs;
  HuffmanCode<19> runLengths;
  INT sentRunLengths = 19;
  SIZE_T bits;  // of a block of the tokens that were counted
};
