#include "platform/linux/gdiplus/least_deflate.h"

#include <libdeflate.h>

#include <algorithm>

namespace {

constexpr INT kPasses = 3;      // more save less than they cost
constexpr INT kLongMatch = 32;  // from here on fewer places are looked at
constexpr INT kPlaces = 256;
constexpr INT kFewPlaces = 32;
constexpr INT kUnusedBits = 12;  // what a code may cost that was not needed so far

INT BitsOf(BYTE length) { return length != 0 ? length : kUnusedBits; }

}  // namespace

// In bits, at the codes of a block.
struct TokenCosts {
  explicit TokenCosts(const BlockCounts& counts) {
    const BlockCodes codes(counts);
    for (INT i = 0; i < 256; ++i) literals[i] = BitsOf(codes.lengths.lengths[i]);
    for (INT i = DeflateToken::kLeastMatch; i <= DeflateToken::kMostMatch; ++i) {
      const CodedValue length = CodedLength(i);
      lengths[i] = BitsOf(codes.lengths.lengths[length.code]) + length.extraBits;
    }
    for (INT i = 0; i < 30; ++i) distances[i] = BitsOf(codes.distances.lengths[i]);
  }

  DWORD OfDistance(INT distance) const {
    const CodedValue coded = CodedDistance(distance);
    return distances[coded.code] + coded.extraBits;
  }

  DWORD literals[256];
  DWORD lengths[DeflateToken::kMostMatch + 1];
  DWORD distances[30];
};

// Finds the nodes from a place on, and of each the nearest matches of each length. Returns the
// place where there was no more room, or the end.
INT LeastDeflate::FindMatches(INT place) {
  INT matches = 0;
  for (m_nodeCount = 0; place < m_count && m_nodeCount < kMostNodes &&
                        matches <= kMostMatches - DeflateToken::kMostMatch;
       ++m_nodeCount) {
    m_places[m_nodeCount] = place;
    m_firstMatches[m_nodeCount] = matches;
    INT longest = DeflateToken::kLeastMatch - 1;
    const auto take = [&](INT length, INT distance) {
      longest = length;
      m_matches[matches++] = {static_cast<std::uint16_t>(length),
                              static_cast<std::uint16_t>(distance)};
    };
    const INT most = std::min(DeflateToken::kMostMatch, m_count - place);
    const INT repeated =
        place < m_repeatBytes ? 0 : m_chain.LengthAt(place, place - m_repeatBytes, most);
    m_chain.Search(place, longest, repeated < kLongMatch ? kPlaces : kFewPlaces, kLongMatch, take);
    if (longest >= kLongMatch) {
      m_chain.Search(place, longest, kFewPlaces, DeflateToken::kMostMatch, take);
    }
    if (repeated > longest) take(repeated, m_repeatBytes);
    const bool isFull = longest == DeflateToken::kMostMatch;
    if (isFull) {
      m_matches[m_firstMatches[m_nodeCount]] = m_matches[matches - 1];
      matches = m_firstMatches[m_nodeCount] + 1;
    }
    const INT next = place + (isFull ? DeflateToken::kMostMatch : 1);
    m_chain.Remember(place, next);
    place = next;
  }
  m_places[m_nodeCount] = place;
  m_firstMatches[m_nodeCount] = matches;
  return place;
}

// The cheapest way from a node to the last one begins with a token to a node from which the
// cheapest way is known already.
void LeastDeflate::ChooseTokens() {
  INT end = m_nodeCount;  // matches go no further
  INT node = m_nodeCount - 1;
  m_bits[m_nodeCount] = 0;
  for (INT block = m_blockCount - 1; block >= 0; --block) {
    const TokenCosts costs(m_blocks[block]->counts);
    for (; node >= m_blocks[block]->firstNode; --node) {
      ChooseToken(node, end, costs);
      if (m_tokens[node].length == DeflateToken::kMostMatch) end = node;
    }
  }
}

void LeastDeflate::ChooseToken(INT node, INT end, const TokenCosts& costs) {
  const DeflateToken* match = m_matches + m_firstMatches[node];
  const DeflateToken* const matchesEnd = m_matches + m_firstMatches[node + 1];
  DeflateToken best = {m_bytes[m_places[node]], 0};
  DWORD leastBits = m_bits[node + 1] + costs.literals[best.length];
  if (match != matchesEnd && match->length == DeflateToken::kMostMatch) {
    best = *match++;
    leastBits = m_bits[node + 1] + costs.lengths[best.length] + costs.OfDistance(best.distance);
  }
  INT length = DeflateToken::kLeastMatch;
  for (; match != matchesEnd; ++match) {
    const DWORD distanceBits = costs.OfDistance(match->distance);
    const INT last = std::min<INT>(match->length, end - node);
    for (; length <= last; ++length) {
      const DWORD bits = m_bits[node + length] + costs.lengths[length] + distanceBits;
      if (bits >= leastBits) continue;
      leastBits = bits;
      best = {static_cast<std::uint16_t>(length), match->distance};
    }
  }
  m_tokens[node] = best;
  m_bits[node] = leastBits;
}

// Goes the cheapest way, which leaves its tokens in a row, and counts them in blocks of one part.
void LeastDeflate::CountParts() {
  m_tokenCount = 0;
  m_blockCount = 0;
  for (INT node = 0; node < m_nodeCount;) {
    if (m_tokenCount % kPartTokens == 0) {
      m_parts[m_blockCount] = {{}, 0, 0, node, m_tokenCount};
      m_blocks[m_blockCount] = m_parts + m_blockCount;
      ++m_blockCount;
    }
    const DeflateToken token = m_tokens[node];
    m_blocks[m_blockCount - 1]->counts.Add(token);
    m_tokens[m_tokenCount++] = token;
    const bool isOneNode = !token.IsMatch() || token.length == DeflateToken::kMostMatch;
    node += isOneNode ? 1 : token.length;
  }
}

void LeastDeflate::MeasureWithNext(INT block) {
  if (block < 0 || block + 1 >= m_blockCount) return;
  BlockCounts counts = m_blocks[block]->counts;
  counts.Add(m_blocks[block + 1]->counts);
  m_blocks[block]->bitsWithNext = BlockCodes(counts).bits;
}

// Joins the two neighbours that save most by sharing their codes, as long as any do.
void LeastDeflate::JoinParts() {
  for (INT i = 0; i < m_blockCount; ++i) {
    m_blocks[i]->bits = BlockCodes(m_blocks[i]->counts).bits;
    MeasureWithNext(i);
  }
  for (;;) {
    INT best = -1;
    SIZE_T mostSaved = 0;
    for (INT i = 0; i + 1 < m_blockCount; ++i) {
      const SIZE_T apart = m_blocks[i]->bits + m_blocks[i + 1]->bits;
      if (apart <= m_blocks[i]->bitsWithNext + mostSaved) continue;
      mostSaved = apart - m_blocks[i]->bitsWithNext;
      best = i;
    }
    if (best < 0) return;
    m_blocks[best]->counts.Add(m_blocks[best + 1]->counts);
    m_blocks[best]->bits = m_blocks[best]->bitsWithNext;
    std::copy(m_blocks + best + 2, m_blocks + m_blockCount, m_blocks + best + 1);
    --m_blockCount;
    MeasureWithNext(best);
    MeasureWithNext(best - 1);
  }
}

void LeastDeflate::PutBlocks(bool last) {
  for (INT i = 0; i < m_blockCount; ++i) {
    const bool isLast = i + 1 == m_blockCount;
    const INT first = m_blocks[i]->firstToken;
    const INT end = isLast ? m_tokenCount : m_blocks[i + 1]->firstToken;
    m_writer.PutBlock(m_tokens + first, end - first, last && isLast);
  }
}

SIZE_T LeastDeflate::Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes, BYTE* out,
                              SIZE_T room) {
  m_bytes = rows;
  m_count = static_cast<INT>(bytes);
  m_repeatBytes = static_cast<INT>(repeatBytes);
  m_chain.Start(rows, m_count);
  m_writer.Start(out, room);
  BlockCounts counts;  // that the first pass goes by: of the block before
  for (INT place = 0; place < m_count;) {
    place = FindMatches(place);
    m_blockCount = 1;
    m_blocks[0] = m_parts;
    m_parts[0] = {counts, 0, 0, 0, 0};
    for (INT pass = 0; pass < kPasses; ++pass) {
      ChooseTokens();
      CountParts();
      JoinParts();
    }
    PutBlocks(place == m_count);
    counts = m_blocks[m_blockCount - 1]->counts;
  }
  return m_writer.Finish(libdeflate_adler32(1, rows, bytes));
}
