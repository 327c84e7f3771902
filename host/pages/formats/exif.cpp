#include "host/pages/formats/exif.h"

#include <cstdint>
#include <optional>

namespace {

constexpr std::uint16_t kOrientation = 0x0112;
constexpr std::uint16_t kXResolution = 0x011A;
constexpr std::uint16_t kYResolution = 0x011B;
constexpr std::uint16_t kResolutionUnit = 0x0128;
constexpr std::uint16_t kCentimetre = 3;

// Numbers at offsets of the data; 0 outside it.
class Numbers {
 public:
  explicit Numbers(std::string_view data) : m_data(data), m_bigEndian(data.starts_with('M')) {}
  std::uint32_t Short(std::size_t at) const { return Get(at, 2); }
  std::uint32_t Long(std::size_t at) const { return Get(at, 4); }
  double Ratio(std::size_t at) const {
    const std::uint32_t divisor = Long(at + 4);
    return divisor == 0 ? 0 : static_cast<double>(Long(at)) / divisor;
  }

 private:
  std::uint32_t Get(std::size_t at, std::size_t size) const {
    if (at + size > m_data.size()) return 0;
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t place = at + (m_bigEndian ? i : size - 1 - i);
      number = number << 8 | static_cast<unsigned char>(m_data[place]);
    }
    return number;
  }

  const std::string_view m_data;
  const bool m_bigEndian;
};

}  // namespace

ExifData ReadExif(std::string_view data) {
  ExifData exif;
  if (!data.starts_with("II*") && !data.starts_with(std::string_view("MM\0*", 4))) return exif;
  const Numbers numbers(data);
  const std::size_t directory = numbers.Long(4);
  double dotsPerUnit = 1;
  for (std::size_t i = 0; i < numbers.Short(directory); ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    switch (numbers.Short(entry)) {
      case kOrientation: {
        const std::uint32_t orientation = numbers.Short(entry + 8);
        if (orientation >= 1 && orientation <= 8) exif.orientation = static_cast<int>(orientation);
        break;
      }
      case kXResolution:
        exif.xDpi = numbers.Ratio(numbers.Long(entry + 8));
        break;
      case kYResolution:
        exif.yDpi = numbers.Ratio(numbers.Long(entry + 8));
        break;
      case kResolutionUnit:
        if (numbers.Short(entry + 8) == kCentimetre) dotsPerUnit = 2.54;
        break;
    }
  }
  exif.xDpi *= dotsPerUnit;
  exif.yDpi *= dotsPerUnit;
  return exif;
}
