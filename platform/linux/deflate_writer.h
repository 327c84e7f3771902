// Writes a deflate stream (RFC 1951) of literals and matches, in blocks with Huffman codes of their
// own.
#pragma once

#include <cstdint>

#include "platform/types.h"

class DeflateWriter {
 public:
  static constexpr INT kLeastMatch = 3;
  static constexpr INT kMostMatch = 258;
  static constexpr INT kMostDistance = 32768;

  // out: room bytes.
  void Start(BYTE* out, SIZE_T room);

  void PutLiteral(BYTE byte);
  // length bytes like those distance bytes before them; within the limits above.
  void PutMatch(INT length, INT distance);

  // Ends the stream. Returns its bytes, or 0 when the room was too small.
  SIZE_T Finish();

 private:
  static constexpr INT kBlockTokens = 4000;  // few enough for the codes to follow the picture
  static constexpr INT kLengthCodes = 286;
  static constexpr INT kDistanceCodes = 30;

  struct Token {
    std::uint16_t length;    // or the literal
    std::uint16_t distance;  // less 1
    bool isMatch;
  };

  void Put(Token token);
  void WriteBlock(bool last);
  void PutBits(DWORD bits, INT count);

  BYTE* m_start;
  BYTE* m_out;
  BYTE* m_end;
  bool m_isFull;
  std::uint64_t m_pending;  // bits that do not fill a word yet, the first one lowest
  INT m_pendingCount;
  INT m_tokenCount;
  Token m_tokens[kBlockTokens];
};
