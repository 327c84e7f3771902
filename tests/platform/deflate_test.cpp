// What is compressed comes back, byte for byte, from a decompressor that is not ours.

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>

#include "platform/linux/gdiplus/least_deflate.h"
#include "platform/linux/gdiplus/row_deflate.h"

namespace {

class Deflate : public ::testing::Test {
 protected:
  ~Deflate() override { libdeflate_free_decompressor(decompressor); }

  std::string Noise(std::size_t bytes, unsigned values) {
    std::string noise(bytes, '\0');
    for (char& byte : noise) byte = static_cast<char>(random() % values);
    return noise;
  }

  void ExpectBack(const BYTE* stream, SIZE_T size, const std::string& text) {
    std::string back(text.size(), '\0');
    EXPECT_EQ(
        libdeflate_zlib_decompress(decompressor, stream, size, back.data(), back.size(), nullptr),
        LIBDEFLATE_SUCCESS);
    EXPECT_TRUE(back == text);
  }

  std::mt19937 random{5};
  libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
};

TEST_F(Deflate, WritesEveryLengthDistanceAndCodeLength) {
  DeflateWriter writer;
  std::string text = Noise(DeflateToken::kMostDistance, 256);
  std::vector<DeflateToken> tokens;
  for (const char byte : text) tokens.push_back({static_cast<BYTE>(byte), 0});
  const auto match = [&](int length, int distance) {
    tokens.push_back({static_cast<std::uint16_t>(length), static_cast<std::uint16_t>(distance)});
    for (int i = 0; i < length; ++i) text += text[text.size() - distance];
  };
  for (int length = DeflateToken::kLeastMatch; length <= DeflateToken::kMostMatch; ++length) {
    match(length, 1 + static_cast<int>(random() % DeflateToken::kMostDistance));
  }
  for (int distance = 1; distance < DeflateToken::kMostDistance; distance *= 2) {
    for (const int near : {0, 1, distance / 2}) match(3, distance + near);
  }
  match(258, DeflateToken::kMostDistance);
  // Counts that grow like Fibonacci's numbers make the deepest tree there is: deeper than a code
  // may be long. Of distances too.
  for (int round = 0; round < 3; ++round) {
    for (int i = 0, count = 1, next = 1; count < 2000; ++i) {
      for (int k = 0; k < count; ++k) {
        text += static_cast<char>(i);
        tokens.push_back({static_cast<std::uint16_t>(i), 0});
        if (round == 1) match(3, 1 << std::min(i, 14));
      }
      next += std::exchange(count, next);
    }
  }
  std::vector<BYTE> out(200000);
  writer.Start(out.data(), out.size());
  SIZE_T bits = 0;
  for (SIZE_T i = 0; i < tokens.size(); i += 4000) {
    const SIZE_T end = std::min(i + 4000, tokens.size());
    writer.PutBlock(&tokens[i], static_cast<INT>(end - i), end == tokens.size());
    BlockCounts counts;
    for (SIZE_T k = i; k < end; ++k) counts.Add(tokens[k]);
    bits += BlockCodes(counts).bits;
  }
  const DWORD sum = libdeflate_adler32(1, text.data(), text.size());
  const SIZE_T size = writer.Finish(sum);
  EXPECT_EQ(size, (bits + 7) / 8 + 6);
  ExpectBack(out.data(), size, text);
}

TEST_F(Deflate, RowsComeBackOrFindNoRoom) {
  const auto usual = std::make_unique<RowDeflate>();
  const auto least = std::make_unique<LeastDeflate>();
  const auto compress = [&](bool toLeast, const std::string& rows, SIZE_T repeatBytes,
                            SIZE_T room) {
    const auto out = std::make_unique<BYTE[]>(room);
    const MatchSearch search = {1 + static_cast<INT>(random() % 6), 4 << random() % 7,
                                random() % 2 == 0};
    const auto* bytes = reinterpret_cast<const BYTE*>(rows.data());
    const SIZE_T size =
        toLeast ? least->Compress(bytes, rows.size(), repeatBytes, out.get(), room)
                : usual->Compress(bytes, rows.size(), repeatBytes, search, out.get(), room);
    if (size != 0) ExpectBack(out.get(), size, rows);
    return size;
  };
  for (const bool toLeast : {false, true}) {
    // Rows like the first one but for a byte: repeated parts of every length.
    for (const unsigned values : {2, 256}) {
      const std::string row = Noise(601, values);
      std::string rows = row;
      for (SIZE_T i = 0; i < row.size(); ++i) {
        rows += row;
        rows[rows.size() - row.size() + i] ^= 1;
      }
      EXPECT_LT(compress(toLeast, rows, row.size(), 600000), rows.size() / 20);
    }
    for (int round = toLeast ? 240 : 0; round < 300; ++round) {
      const SIZE_T rowBytes = round % 10 == 0 ? DeflateToken::kMostDistance : 1 + random() % 90;
      const std::string row = Noise(rowBytes, 1 + random() % 256);
      std::string rows = Noise(random() % 3 * rowBytes, 2);
      for (int i = random() % (rowBytes > 90 ? 5 : 40); i >= 0; --i)
        rows += random() % 4 ? row : Noise(rowBytes, 256);
      const SIZE_T size = compress(toLeast, rows, rowBytes, 2 * rows.size() + 1000);
      EXPECT_NE(size, 0u);
      const SIZE_T room = random() % (size + 1);
      // Another search may take less.
      EXPECT_LE(compress(toLeast, rows, rowBytes, room), toLeast && room < size ? 0 : room);
      EXPECT_EQ(compress(toLeast, rows, rowBytes, room % 6), 0u);
    }
  }
}

// More than the working memory holds at a time, of places where a token may begin and of matches.
TEST_F(Deflate, TheLeastIsFoundInParts) {
  const auto least = std::make_unique<LeastDeflate>();
  for (const unsigned values : {2, 17, 256}) {
    const std::string rows = Noise(400000, values) + std::string(100000, 'a') + Noise(9, 9);
    std::vector<BYTE> out(rows.size() + 1000);
    const SIZE_T size = least->Compress(reinterpret_cast<const BYTE*>(rows.data()), rows.size(),
                                        150, out.data(), out.size());
    // Random bytes take little more than their entropy.
    EXPECT_LT(size, 400000 * std::log2(values) / 8 * (values == 2 ? 1.3 : 1.07));
    ExpectBack(out.data(), size, rows);
  }
}

}  // namespace
