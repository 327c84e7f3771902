// TIFF files, read by libtiff: every picture is a page, except thumbnails and masks.

#include <tiffio.h>
#include <unistd.h>

#include <cstdarg>

#include "host/error.h"
#include "host/pages/helper_program.h"
#include "host/pages/page_formats.h"
#include "host/pages/pixel_rows.h"

namespace {

constexpr tmsize_t kMostBlockBytes = tmsize_t{1} << 30;

struct TiffCloser {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

class TiffPages final : public PageSource {
 public:
  explicit TiffPages(PageInput input)
      : m_name(input.Name()), m_file(std::move(input)), m_tiff(Open()) {
    if (m_tiff == nullptr) Fail();
  }

  bool Next(PageImage& page) override {
    if (!FindPage()) return false;
    ReadPage(page);
    return true;
  }
  bool Skip(PageImage&) override { return FindPage(); }

 private:
  // The library's first message is the cause; the others are its consequences.
  static int OnError(TIFF*, void* pages, const char*, const char* format, va_list arguments) {
    TiffPages& self = *static_cast<TiffPages*>(pages);
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    if (self.m_reason.empty()) self.m_reason = text;
    return 1;
  }
  static int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

  TIFF* Open() {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostBlockBytes);
    TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, this);
    // "m": not mapped into memory, where a file that is truncated meanwhile would end the process.
    const int descriptor = dup(m_file.Descriptor());
    TIFF* tiff = TIFFFdOpenExt(descriptor, m_name.c_str(), "rm", options);
    TIFFOpenOptionsFree(options);
    if (tiff == nullptr) close(descriptor);
    return tiff;
  }

  [[noreturn]] void Fail() const {
    throw HostError(kExitInput,
                    m_name + ": is no TIFF file that can be read" +
                        (m_reason.empty() ? "" : " (" + m_reason + ")"),
                    "export it again");
  }

  // Makes the next page the library's current directory.
  bool FindPage() {
    for (;;) {
      if (m_opened && TIFFReadDirectory(m_tiff.get()) == 0) {
        if (!m_reason.empty()) Fail();
        return false;
      }
      m_opened = true;
      std::uint32_t kind = 0;
      TIFFGetFieldDefaulted(m_tiff.get(), TIFFTAG_SUBFILETYPE, &kind);
      if ((kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0) return true;
    }
  }

  void ReadPage(PageImage& page) {
    std::uint32_t width = 0, height = 0;
    TIFFGetField(m_tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(m_tiff.get(), TIFFTAG_IMAGELENGTH, &height);
    ShapePage(page, width, height, m_name);
    m_pixels.resize(std::size_t{width} * height);
    TIFFRGBAImage image;
    char reason[1024] = {};
    if (TIFFRGBAImageBegin(&image, m_tiff.get(), 1, reason) == 0) {
      if (m_reason.empty()) m_reason = reason;
      Fail();
    }
    image.orientation = image.req_orientation = ORIENTATION_TOPLEFT;  // TurnPage turns it
    const int done = TIFFRGBAImageGet(&image, m_pixels.data(), width, height);
    TIFFRGBAImageEnd(&image);
    if (done == 0 || !m_reason.empty()) Fail();
    for (std::uint32_t y = 0; y < height; ++y) DrawRow(&m_pixels[std::size_t{width} * y], page, y);
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    TIFFGetFieldDefaulted(m_tiff.get(), TIFFTAG_ORIENTATION, &orientation);
    StateTiffResolution(page);
    TurnPage(page, orientation, m_name);
  }

  // The library has already multiplied the colours by their opacity.
  static void DrawRow(const std::uint32_t* pixels, PageImage& page, std::uint32_t y) {
    std::uint8_t* to = page.Row(y);
    for (std::uint32_t x = 0; x < page.widthPx; ++x, to += 3) {
      const std::uint32_t white = 255 - TIFFGetA(pixels[x]);
      to[0] = static_cast<std::uint8_t>(std::min(TIFFGetB(pixels[x]) + white, 255u));
      to[1] = static_cast<std::uint8_t>(std::min(TIFFGetG(pixels[x]) + white, 255u));
      to[2] = static_cast<std::uint8_t>(std::min(TIFFGetR(pixels[x]) + white, 255u));
    }
  }

  void StateTiffResolution(PageImage& page) const {
    float x = 0, y = 0;
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetField(m_tiff.get(), TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(m_tiff.get(), TIFFTAG_YRESOLUTION, &y);
    TIFFGetFieldDefaulted(m_tiff.get(), TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit == RESUNIT_NONE) return;
    const double dotsPerUnit = unit == RESUNIT_CENTIMETER ? 2.54 : 1;
    StateResolution(page, x * dotsPerUnit, y * dotsPerUnit);
  }

  const std::string m_name;
  std::string m_reason;  // of the first error
  const RereadableFile m_file;
  std::unique_ptr<TIFF, TiffCloser> m_tiff;
  bool m_opened = false;  // whether the first directory has been read
  std::vector<std::uint32_t> m_pixels;
};

}  // namespace

std::unique_ptr<PageSource> OpenTiff(PageInput input, int) {
  return std::make_unique<TiffPages>(std::move(input));
}
