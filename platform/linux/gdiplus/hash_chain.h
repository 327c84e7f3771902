// Finds what came before: by the hash of four bytes, chains of the places that have it, the newest
// one first (RFC 1951, section 4).
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "platform/linux/gdiplus/deflate_block.h"

// Needs no start value.
class HashChain {
 public:
  static constexpr SIZE_T kMostBytes = SIZE_T{1} << 30;

  // bytes: count of them, up to kMostBytes; they stay until the next start.
  void Start(const BYTE* bytes, INT count) {
    m_bytes = bytes;
    m_count = count;
    std::fill(std::begin(m_newest), std::end(m_newest), -1);
  }

  // How many bytes at the two places are the same, up to most.
  INT LengthAt(INT place, INT earlier, INT most) const {
    const BYTE* a = m_bytes + place;
    const BYTE* b = m_bytes + earlier;
    INT length = 0;
    for (; length + 8 <= most; length += 8) {
      std::uint64_t x, y;
      std::memcpy(&x, a + length, 8);
      std::memcpy(&y, b + length, 8);
      if (x != y) return length + (std::countr_zero(x ^ y) >> 3);
    }
    while (length < most && a[length] == b[length]) ++length;
    return length;
  }

  // Makes the places from up to to known to later searches.
  void Remember(INT from, INT to) {
    to = std::min(to, m_count - kHashedBytes + 1);
    for (INT place = from; place < to; ++place) {
      INT& newest = m_newest[Hash(place)];
      const INT back = newest < 0 ? kWindow : place - newest;
      m_older[place & (kWindow - 1)] = static_cast<std::uint16_t>(back < kWindow ? back : 0);
      newest = place;
    }
  }

  // Looks at so many places at most until a match has enough bytes. Calls take(length, distance)
  // for each match that is longer than longest and those before it.
  template <typename Take>
  void Search(INT place, INT longest, INT places, INT enough, const Take& take) const {
    if (place + kHashedBytes > m_count) return;
    const INT most = std::min(DeflateToken::kMostMatch, m_count - place);
    INT earlier = m_newest[Hash(place)];
    for (INT i = 0; i < places && earlier >= 0 && place - earlier < kWindow; ++i) {
      if (longest >= std::min(enough, most)) break;
      // Only where the byte behind the longest one agrees too can a match be longer.
      if (m_bytes[earlier + longest] == m_bytes[place + longest]) {
        const INT length = LengthAt(place, earlier, most);
        if (length > longest) take(longest = length, place - earlier);
      }
      const INT back = m_older[earlier & (kWindow - 1)];
      if (back == 0) break;
      earlier -= back;
    }
  }

 private:
  static constexpr INT kHashedBytes = 4;
  static constexpr INT kHashBits = 15;
  static constexpr INT kWindow = DeflateToken::kMostDistance;

  // Multiplicative hashing (D. Knuth: The Art of Computer Programming 3, 6.4).
  INT Hash(INT place) const {
    DWORD bytes;
    std::memcpy(&bytes, m_bytes + place, kHashedBytes);
    return static_cast<INT>(bytes * 0x9E3779B1u >> (32 - kHashBits));
  }

  const BYTE* m_bytes;
  INT m_count;
  INT m_newest[1 << kHashBits];    // place of the last four bytes with that hash, -1: none
  std::uint16_t m_older[kWindow];  // by place: how far back the one before it is, 0: none
};
