#include "platform/linux/deflate_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr INT kMostCodeBits = 15;
constexpr INT kMostLengthCodeBits = 7;  // of the code that the codes' lengths are written in
constexpr INT kEndOfBlock = 256;
constexpr INT kFirstLengthCode = 257;

// A length or distance as deflate writes it: a code, and bits behind it that tell the values apart
// that share the code.
struct Coded {
  INT code;
  INT extraBits;
  DWORD extra;
};

// From code 8 on a code has twice the values of the code four before it.
Coded CodedLength(INT length) {
  if (length == DeflateWriter::kMostMatch) return {kFirstLengthCode + 28, 0, 0};
  const auto value = static_cast<DWORD>(length - DeflateWriter::kLeastMatch);
  if (value < 8) return {kFirstLengthCode + static_cast<INT>(value), 0, 0};
  const INT extraBits = std::bit_width(value) - 3;
  return {kFirstLengthCode + 4 * extraBits + static_cast<INT>(value >> extraBits), extraBits,
          value & ((1u << extraBits) - 1)};
}

// The same by twos from code 4 on.
Coded CodedDistance(DWORD distanceLess1) {
  if (distanceLess1 < 4) return {static_cast<INT>(distanceLess1), 0, 0};
  const INT extraBits = std::bit_width(distanceLess1) - 2;
  return {2 * extraBits + static_cast<INT>(distanceLess1 >> extraBits), extraBits,
          distanceLess1 & ((1u << extraBits) - 1)};
}

// A Huffman code of at most kMost symbols.
template <INT kMost>
struct Code {
  std::array<DWORD, kMost> counts = {};
  std::array<BYTE, kMost> lengths = {};        // in bits, 0 of a symbol that does not occur
  std::array<std::uint16_t, kMost> bits = {};  // the first one lowest

  // How many symbols are written: up to the last one that occurs, but at least least.
  INT Used(INT least) const {
    INT used = kMost;
    while (used > least && lengths[used - 1] == 0) --used;
    return used;
  }

  void Make(INT mostBits) {
    MakeLengths(mostBits);
    MakeBits();
  }

 private:
  // Huffman's merging with two queues: the leaves by count, and the inner nodes, which come into
  // being in order (J. van Leeuwen: "On the Construction of Huffman Trees", 1976).
  void MakeLengths(INT mostBits) {
    std::array<INT, kMost> order;
    INT leaves = 0;
    for (INT i = 0; i < kMost; ++i) {
      if (counts[i] != 0) order[leaves++] = i;
    }
    if (leaves == 1) lengths[order[0]] = 1;
    if (leaves < 2) return;
    std::sort(order.begin(), order.begin() + leaves, [this](INT a, INT b) {
      return counts[a] != counts[b] ? counts[a] < counts[b] : a < b;
    });
    std::array<DWORD, 2 * kMost> weights;
    std::array<INT, 2 * kMost> parents;
    for (INT i = 0; i < leaves; ++i) weights[i] = counts[order[i]];
    INT leaf = 0, inner = leaves, nodes = leaves;
    const auto take = [&] {
      const bool takesLeaf = leaf < leaves && (inner == nodes || weights[leaf] <= weights[inner]);
      const INT node = takesLeaf ? leaf++ : inner++;
      parents[node] = nodes;
      return weights[node];
    };
    for (; nodes < 2 * leaves - 1; ++nodes) {
      const DWORD first = take();
      weights[nodes] = first + take();
    }
    std::array<INT, 2 * kMost> depths;
    std::array<INT, kMostCodeBits + 1> perLength = {};
    depths[nodes - 1] = 0;
    for (INT i = nodes - 2; i >= 0; --i) {
      depths[i] = depths[parents[i]] + 1;
      if (i < leaves) ++perLength[std::min(depths[i], mostBits)];
    }
    Shorten(perLength, mostBits);
    INT next = 0;  // the rarest symbols get the longest codes
    for (INT length = mostBits; length > 0; --length) {
      for (INT i = 0; i < perLength[length]; ++i)
        lengths[order[next++]] = static_cast<BYTE>(length);
    }
  }

  // Codes that were cut to the longest length want more room than there is. As long as they do, one
  // of them moves beside a shorter code, which gets one bit more.
  static void Shorten(std::array<INT, kMostCodeBits + 1>& perLength, INT mostBits) {
    INT wanted = 0;
    for (INT length = 1; length <= mostBits; ++length) {
      wanted += perLength[length] << (mostBits - length);
    }
    for (; wanted > 1 << mostBits; --wanted) {
      INT length = mostBits - 1;
      while (perLength[length] == 0) --length;
      --perLength[length];
      perLength[length + 1] += 2;
      --perLength[mostBits];
    }
  }

  // RFC 1951, 3.2.2: codes of one length follow each other; they are sent from their highest bit.
  void MakeBits() {
    std::array<INT, kMostCodeBits + 1> perLength = {}, next = {};
    for (const BYTE length : lengths) ++perLength[length];
    perLength[0] = 0;
    for (INT length = 1; length <= kMostCodeBits; ++length) {
      next[length] = (next[length - 1] + perLength[length - 1]) << 1;
    }
    for (INT i = 0; i < kMost; ++i) {
      INT code = next[lengths[i]]++;
      for (INT bit = 0; bit < lengths[i]; ++bit, code >>= 1) {
        bits[i] = static_cast<std::uint16_t>(bits[i] << 1 | (code & 1));
      }
    }
  }
};

// The lengths of the two codes as they are sent (RFC 1951, 3.2.7): each a symbol, or a run of one.
struct LengthRun {
  BYTE symbol;  // a length; 16 repeats the one before, 17 and 18 are zeros
  BYTE extraBits;
  BYTE extra;
};

struct LengthRuns {
  std::array<LengthRun, 316> runs;
  INT count = 0;

  void Add(INT symbol, INT extraBits = 0, INT extra = 0) {
    runs[count++] = {static_cast<BYTE>(symbol), static_cast<BYTE>(extraBits),
                     static_cast<BYTE>(extra)};
  }

  void AddAll(const BYTE* lengths, INT number) {
    for (INT i = 0; i < number;) {
      INT same = 1;
      while (i + same < number && lengths[i + same] == lengths[i]) ++same;
      AddRun(lengths[i], same);
      i += same;
    }
  }

  void AddRun(BYTE length, INT same) {
    if (length != 0) {
      Add(length);
      --same;
    }
    while (same >= 3) {
      const INT most = length != 0 ? 6 : 138;
      const INT part = std::min(same, most);
      if (length != 0) {
        Add(16, 2, part - 3);
      } else if (part <= 10) {
        Add(17, 3, part - 3);
      } else {
        Add(18, 7, part - 11);
      }
      same -= part;
    }
    for (; same > 0; --same) Add(length);
  }
};

}  // namespace

void DeflateWriter::Start(BYTE* out, SIZE_T room) {
  m_start = m_out = out;
  m_end = out + room;
  m_isFull = false;
  m_pending = 0;
  m_pendingCount = 0;
  m_tokenCount = 0;
}

void DeflateWriter::PutLiteral(BYTE byte) { Put({byte, 0, false}); }

void DeflateWriter::PutMatch(INT length, INT distance) {
  Put({static_cast<std::uint16_t>(length), static_cast<std::uint16_t>(distance - 1), true});
}

void DeflateWriter::Put(Token token) {
  if (m_tokenCount == kBlockTokens) WriteBlock(false);
  m_tokens[m_tokenCount++] = token;
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

void DeflateWriter::WriteBlock(bool last) {
  Code<kLengthCodes> literals;  // and lengths
  Code<kDistanceCodes> distances;
  literals.counts[kEndOfBlock] = 1;
  for (INT i = 0; i < m_tokenCount; ++i) {
    const Token& token = m_tokens[i];
    ++literals.counts[token.isMatch ? CodedLength(token.length).code : token.length];
    if (token.isMatch) ++distances.counts[CodedDistance(token.distance).code];
  }
  literals.Make(kMostCodeBits);
  distances.Make(kMostCodeBits);

  const INT literalCount = literals.Used(kFirstLengthCode);
  const INT distanceCount = distances.Used(1);
  LengthRuns runs;
  runs.AddAll(literals.lengths.data(), literalCount);
  runs.AddAll(distances.lengths.data(), distanceCount);
  Code<19> lengths;
  for (INT i = 0; i < runs.count; ++i) ++lengths.counts[runs.runs[i].symbol];
  lengths.Make(kMostLengthCodeBits);

  constexpr BYTE kOrder[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
  INT sent = 19;
  while (sent > 4 && lengths.lengths[kOrder[sent - 1]] == 0) --sent;
  PutBits(last ? 1 : 0, 1);
  PutBits(2, 2);  // codes of its own
  PutBits(static_cast<DWORD>(literalCount - kFirstLengthCode), 5);
  PutBits(static_cast<DWORD>(distanceCount - 1), 5);
  PutBits(static_cast<DWORD>(sent - 4), 4);
  for (INT i = 0; i < sent; ++i) PutBits(lengths.lengths[kOrder[i]], 3);
  const auto put = [this](const auto& code, INT symbol) {
    PutBits(code.bits[symbol], code.lengths[symbol]);
  };
  for (INT i = 0; i < runs.count; ++i) {
    put(lengths, runs.runs[i].symbol);
    PutBits(runs.runs[i].extra, runs.runs[i].extraBits);
  }
  for (INT i = 0; i < m_tokenCount; ++i) {
    const Token& token = m_tokens[i];
    if (!token.isMatch) {
      put(literals, token.length);
      continue;
    }
    const Coded length = CodedLength(token.length);
    put(literals, length.code);
    PutBits(length.extra, length.extraBits);
    const Coded distance = CodedDistance(token.distance);
    put(distances, distance.code);
    PutBits(distance.extra, distance.extraBits);
  }
  put(literals, kEndOfBlock);
  m_tokenCount = 0;
}

SIZE_T DeflateWriter::Finish() {
  WriteBlock(true);
  for (; m_pendingCount > 0; m_pendingCount -= 8, m_pending >>= 8) {
    m_isFull |= m_out == m_end;
    if (!m_isFull) *m_out++ = static_cast<BYTE>(m_pending);
  }
  return m_isFull ? 0 : static_cast<SIZE_T>(m_out - m_start);
}
