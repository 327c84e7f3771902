// The portable anymap formats P1 to P6, as netpbm documents them.

#include <cctype>

#include "host/error.h"
#include "host/page_reader.h"

namespace {

class PnmReader {
 public:
  PnmReader(std::FILE* file, const std::string& source) : m_file(file), m_source(source) {}

  std::optional<PageImage> Read() {
    int c = std::getc(m_file);
    while (std::isspace(c)) c = std::getc(m_file);
    if (c == EOF) {
      if (std::ferror(m_file)) Fail("cannot be read");
      return std::nullopt;
    }
    const int kind = std::getc(m_file);
    if (c != 'P' || kind < '1' || kind > '6') Fail("is neither PNG nor PBM, PGM or PPM");
    m_plain = kind <= '3';
    const bool bits = kind == '1' || kind == '4';
    const bool color = kind == '3' || kind == '6';
    const std::uint32_t width = ReadNumber();
    const std::uint32_t height = ReadNumber();
    m_maximum = bits ? 1 : ReadNumber();
    if (m_maximum == 0 || m_maximum > 65535) {
      Fail("has the maximum value " + std::to_string(m_maximum) + "; 1 to 65535 are allowed");
    }
    if (!std::isspace(m_last)) Fail("has a malformed header");
    PageImage page = MakePage(width, height, m_source);
    for (std::uint32_t y = 0; y < height; ++y) {
      if (bits) {
        ReadBitRow(page.Row(y), width);
      } else {
        ReadRow(page.Row(y), width, color);
      }
    }
    return page;
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw HostError(kExitInput, m_source + ": " + reason);
  }

  int Get() {
    const int c = std::getc(m_file);
    if (c == EOF) Fail("breaks off in the middle of a page");
    return c;
  }

  // A decimal number after white space and comments; takes one byte behind it.
  std::uint32_t ReadNumber() {
    int c = Get();
    while (std::isspace(c) || c == '#') {
      while (c == '#' && Get() != '\n') {
      }
      c = Get();
    }
    std::uint64_t number = 0;
    if (!std::isdigit(c)) Fail("has a malformed number");
    for (; std::isdigit(c); c = std::getc(m_file)) {
      number = number * 10 + static_cast<unsigned>(c - '0');
      if (number > 0xFFFFFFFF) Fail("has a number that is out of range");
    }
    m_last = c == EOF ? ' ' : c;
    return static_cast<std::uint32_t>(number);
  }

  std::uint8_t ReadSample() {
    std::uint32_t sample;
    if (m_plain) {
      sample = ReadNumber();
    } else {
      sample = static_cast<std::uint32_t>(Get());
      if (m_maximum > 255) sample = sample << 8 | static_cast<std::uint32_t>(Get());
    }
    if (sample > m_maximum) Fail("has a sample above its maximum value");
    return static_cast<std::uint8_t>((sample * 255 + m_maximum / 2) / m_maximum);
  }

  void ReadRow(std::uint8_t* row, std::uint32_t width, bool color) {
    for (std::uint32_t x = 0; x < width; ++x, row += 3) {
      row[2] = ReadSample();
      row[1] = color ? ReadSample() : row[2];
      row[0] = color ? ReadSample() : row[2];
    }
  }

  bool ReadPlainBit() {
    int c = Get();
    while (std::isspace(c) || c == '#') {
      while (c == '#' && Get() != '\n') {
      }
      c = Get();
    }
    if (c != '0' && c != '1') Fail("has a malformed bit");
    return c == '1';
  }

  // 1 is black.
  void ReadBitRow(std::uint8_t* row, std::uint32_t width) {
    int byte = 0;
    for (std::uint32_t x = 0; x < width; ++x, row += 3) {
      if (!m_plain && x % 8 == 0) byte = Get();
      const bool black = m_plain ? ReadPlainBit() : (byte >> (7 - x % 8) & 1) != 0;
      row[0] = row[1] = row[2] = black ? 0 : 255;
    }
  }

  std::FILE* m_file;
  const std::string& m_source;
  bool m_plain = false;
  std::uint32_t m_maximum = 1;
  int m_last = ' ';
};

}  // namespace

std::optional<PageImage> ReadPnm(std::FILE* file, const std::string& source) {
  return PnmReader(file, source).Read();
}
