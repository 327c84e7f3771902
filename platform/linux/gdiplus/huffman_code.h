// Huffman codes as deflate has them (RFC 1951, 3.2.2).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/types.h"

// A Huffman code of at most kMost symbols. Each of the two below makes it once.
template <INT kMost>
struct HuffmanCode {
  static constexpr INT kMostBits = 15;

  std::array<BYTE, kMost> lengths = {};        // in bits, 0 of a symbol that does not occur
  std::array<std::uint16_t, kMost> bits = {};  // the first one lowest; MakeBits makes them

  // How many symbols are written: up to the last one that occurs, but at least least.
  INT Used(INT least) const {
    INT used = kMost;
    while (used > least && lengths[used - 1] == 0) --used;
    return used;
  }

  // Makes the lengths from how often each symbol occurs; mostBits: up to kMostBits.
  // Huffman's merging with two queues: the leaves by count, and the inner nodes, which come into
  // being in order (J. van Leeuwen: "On the Construction of Huffman Trees", 1976).
  void MakeLengths(const std::array<DWORD, kMost>& counts, INT mostBits) {
    std::array<INT, kMost> order;
    INT leaves = 0;
    for (INT i = 0; i < kMost; ++i) {
      if (counts[i] != 0) order[leaves++] = i;
    }
    if (leaves == 1) lengths[order[0]] = 1;
    if (leaves < 2) return;
    std::sort(order.begin(), order.begin() + leaves, [&counts](INT a, INT b) {
      return counts[a] != counts[b] ? counts[a] < counts[b] : a < b;
    });
    std::array<DWORD, 2 * kMost> weights;
    std::array<INT, 2 * kMost> parents;
    for (INT i = 0; i < leaves; ++i) weights[i] = counts[order[i]];
    INT leaf = 0, inner = leaves, nodes = leaves;
    const auto take = [&] {
      const bool takesLeaf = leaf < leaves && (inner == nodes || weights[leaf] <= weights[inner]);
      const INT node = takesLeaf ? leaf++ : inner++;
      parents[node] = nodes;
      return weights[node];
    };
    for (; nodes < 2 * leaves - 1; ++nodes) {
      const DWORD first = take();
      weights[nodes] = first + take();
    }
    std::array<INT, 2 * kMost> depths;
    std::array<INT, kMostBits + 1> perLength = {};
    depths[nodes - 1] = 0;
    for (INT i = nodes - 2; i >= 0; --i) {
      depths[i] = depths[parents[i]] + 1;
      if (i < leaves) ++perLength[std::min(depths[i], mostBits)];
    }
    Shorten(perLength, mostBits);
    INT next = 0;  // the rarest symbols get the longest codes
    for (INT length = mostBits; length > 0; --length) {
      for (INT i = 0; i < perLength[length]; ++i)
        lengths[order[next++]] = static_cast<BYTE>(length);
    }
  }

  // RFC 1951, 3.2.2: codes of one length follow each other; they are sent from their highest bit.
  void MakeBits() {
    std::array<INT, kMostBits + 1> perLength = {}, next = {};
    for (const BYTE length : lengths) ++perLength[length];
    perLength[0] = 0;
    for (INT length = 1; length <= kMostBits; ++length) {
      next[length] = (next[length - 1] + perLength[length - 1]) << 1;
    }
    for (INT i = 0; i < kMost; ++i) {
      INT code = next[lengths[i]]++;
      for (INT bit = 0; bit < lengths[i]; ++bit, code >>= 1) {
        bits[i] = static_cast<std::uint16_t>(bits[i] << 1 | (code & 1));
      }
    }
  }

 private:
  // Codes that were cut to the longest length want more room than there is. As long as they do, one
  // of them moves beside a shorter code, which gets one bit more.
  static void Shorten(std::array<INT, kMostBits + 1>& perLength, INT mostBits) {
    INT wanted = 0;
    for (INT length = 1; length <= mostBits; ++length) {
      wanted += perLength[length] << (mostBits - length);
    }
    for (; wanted > 1 << mostBits; --wanted) {
      INT length = mostBits - 1;
      while (perLength[length] == 0) --length;
      --perLength[length];
      perLength[length + 1] += 2;
      --perLength[mostBits];
    }
  }
};
