// The portable anymap formats P1 to P6, as netpbm documents them.

#include <array>
#include <cctype>

#include "host/error.h"
#include "host/pages/page_reader.h"
#include "host/pages/pixel_rows.h"

namespace {

class PnmReader {
 public:
  PnmReader(std::FILE* file, const std::string& source) : m_file(file), m_source(source) {}

  // False at the end of the stream.
  bool Read(PageImage& page) {
    if (!ReadKind()) return false;
    const std::uint32_t width = ReadNumber();
    const std::uint32_t height = ReadNumber();
    m_maximum = m_bits ? 1 : ReadNumber();
    if (m_maximum == 0 || m_maximum > 65535) {
      Fail("has the maximum value " + std::to_string(m_maximum) + "; 1 to 65535 are allowed");
    }
    if (!std::isspace(m_last)) Fail("has a malformed header; export it again");
    ShapePage(page, width, height, m_source);
    if (!m_plain && m_maximum < 255) MakeScale();
    for (std::uint32_t y = 0; y < height; ++y) ReadRow(page.Row(y), width);
    return true;
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw HostError(kExitInput, m_source + ": " + reason);
  }

  bool ReadKind() {
    int c = getc_unlocked(m_file);
    while (std::isspace(c)) c = getc_unlocked(m_file);
    if (c == EOF) {
      if (std::ferror(m_file)) Fail("cannot be read");
      return false;
    }
    const int kind = getc_unlocked(m_file);
    if (c != 'P' || kind < '1' || kind > '6') {
      Fail("is neither PNG nor PBM, PGM, PPM or PDF; convert it to one of them");
    }
    m_plain = kind <= '3';
    m_bits = kind == '1' || kind == '4';
    m_color = kind == '3' || kind == '6';
    return true;
  }

  int Get() {
    const int c = getc_unlocked(m_file);
    if (c == EOF) Fail("breaks off in the middle of a page; export it again");
    return c;
  }

  int SkipSpace(int c) {
    while (std::isspace(c) || c == '#') {
      while (c == '#' && Get() != '\n') {
      }
      c = Get();
    }
    return c;
  }

  // A decimal number after white space and comments; takes one byte behind it.
  std::uint32_t ReadNumber() {
    std::uint64_t number = 0;
    int c = SkipSpace(Get());
    if (!std::isdigit(c)) Fail("has a malformed number; export it again");
    for (; std::isdigit(c); c = getc_unlocked(m_file)) {
      number = number * 10 + static_cast<unsigned>(c - '0');
      if (number > 0xFFFFFFFF) Fail("has a number that is out of range");
    }
    m_last = c == EOF ? ' ' : c;
    return static_cast<std::uint32_t>(number);
  }

  std::uint8_t Scaled(std::uint32_t sample) const {
    if (sample > m_maximum) Fail("has a sample above its maximum value");
    return static_cast<std::uint8_t>((sample * 255 + m_maximum / 2) / m_maximum);
  }

  void ReadRow(std::uint8_t* row, std::uint32_t width) {
    if (m_plain && m_bits) {
      for (std::uint32_t x = 0; x < width; ++x, row += 3) {
        row[0] = row[1] = row[2] = ReadPlainBit() ? 0 : 255;
      }
      return;
    }
    const std::size_t samples = std::size_t{width} * (m_color ? 3 : 1);
    if (m_bits) {
      ReadBytes((samples + 7) / 8);
      SpreadBits(m_bytes.data(), width, row);
      return;
    }
    if (m_plain) {
      m_bytes.resize(samples);
      for (std::uint8_t& sample : m_bytes) sample = Scaled(ReadNumber());
    } else {
      ReadSamples(samples);
    }
    if (m_color) {
      SwapRedAndBlue(m_bytes.data(), width, row);
    } else {
      SpreadGrey(m_bytes.data(), width, row);
    }
  }

  // The samples of a raw row as 8-bit levels.
  void ReadSamples(std::size_t count) {
    ReadBytes(m_maximum > 255 ? 2 * count : count);
    if (m_maximum > 255) {
      for (std::size_t i = 0; i < count; ++i) {
        m_bytes[i] = Scaled(std::uint32_t{m_bytes[2 * i]} << 8 | m_bytes[2 * i + 1]);
      }
      m_bytes.resize(count);
    } else if (m_maximum < 255) {
      for (std::uint8_t& sample : m_bytes) {
        if (sample > m_maximum) Fail("has a sample above its maximum value");
        sample = m_scale[sample];
      }
    }
  }

  void MakeScale() {
    for (std::uint32_t sample = 0; sample <= m_maximum; ++sample) m_scale[sample] = Scaled(sample);
  }

  void ReadBytes(std::size_t count) {
    m_bytes.resize(count);
    if (fread_unlocked(m_bytes.data(), 1, count, m_file) != count) {
      Fail("breaks off in the middle of a page; export it again");
    }
  }

  bool ReadPlainBit() {
    const int c = SkipSpace(Get());
    if (c != '0' && c != '1') Fail("has a malformed bit; export it again");
    return c == '1';
  }

  std::FILE* m_file;
  const std::string& m_source;
  bool m_plain = false;
  bool m_bits = false;
  bool m_color = false;
  std::uint32_t m_maximum = 1;
  int m_last = ' ';
  std::vector<std::uint8_t> m_bytes;  // of one row
  std::array<std::uint8_t, 256> m_scale = {};
};

}  // namespace

bool ReadPnm(std::FILE* file, const std::string& source, PageImage& page) {
  return PnmReader(file, source).Read(page);
}
