// What is compressed comes back, byte for byte, from a decompressor that is not ours.

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

#include "platform/linux/row_deflate.h"

namespace {

class Deflate : public ::testing::Test {
 protected:
  ~Deflate() override { libdeflate_free_decompressor(decompressor); }

  std::string Noise(std::size_t bytes, unsigned values) {
    std::string noise(bytes, '\0');
    for (char& byte : noise) byte = static_cast<char>(random() % values);
    return noise;
  }

  std::mt19937 random{5};
  libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
};

TEST_F(Deflate, WritesEveryLengthDistanceAndCodeLength) {
  const auto writer = std::make_unique<DeflateWriter>();
  std::string text = Noise(DeflateWriter::kMostDistance, 256);
  std::vector<BYTE> out(200000);
  writer->Start(out.data(), out.size());
  for (const char byte : text) writer->PutLiteral(static_cast<BYTE>(byte));
  const auto match = [&](INT length, INT distance) {
    writer->PutMatch(length, distance);
    for (INT i = 0; i < length; ++i) text += text[text.size() - distance];
  };
  for (INT length = DeflateWriter::kLeastMatch; length <= DeflateWriter::kMostMatch; ++length) {
    match(length, 1 + static_cast<INT>(random() % DeflateWriter::kMostDistance));
  }
  for (INT distance = 1; distance < DeflateWriter::kMostDistance; distance *= 2) {
    for (const INT near : {0, 1, distance / 2}) match(3, distance + near);
  }
  match(258, DeflateWriter::kMostDistance);
  // Counts that grow like Fibonacci's numbers make the deepest tree there is: deeper than a code
  // may be long. Of distances too.
  for (INT round = 0; round < 3; ++round) {
    for (INT i = 0, count = 1, next = 1; count < 2000; ++i) {
      for (INT k = 0; k < count; ++k) {
        text += static_cast<char>(i);
        writer->PutLiteral(static_cast<BYTE>(i));
        if (round == 1) match(3, 1 << std::min(i, 14));
      }
      next += std::exchange(count, next);
    }
  }
  const SIZE_T size = writer->Finish();
  ASSERT_NE(size, 0u);
  std::string back(text.size(), '\0');
  ASSERT_EQ(libdeflate_deflate_decompress(decompressor, out.data(), size, back.data(), back.size(),
                                          nullptr),
            LIBDEFLATE_SUCCESS);
  EXPECT_TRUE(back == text);
}

TEST_F(Deflate, RowsComeBackOrFindNoRoom) {
  const auto deflate = std::make_unique<RowDeflate>();
  const auto compress = [&](const std::string& rows, SIZE_T repeatBytes, SIZE_T room) {
    const auto out = std::make_unique<BYTE[]>(room);
    const MatchSearch search = {1 + static_cast<INT>(random() % 6), 4 << random() % 7,
                                random() % 2 == 0};
    const SIZE_T size = deflate->Compress(reinterpret_cast<const BYTE*>(rows.data()), rows.size(),
                                          repeatBytes, search, out.get(), room);
    if (size == 0) return std::string();
    std::string back(rows.size(), '\0');
    EXPECT_EQ(libdeflate_zlib_decompress(decompressor, out.get(), size, back.data(), back.size(),
                                         nullptr),
              LIBDEFLATE_SUCCESS);
    EXPECT_TRUE(back == rows);
    return std::string(reinterpret_cast<const char*>(out.get()), size);
  };
  // Rows like the first one but for a byte: repeated parts of every length.
  for (const unsigned values : {2, 256}) {
    const std::string row = Noise(601, values);
    std::string rows = row;
    for (SIZE_T i = 0; i < row.size(); ++i) {
      rows += row;
      rows[rows.size() - row.size() + i] ^= 1;
    }
    EXPECT_LT(compress(rows, row.size(), 600000).size(), rows.size() / 20);
  }
  for (int round = 0; round < 300; ++round) {
    const SIZE_T rowBytes = round % 10 == 0 ? DeflateWriter::kMostDistance : 1 + random() % 90;
    const std::string row = Noise(rowBytes, 1 + random() % 256);
    std::string rows = Noise(random() % 3 * rowBytes, 2);
    for (int i = random() % 40; i >= 0; --i) rows += random() % 4 ? row : Noise(rowBytes, 256);
    const SIZE_T size = compress(rows, rowBytes, 2 * rows.size() + 1000).size();
    EXPECT_NE(size, 0u);
    const SIZE_T room = random() % (size + 1);
    const SIZE_T small = compress(rows, rowBytes, room).size();  // another search may take less
    EXPECT_LE(small, room);
    EXPECT_TRUE(compress(rows, rowBytes, room % 6).empty());
  }
}

}  // namespace
