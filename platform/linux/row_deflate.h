// Compresses images of dots, most of whose rows repeat the row above them, or the one a screen's
// cell above them.
#pragma once

#include "platform/linux/deflate_writer.h"

// How long to look for a match that is longer.
struct MatchSearch {
  INT places;          // looked at, at most
  INT enough;          // bytes of a match that is taken at once
  bool looksOneAhead;  // whether the next byte may begin a better one
};

// The working memory, which needs no start value. Not for more than one image at a time.
class RowDeflate {
 public:
  static constexpr SIZE_T kMostBytes = SIZE_T{1} << 30;

  // Writes at most kMostBytes bytes of rows as a zlib stream (RFC 1950) and returns its size; 0
  // when the room is too small. repeatBytes: how far back the rows are that most rows resemble, up
  // to DeflateWriter::kMostDistance.
  SIZE_T Compress(const BYTE* rows, SIZE_T bytes, SIZE_T repeatBytes, const MatchSearch& search,
                  BYTE* out, SIZE_T room);

 private:
  static constexpr INT kHashBits = 15;
  static constexpr INT kWindow = DeflateWriter::kMostDistance;

  struct Match {
    INT length;
    INT distance;
  };

  INT Hash(INT place) const;
  INT LengthAt(INT place, INT earlier, INT most) const;
  INT RepeatedAt(INT place) const;
  void Remember(INT from, INT to);
  Match Search(INT place, INT repeated, INT longerThan) const;
  INT PutRepeated(INT place, INT length);
  INT PutSearched(INT place, INT repeated);

  const BYTE* m_bytes;
  INT m_count;
  INT m_repeatBytes;
  MatchSearch m_search;
  DeflateWriter m_writer;
  INT m_newest[1 << kHashBits];    // place of the last four bytes with that hash, -1: none
  std::uint16_t m_older[kWindow];  // by place: how far back the one before it is, 0: none
};
