// Compresses images to as few bytes as it can: of all ways to write an image in literals and
// matches it takes the one that costs the fewest bits. What a code costs is known only when
// everything is written, so it is written several times, each time at the costs of the time before
// (as J. Alakuijala and L. Vandevenne: "Data Compression Using Zopfli", 2013; the cheapest way as
// in R. Bellman's dynamic programming).
#pragma once

#include "platform/linux/gdiplus/deflate_writer.h"
#include "platform/linux/gdiplus/hash_chain.h"

struct TokenCosts;

// The working memory, nearly 5 MB that need no start value. Not for more than one image at a time.
class LeastDeflate {
 public:
  // Writes at most HashChain::kMostBytes bytes of rows as a zlib stream (RFC 1950) and returns its
  // size; 0 when the room is too small. repeatBytes: how far back the rows are that most rows
  // resemble, from 1 to DeflateToken::kMostDistance.
  SIZE_T Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes, BYTE* out, SIZE_T room);

 private:
  // A node is a place where a token may begin: each place but those in matches of the full length,
  // which are taken as they are.
  static constexpr INT kMostNodes = 1 << 17;
  static constexpr INT kMostMatches = 1 << 19;
  static constexpr INT kPartTokens = 512;  // blocks are made of whole parts

  struct Block {
    BlockCounts counts;
    SIZE_T bits;
    SIZE_T bitsWithNext;
    INT firstNode;
    INT firstToken;
  };

  INT FindMatches(INT place);
  void ChooseTokens();
  void ChooseToken(INT node, INT end, const TokenCosts& costs);
  void CountParts();
  void MeasureWithNext(INT block);
  void JoinParts();
  void PutBlocks(bool last);

  const BYTE* m_bytes;
  INT m_count;
  INT m_repeatBytes;
  HashChain m_chain;
  DeflateWriter m_writer;

  INT m_nodeCount;
  INT m_places[kMostNodes + 1];
  INT m_firstMatches[kMostNodes + 1];
  DWORD m_bits[kMostNodes + 1];       // from the node to the last one
  DeflateToken m_tokens[kMostNodes];  // by node, then those that were chosen
  DeflateToken m_matches[kMostMatches];

  INT m_tokenCount;
  INT m_blockCount;
  Block* m_blocks[kMostNodes / kPartTokens];
  Block m_parts[kMostNodes / kPartTokens];
};
