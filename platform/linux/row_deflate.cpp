#include "platform/linux/row_deflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace {

constexpr INT kHashedBytes = 4;
constexpr INT kRepeat = 32;  // repeated bytes that are taken without looking further
constexpr INT kZlibFrame = 6;

}  // namespace

// Multiplicative hashing (D. Knuth: The Art of Computer Programming 3, 6.4).
INT RowDeflate::Hash(INT place) const {
  DWORD bytes;
  std::memcpy(&bytes, m_bytes + place, kHashedBytes);
  return static_cast<INT>(bytes * 0x9E3779B1u >> (32 - kHashBits));
}

// How many bytes at the two places are the same.
INT RowDeflate::LengthAt(INT place, INT earlier, INT most) const {
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

INT RowDeflate::RepeatedAt(INT place) const {
  return place < m_repeatBytes ? 0 : LengthAt(place, place - m_repeatBytes, m_count - place);
}

// Makes the places from up to to known to later searches.
void RowDeflate::Remember(INT from, INT to) {
  to = std::min(to, m_count - kHashedBytes + 1);
  for (INT place = from; place < to; ++place) {
    INT& newest = m_newest[Hash(place)];
    const INT back = newest < 0 ? kWindow : place - newest;
    m_older[place & (kWindow - 1)] = static_cast<std::uint16_t>(back < kWindow ? back : 0);
    newest = place;
  }
}

// The longest match of those that are longer; length 0 when there is none. repeated: what
// RepeatedAt says of the place.
RowDeflate::Match RowDeflate::Search(INT place, INT repeated, INT longerThan) const {
  const INT most = std::min(DeflateWriter::kMostMatch, m_count - place);
  Match best = {0, 0};
  INT longest = longerThan;
  const auto take = [&](INT length, INT distance) {
    if (length <= longest) return;
    longest = length;
    best = {length, distance};
  };
  take(std::min(repeated, most), m_repeatBytes);
  if (place + kHashedBytes > m_count) return best;
  INT earlier = m_newest[Hash(place)];
  for (INT i = 0; i < m_search.places && earlier >= 0 && place - earlier < kWindow; ++i) {
    if (longest >= std::min(m_search.enough, most)) break;
    // Only where the byte behind the longest one agrees too can a match be longer.
    if (m_bytes[earlier + longest] == m_bytes[place + longest]) {
      take(LengthAt(place, earlier, most), place - earlier);
    }
    const INT back = m_older[earlier & (kWindow - 1)];
    if (back == 0) break;
    earlier -= back;
  }
  return best;
}

// A part of the image that is like the one above, in matches as long as deflate has them.
INT RowDeflate::PutRepeated(INT place, INT length) {
  const INT end = place + length;
  // Rows that repeat over and over leave one of them to later searches.
  if (length > 4 * m_repeatBytes) Remember(end - m_repeatBytes, end);
  while (place < end) {
    INT part = std::min(end - place, DeflateWriter::kMostMatch);
    const INT left = end - place - part;
    if (left > 0 && left < DeflateWriter::kLeastMatch) part -= DeflateWriter::kLeastMatch;
    m_writer.PutMatch(part, m_repeatBytes);
    place += part;
  }
  return end;
}

// The longest match, or the literals before a longer one that begins a little later.
INT RowDeflate::PutSearched(INT place, INT repeated) {
  Match match = Search(place, repeated, DeflateWriter::kLeastMatch - 1);
  Remember(place, place + 1);
  while (m_search.looksOneAhead && match.length > 0 && match.length < m_search.enough &&
         place + 1 < m_count) {
    const Match next = Search(place + 1, RepeatedAt(place + 1), match.length);
    if (next.length == 0) break;
    m_writer.PutLiteral(m_bytes[place++]);
    Remember(place, place + 1);
    match = next;
  }
  if (match.length == 0) {
    m_writer.PutLiteral(m_bytes[place]);
    return place + 1;
  }
  m_writer.PutMatch(match.length, match.distance);
  Remember(place + 1, place + match.length);
  return place + match.length;
}

SIZE_T RowDeflate::Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes,
                            const MatchSearch& search, BYTE* out, SIZE_T room) {
  if (room < kZlibFrame) return 0;
  m_bytes = rows;
  m_count = static_cast<INT>(bytes);
  m_repeatBytes = static_cast<INT>(repeatBytes);
  m_search = search;
  std::fill(std::begin(m_newest), std::end(m_newest), -1);
  m_writer.Start(out + 2, room - kZlibFrame);
  for (INT place = 0; place < m_count;) {
    const INT repeated = RepeatedAt(place);
    place = repeated >= kRepeat ? PutRepeated(place, repeated) : PutSearched(place, repeated);
  }
  const SIZE_T size = m_writer.Finish();
  if (size == 0) return 0;
  out[0] = 0x78;  // deflate, a window of 32 KiB
  out[1] = 0x9C;  // the usual effort, and what makes the two a multiple of 31
  const DWORD sum = libdeflate_adler32(1, rows, bytes);
  for (INT i = 0; i < 4; ++i) out[2 + size + i] = static_cast<BYTE>(sum >> (24 - 8 * i));
  return size + kZlibFrame;
}
