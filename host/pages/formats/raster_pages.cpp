// Raster documents as print systems send them: PWG raster, Apple raster (URF) and CUPS raster, read
// by libcups page by page.

#include <cups/raster.h>

#include <exception>

#include "host/error.h"
#include "host/pages/page_formats.h"

namespace {

// Converts a row of width pixels to blue, green, red.
using ConvertRow = void (*)(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to);

// flip: 0xFF if a larger value is darker, 0 if it is lighter.
template <std::uint8_t flip>
void ConvertBits(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x, to += 3) {
    const bool set = from[x / 8] >> (7 - x % 8) & 1;
    to[0] = to[1] = to[2] = static_cast<std::uint8_t>((set ? 0xFF : 0) ^ flip);
  }
}

template <std::uint8_t flip>
void ConvertGreys(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x, to += 3) {
    to[0] = to[1] = to[2] = static_cast<std::uint8_t>(from[x] ^ flip);
  }
}

void ConvertColours(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x, from += 3, to += 3) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
  }
}

struct PixelFormat {
  cups_cspace_t space;
  unsigned bitsPerPixel;
  ConvertRow convert;
};
constexpr PixelFormat kPixelFormats[] = {
    {CUPS_CSPACE_K, 1, ConvertBits<0xFF>},      {CUPS_CSPACE_W, 1, ConvertBits<0>},
    {CUPS_CSPACE_SW, 1, ConvertBits<0>},        {CUPS_CSPACE_K, 8, ConvertGreys<0xFF>},
    {CUPS_CSPACE_W, 8, ConvertGreys<0>},        {CUPS_CSPACE_SW, 8, ConvertGreys<0>},
    {CUPS_CSPACE_RGB, 24, ConvertColours},      {CUPS_CSPACE_SRGB, 24, ConvertColours},
    {CUPS_CSPACE_ADOBERGB, 24, ConvertColours},
};

struct RasterCloser {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};

class RasterPages final : public PageSource {
 public:
  RasterPages(PageInput input, int dpi)
      : m_input(std::move(input)),
        m_dpi(dpi),
        m_raster(cupsRasterOpenIO(Read, this, CUPS_RASTER_READ)) {
    if (m_raster == nullptr) Fail("is not a whole raster document", kPrintAgain);
  }

  bool Next(PageImage& page) override {
    cups_page_header2_t header;
    const bool any = cupsRasterReadHeader2(m_raster.get(), &header) != 0;
    RethrowInputError();
    if (!any) return false;
    ++m_pages;
    CheckResolution(header);
    const ConvertRow convert = ConverterFor(header);
    ShapePage(page, header.cupsWidth, header.cupsHeight, m_input.Name());
    m_row.resize(header.cupsBytesPerLine);
    for (std::uint32_t y = 0; y < page.heightPx; ++y) {
      if (cupsRasterReadPixels(m_raster.get(), m_row.data(), header.cupsBytesPerLine) == 0) {
        RethrowInputError();
        Fail("ends in the middle of page " + std::to_string(m_pages), kPrintAgain);
      }
      convert(m_row.data(), page.widthPx, page.Row(y));
    }
    return true;
  }

 private:
  static constexpr const char* kPrintAgain = "print it again";

  [[noreturn]] void Fail(const std::string& fact, const std::string& remedy) const {
    throw HostError(kExitInput, m_input.Name() + ": " + fact, remedy);
  }

  // Exceptions must not pass through libcups.
  static ssize_t Read(void* pages, unsigned char* bytes, std::size_t size) {
    RasterPages& self = *static_cast<RasterPages*>(pages);
    try {
      return static_cast<ssize_t>(self.m_input.Read(bytes, size));
    } catch (...) {
      self.m_inputError = std::current_exception();
      return -1;
    }
  }
  void RethrowInputError() const {
    if (m_inputError) std::rethrow_exception(m_inputError);
  }

  void CheckResolution(const cups_page_header2_t& header) const {
    for (const unsigned dpi : header.HWResolution) {
      if (dpi == static_cast<unsigned>(m_dpi)) continue;
      Fail("was made for " + std::to_string(dpi) + " dpi, the printer has " + std::to_string(m_dpi),
           "choose the printer's resolution");
    }
  }

  ConvertRow ConverterFor(const cups_page_header2_t& header) const {
    const std::uint64_t rowBits = std::uint64_t{header.cupsWidth} * header.cupsBitsPerPixel;
    for (const PixelFormat& format : kPixelFormats) {
      if (format.space == header.cupsColorSpace && format.bitsPerPixel == header.cupsBitsPerPixel &&
          header.cupsColorOrder == CUPS_ORDER_CHUNKED &&
          (rowBits + 7) / 8 <= header.cupsBytesPerLine) {
        return format.convert;
      }
    }
    Fail("has pixels of " + std::to_string(header.cupsBitsPerPixel) + " bits in colour space " +
             std::to_string(header.cupsColorSpace),
         "print it in black of 1 or 8 bits, grey of 8 or RGB of 24");
  }

  PageInput m_input;
  const int m_dpi;
  std::exception_ptr m_inputError;
  std::unique_ptr<cups_raster_t, RasterCloser> m_raster;
  std::size_t m_pages = 0;
  std::vector<std::uint8_t> m_row;
};

}  // namespace

std::unique_ptr<PageSource> OpenRaster(PageInput input, int dpi) {
  return std::make_unique<RasterPages>(std::move(input), dpi);
}
