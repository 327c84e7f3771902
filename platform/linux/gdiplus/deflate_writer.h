// Writes a zlib stream (RFC 1950, RFC 1951) in blocks with Huffman codes of their own.
#pragma once

#include "platform/linux/gdiplus/deflate_block.h"

class DeflateWriter {
 public:
  // out: room bytes.
  void Start(BYTE* out, SIZE_T room);

  // A block of tokens, which fit what was written before them.
  void PutBlock(const DeflateToken* tokens, INT count, bool last);

  // Ends the stream after the last block; adler32: the check sum of what was written. Returns the
  // stream's bytes, or 0 when the room was too small.
  SIZE_T Finish(DWORD adler32);

 private:
  void PutBits(DWORD bits, INT count);
  template <typename Code>
  void PutCode(const Code& code, INT symbol);
  void PutHead(const BlockCodes& codes, bool last);

  BYTE* m_start;
  BYTE* m_out;
  BYTE* m_end;
  bool m_isFull;
  std::uint64_t m_pending;  // bits that do not fill a word yet, the first one lowest
  INT m_pendingCount;
};
