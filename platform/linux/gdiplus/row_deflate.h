// Compresses images of dots, most of whose rows repeat the row above them, or the one a screen's
// cell above them.
#pragma once

#include "platform/linux/gdiplus/deflate_writer.h"
#include "platform/linux/gdiplus/hash_chain.h"

// How long to look for a match that is longer.
struct MatchSearch {
  INT places;          // looked at, at most
  INT enough;          // bytes of a match that is taken at once
  bool looksOneAhead;  // whether the next byte may begin a better one
};

// The working memory, which needs no start value. Not for more than one image at a time.
class RowDeflate {
 public:
  // Writes at most HashChain::kMostBytes bytes of rows as a zlib stream (RFC 1950) and returns its
  // size; 0 when the room is too small. repeatBytes: how far back the rows are that most rows
  // resemble, from 1 to DeflateToken::kMostDistance.
  SIZE_T Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes, const MatchSearch& search,
                  BYTE* out, SIZE_T room);

 private:
  static constexpr INT kBlockTokens = 4000;  // few enough for the codes to follow the picture

  struct Match {
    INT length;
    INT distance;
  };

  INT RepeatedAt(INT place) const;
  Match Search(INT place, INT repeated, INT longerThan) const;
  void Put(INT length, INT distance);
  INT PutRepeated(INT place, INT length);
  INT PutSearched(INT place, INT repeated);

  const BYTE* m_bytes;
  INT m_count;
  INT m_repeatBytes;
  MatchSearch m_search;
  HashChain m_chain;
  DeflateWriter m_writer;
  INT m_tokenCount;
  DeflateToken m_tokens[kBlockTokens];
};
