#include "platform/linux/gdiplus/deflate_writer.h"

#include <cstring>

#include "platform/linux/gdiplus/deflate_block.h"

void DeflateWriter::Start(BYTE* out, SIZE_T room) {
  m_start = m_out = out;
  m_end = out + room;
  m_isFull = false;
  m_pending = 0;
  m_pendingCount = 0;
  PutBits(0x9C78, 16);  // deflate, a window of 32 KiB, the usual effort
}

void DeflateWriter::PutBits(DWORD bits, INT count) {
  m_pending |= std::uint64_t{bits} << m_pendingCount;
  m_pendingCount += count;
  if (m_pendingCount < 32) return;
  const auto word = static_cast<DWORD>(m_pending);
  if (m_end - m_out >= 4) {
    std::memcpy(m_out, &word, 4);
    m_out += 4;
  } else {
    m_isFull = true;
  }
  m_pending >>= 32;
  m_pendingCount -= 32;
}

template <typename Code>
void DeflateWriter::PutCode(const Code& code, INT symbol) {
  PutBits(code.bits[symbol], code.lengths[symbol]);
}

void DeflateWriter::PutBlock(const DeflateToken* tokens, INT count, bool last) {
  BlockCounts counts;
  for (INT i = 0; i < count; ++i) counts.Add(tokens[i]);
  BlockCodes codes(counts);
  codes.lengths.MakeBits();
  codes.distances.MakeBits();
  codes.runLengths.MakeBits();
  PutHead(codes, last);
  for (INT i = 0; i < count; ++i) {
    const DeflateToken& token = tokens[i];
    if (!token.IsMatch()) {
      PutCode(codes.lengths, token.length);
      continue;
    }
    const CodedValue length = CodedLength(token.length);
    PutCode(codes.lengths, length.code);
    PutBits(length.extra, length.extraBits);
    const CodedValue distance = CodedDistance(token.distance);
    PutCode(codes.distances, distance.code);
    PutBits(distance.extra, distance.extraBits);
  }
  PutCode(codes.lengths, kEndOfBlock);
}

// RFC 1951, 3.2.7.
void DeflateWriter::PutHead(const BlockCodes& codes, bool last) {
  PutBits(last ? 1 : 0, 1);
  PutBits(2, 2);  // codes of its own
  PutBits(static_cast<DWORD>(codes.lengths.Used(kFirstLengthCode) - kFirstLengthCode), 5);
  PutBits(static_cast<DWORD>(codes.distances.Used(1) - 1), 5);
  PutBits(static_cast<DWORD>(codes.sentRunLengths - 4), 4);
  for (INT i = 0; i < codes.sentRunLengths; ++i) {
    PutBits(codes.runLengths.lengths[kRunLengthOrder[i]], 3);
  }
  for (INT i = 0; i < codes.runs.count; ++i) {
    const LengthRun& run = codes.runs.runs[i];
    PutCode(codes.runLengths, run.symbol);
    PutBits(run.extra, run.extraBits);
  }
}

SIZE_T DeflateWriter::Finish(DWORD adler32) {
  PutBits(0, -m_pendingCount & 7);
  for (INT shift = 24; shift >= 0; shift -= 8) PutBits(adler32 >> shift & 0xFF, 8);
  for (; m_pendingCount > 0; m_pendingCount -= 8, m_pending >>= 8) {
    m_isFull |= m_out == m_end;
    if (!m_isFull) *m_out++ = static_cast<BYTE>(m_pending);
  }
  return m_isFull ? 0 : static_cast<SIZE_T>(m_out - m_start);
}
