// The portable anymap formats P1 to P6, as netpbm documents them. A stream has any number of pages.

#include "host/pages/formats/pnm_pages.h"

#include <array>
#include <cctype>

#include "host/error.h"
#include "host/pages/page_formats.h"
#include "host/pages/pixel_rows.h"

namespace {

class PnmReader {
 public:
  explicit PnmReader(PageInput& input) : m_input(input) {}

  // False at the end of the stream.
  bool Read(PageImage& page) {
    if (!ReadKind()) return false;
    const std::uint32_t width = ReadNumber();
    const std::uint32_t height = ReadNumber();
    m_maximum = m_bits ? 1 : ReadNumber();
    if (m_maximum == 0 || m_maximum > 65535) {
      Fail("has the maximum value " + std::to_string(m_maximum) + ", 1 to 65535 are allowed");
    }
    if (!std::isspace(m_last)) Fail("has a malformed header");
    ShapePage(page, width, height, m_input.Name());
    if (!m_plain && m_maximum < 255) MakeScale();
    for (std::uint32_t y = 0; y < height; ++y) ReadRow(page.Row(y), width);
    return true;
  }

 private:
  [[noreturn]] void Fail(const std::string& fault) const {
    throw HostError(kExitInput, m_input.Name() + ": " + fault, "export it again");
  }

  bool ReadKind() {
    int c = m_input.Get();
    while (std::isspace(c)) c = m_input.Get();
    if (c == EOF) return false;
    const int kind = m_input.Get();
    if (c != 'P' || kind < '1' || kind > '6') Fail("goes on with something that is no PNM page");
    m_plain = kind <= '3';
    m_bits = kind == '1' || kind == '4';
    m_color = kind == '3' || kind == '6';
    return true;
  }

  int Get() {
    const int c = m_input.Get();
    if (c == EOF) Fail("breaks off in the middle of a page");
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

  // A decimal number after white space and comments; also consumes the byte that follows it.
  std::uint32_t ReadNumber() {
    std::uint64_t number = 0;
    int c = SkipSpace(Get());
    if (!std::isdigit(c)) Fail("has a malformed number");
    for (; std::isdigit(c); c = m_input.Get()) {
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
    if (m_input.Read(m_bytes.data(), count) != count) {
      Fail("breaks off in the middle of a page");
    }
  }

  bool ReadPlainBit() {
    const int c = SkipSpace(Get());
    if (c != '0' && c != '1') Fail("has a malformed bit");
    return c == '1';
  }

  PageInput& m_input;
  bool m_plain = false;
  bool m_bits = false;
  bool m_color = false;
  std::uint32_t m_maximum = 1;
  int m_last = ' ';
  std::vector<std::uint8_t> m_bytes;  // of one row
  std::array<std::uint8_t, 256> m_scale = {};
};

class PnmPages final : public PageSource {
 public:
  explicit PnmPages(PageInput input) : m_input(std::move(input)) {}
  bool Next(PageImage& page) override { return ReadPnm(m_input, page); }

 private:
  PageInput m_input;
};

}  // namespace

bool ReadPnm(PageInput& input, PageImage& page) { return PnmReader(input).Read(page); }

std::unique_ptr<PageSource> OpenPnm(PageInput input, int) {
  return std::make_unique<PnmPages>(std::move(input));
}
