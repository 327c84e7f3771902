// BMP files: one page each. The small libraries draw the missing part of a broken file black, so
// this reader is our own. It reads all palettes, channels of any masks, and both run-length codes.

#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "host/error.h"
#include "host/pages/page_formats.h"

namespace {

constexpr std::uint32_t kFileHeaderBytes = 14;
constexpr std::uint32_t kCoreHeaderBytes = 12;  // of the oldest form; all others have 40 or more
constexpr std::uint32_t kInfoHeaderBytes = 40;
constexpr double kMetresPerInch = 0.0254;

enum Compression : std::uint32_t {
  kPlain = 0,
  kRuns8 = 1,
  kRuns4 = 2,
  kMasks = 3,
  kAlphaMasks = 6
};

std::uint32_t Number(const std::uint8_t* bytes, int size) {
  std::uint32_t number = 0;
  while (size-- > 0) number = number << 8 | bytes[size];
  return number;
}

// One channel of a pixel.
struct Channel {
  std::uint32_t mask = 0;
  std::uint32_t Level(std::uint32_t pixel) const {
    const int shift = std::countr_zero(mask);
    return static_cast<std::uint32_t>(std::uint64_t{(pixel & mask) >> shift} * 255 /
                                      (mask >> shift));
  }
};

class BmpReader {
 public:
  explicit BmpReader(PageInput& input) : m_input(input) {}

  void Read(PageImage& page) {
    ReadHeader();
    ReadPalette();
    if (m_offset < m_consumed) Fail("its pixels begin within its header");
    std::array<std::uint8_t, 512> skipped;
    while (m_consumed < m_offset) {
      ReadBytes(skipped.data(), std::min<std::size_t>(skipped.size(), m_offset - m_consumed));
    }
    ShapePage(page, m_width, m_height, m_input.Name());
    if (m_compression == kRuns8 || m_compression == kRuns4) {
      std::fill(page.pixels.begin(), page.pixels.end(), 0xFF);
      ReadRuns(page);
    } else {
      std::vector<std::uint8_t> row((std::uint64_t{m_width} * m_bits + 31) / 32 * 4);
      for (std::uint32_t y = 0; y < m_height; ++y) {
        ReadBytes(row.data(), row.size());
        DrawRow(row.data(), RowOf(page, y));
      }
    }
    StateResolution(page, m_dotsPerMetreX * kMetresPerInch, m_dotsPerMetreY * kMetresPerInch);
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw HostError(kExitInput, m_input.Name() + ": is not a whole BMP file (" + reason + ")",
                    "export it again");
  }

  void ReadBytes(std::uint8_t* bytes, std::size_t size) {
    if (m_input.Read(bytes, size) != size) Fail("it ends early");
    m_consumed += size;
  }
  std::uint8_t ReadByte() {
    std::uint8_t byte = 0;
    ReadBytes(&byte, 1);
    return byte;
  }

  void ReadHeader() {
    std::array<std::uint8_t, kFileHeaderBytes + 4> head;
    ReadBytes(head.data(), head.size());
    m_offset = Number(&head[10], 4);
    m_headerBytes = Number(&head[14], 4);
    const bool isCore = m_headerBytes == kCoreHeaderBytes;
    if (!isCore && (m_headerBytes < kInfoHeaderBytes || m_headerBytes > 256)) {
      Fail("its header has " + std::to_string(m_headerBytes) + " bytes");
    }
    std::array<std::uint8_t, 256 + 16> header = {};  // with the masks that may follow it
    ReadBytes(&header[4], m_headerBytes - 4);
    if (isCore) {
      m_width = Number(&header[4], 2);
      m_height = Number(&header[6], 2);
      m_bits = Number(&header[10], 2);
    } else {
      m_width = Number(&header[4], 4);
      m_height = Number(&header[8], 4);
      m_bits = Number(&header[14], 2);
      m_compression = Number(&header[16], 4);
      m_dotsPerMetreX = Number(&header[24], 4);
      m_dotsPerMetreY = Number(&header[28], 4);
      m_colours = Number(&header[32], 4);
      m_fromTop = m_height > 0x7FFFFFFF;
      if (m_fromTop) m_height = -m_height;
    }
    if (m_headerBytes == kInfoHeaderBytes && m_compression == kMasks) ReadBytes(&header[40], 12);
    if (m_headerBytes == kInfoHeaderBytes && m_compression == kAlphaMasks) {
      ReadBytes(&header[40], 16);
    }
    CheckForm();
    SetChannels(header.data());
  }

  void CheckForm() const {
    const bool isPlain = m_compression == kPlain &&
                         (m_bits == 1 || m_bits == 2 || m_bits == 4 || m_bits == 8 || m_bits == 24);
    const bool isDeep = m_bits == 16 || m_bits == 32;
    const bool hasMasks = m_compression == kMasks || m_compression == kAlphaMasks;
    const bool hasRuns =
        (m_compression == kRuns8 && m_bits == 8) || (m_compression == kRuns4 && m_bits == 4);
    if (isPlain || hasRuns || (isDeep && (hasMasks || m_compression == kPlain))) return;
    Fail("its pixels have " + std::to_string(m_bits) + " bits in form " +
         std::to_string(m_compression));
  }

  void SetChannels(const std::uint8_t* header) {
    if (m_compression == kMasks || m_compression == kAlphaMasks) {
      for (int i = 0; i < 3; ++i) m_channels[2 - i].mask = Number(header + 40 + 4 * i, 4);
      if (m_headerBytes >= 56 || m_compression == kAlphaMasks)
        m_alpha.mask = Number(header + 52, 4);
    } else if (m_bits == 16) {
      m_channels = {{{0x1F}, {0x1F << 5}, {0x1F << 10}}};
    } else {
      m_channels = {{{0xFF}, {0xFF << 8}, {0xFF << 16}}};
    }
    for (const Channel& channel : m_channels) {
      if (channel.mask == 0) Fail("a colour has no bits");
    }
  }

  void ReadPalette() {
    if (m_bits > 8) return;
    const std::uint32_t most = 1u << m_bits;
    if (m_colours == 0) m_colours = most;
    if (m_colours > most) Fail("it has " + std::to_string(m_colours) + " colours");
    const std::size_t size = m_headerBytes == kCoreHeaderBytes ? 3 : 4;
    std::array<std::uint8_t, 4> colour = {};
    for (std::uint32_t i = 0; i < m_colours; ++i) {
      ReadBytes(colour.data(), size);
      std::memcpy(m_palette[i].data(), colour.data(), 3);
    }
  }

  std::uint8_t* RowOf(PageImage& page, std::uint32_t y) const {
    return page.Row(m_fromTop ? y : m_height - 1 - y);
  }

  void DrawIndex(std::uint32_t index, std::uint8_t* to) const {
    if (index >= m_colours) Fail("it uses colour " + std::to_string(index));
    std::memcpy(to, m_palette[index].data(), 3);
  }

  void DrawRow(const std::uint8_t* from, std::uint8_t* to) const {
    for (std::uint32_t x = 0; x < m_width; ++x, to += 3) {
      if (m_bits <= 8) {
        const std::uint32_t perByte = 8 / m_bits;
        const std::uint32_t shift = 8 - m_bits - x % perByte * m_bits;
        DrawIndex(from[x / perByte] >> shift & ((1u << m_bits) - 1), to);
        continue;
      }
      const int bytes = static_cast<int>(m_bits / 8);
      const std::uint32_t pixel = Number(from + std::size_t{x} * m_bits / 8, bytes);
      const std::uint32_t opaque = m_alpha.mask == 0 ? 255 : m_alpha.Level(pixel);
      for (int i = 0; i < 3; ++i) {
        const std::uint32_t level = m_channels[i].Level(pixel);
        to[i] = static_cast<std::uint8_t>((level * opaque + 255 * (255 - opaque)) / 255);
      }
    }
  }

  // Runs of one colour or of two alternating ones, and single pixels. Pixels that the file leaves
  // out stay white.
  void ReadRuns(PageImage& page) {
    std::uint32_t x = 0, y = 0;
    const auto put = [&](std::uint32_t index) {
      if (x >= m_width || y >= m_height) Fail("a run leaves the picture");
      DrawIndex(index, RowOf(page, y) + std::size_t{3} * x++);
    };
    const bool halves = m_compression == kRuns4;  // two pixels a byte
    const auto nibble = [](std::uint8_t byte, int i) { return i % 2 == 0 ? byte >> 4 : byte & 15; };
    for (;;) {
      const int count = ReadByte();
      const std::uint8_t value = ReadByte();
      if (count > 0) {
        for (int i = 0; i < count; ++i) put(halves ? nibble(value, i) : value);
      } else if (value == 0) {  // the row's end
        x = 0;
        ++y;
      } else if (value == 1) {  // the picture's end
        return;
      } else if (value == 2) {  // a move
        x += ReadByte();
        y += ReadByte();
      } else {
        std::uint8_t byte = 0;
        for (int i = 0; i < value; ++i) {
          if (!halves || i % 2 == 0) byte = ReadByte();
          put(halves ? nibble(byte, i) : byte);
        }
        const int bytes = halves ? (value + 1) / 2 : value;
        if (bytes % 2 == 1) ReadByte();
      }
    }
  }

  PageInput& m_input;
  std::size_t m_consumed = 0;
  std::size_t m_offset = 0;  // of the pixels
  std::uint32_t m_headerBytes = 0;
  std::uint32_t m_width = 0;
  std::uint32_t m_height = 0;
  bool m_fromTop = false;
  std::uint32_t m_bits = 0;
  std::uint32_t m_compression = kPlain;
  std::uint32_t m_dotsPerMetreX = 0;
  std::uint32_t m_dotsPerMetreY = 0;
  std::uint32_t m_colours = 0;
  std::array<Channel, 3> m_channels;  // blue, green, red
  Channel m_alpha;                    // mask 0: all pixels are opaque
  std::array<std::array<std::uint8_t, 3>, 256> m_palette = {};
};

class BmpPage final : public PageSource {
 public:
  explicit BmpPage(PageInput input) : m_input(std::move(input)) {}
  bool Next(PageImage& page) override {
    if (std::exchange(m_done, true)) return false;
    BmpReader(m_input).Read(page);
    return true;
  }
  bool Skip(PageImage&) override { return !std::exchange(m_done, true); }
  std::optional<std::size_t> Count() const override { return 1; }

 private:
  PageInput m_input;
  bool m_done = false;
};

}  // namespace

std::unique_ptr<PageSource> OpenBmp(PageInput input, int) {
  return std::make_unique<BmpPage>(std::move(input));
}
