#include "platform/linux/gdiplus/row_deflate.h"

#include <libdeflate.h>

#include <algorithm>

namespace {

constexpr INT kRepeat = 32;  // repeated bytes that are taken without looking further

}  // namespace

INT RowDeflate::RepeatedAt(INT place) const {
  return place < m_repeatBytes ? 0
                               : m_chain.LengthAt(place, place - m_repeatBytes, m_count - place);
}

// The longest match of those that are longer; length 0 when there is none. repeated: what
// RepeatedAt says of the place.
RowDeflate::Match RowDeflate::Search(INT place, INT repeated, INT longerThan) const {
  Match best = {0, 0};
  repeated = std::min(repeated, DeflateToken::kMostMatch);
  if (repeated > longerThan) best = {repeated, m_repeatBytes};
  m_chain.Search(place, std::max(repeated, longerThan), m_search.places, m_search.enough,
                 [&best](INT length, INT distance) {
                   best = {length, distance};
                 });
  return best;
}

// A literal when there is no distance.
void RowDeflate::Put(INT length, INT distance) {
  if (m_tokenCount == kBlockTokens) {
    m_writer.PutBlock(m_tokens, m_tokenCount, false);
    m_tokenCount = 0;
  }
  m_tokens[m_tokenCount++] = {static_cast<std::uint16_t>(length),
                              static_cast<std::uint16_t>(distance)};
}

// A part of the image that is like the one above, in matches as long as deflate has them.
INT RowDeflate::PutRepeated(INT place, INT length) {
  const INT end = place + length;
  // Rows that repeat over and over leave one of them to later searches.
  if (length > 4 * m_repeatBytes) m_chain.Remember(end - m_repeatBytes, end);
  while (place < end) {
    INT part = std::min(end - place, DeflateToken::kMostMatch);
    const INT left = end - place - part;
    if (left > 0 && left < DeflateToken::kLeastMatch) part -= DeflateToken::kLeastMatch;
    Put(part, m_repeatBytes);
    place += part;
  }
  return end;
}

// The longest match, or the literals before a longer one that begins a little later.
INT RowDeflate::PutSearched(INT place, INT repeated) {
  Match match = Search(place, repeated, DeflateToken::kLeastMatch - 1);
  m_chain.Remember(place, place + 1);
  while (m_search.looksOneAhead && match.length > 0 && match.length < m_search.enough &&
         place + 1 < m_count) {
    const Match next = Search(place + 1, RepeatedAt(place + 1), match.length);
    if (next.length == 0) break;
    Put(m_bytes[place++], 0);
    m_chain.Remember(place, place + 1);
    match = next;
  }
  if (match.length == 0) {
    Put(m_bytes[place], 0);
    return place + 1;
  }
  Put(match.length, match.distance);
  m_chain.Remember(place + 1, place + match.length);
  return place + match.length;
}

SIZE_T RowDeflate::Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes,
                            const MatchSearch& search, BYTE* out, SIZE_T room) {
  m_bytes = rows;
  m_count = static_cast<INT>(bytes);
  m_repeatBytes = static_cast<INT>(repeatBytes);
  m_search = search;
  m_chain.Start(rows, m_count);
  m_writer.Start(out, room);
  m_tokenCount = 0;
  for (INT place = 0; place < m_count;) {
    const INT repeated = RepeatedAt(place);
    place = repeated >= kRepeat ? PutRepeated(place, repeated) : PutSearched(place, repeated);
  }
  m_writer.PutBlock(m_tokens, m_tokenCount, true);
  return m_writer.Finish(libdeflate_adler32(1, rows, bytes));
}
