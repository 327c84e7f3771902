#include "host/pages/page_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/error.h"
#include "host/pages/pdf_pages.h"

namespace {

constexpr std::uint64_t kMostPixelBytes = std::uint64_t{1} << 30;
constexpr std::size_t kBufferBytes = std::size_t{1} << 18;

[[noreturn]] void Fail(const std::string& source, const std::string& reason) {
  throw HostError(kExitInput, source + ": " + reason);
}

void WhitenPadding(PageImage& page) {
  const std::size_t used = std::size_t{3} * page.widthPx;
  if (used == page.strideBytes) return;
  for (std::uint32_t y = 0; y < page.heightPx; ++y) {
    std::memset(page.Row(y) + used, 0xFF, page.strideBytes - used);
  }
}

}  // namespace

void ShapePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx,
               const std::string& source) {
  const std::string size = std::to_string(widthPx) + " x " + std::to_string(heightPx) + " pixels";
  if (widthPx == 0 || heightPx == 0) Fail(source, "the page is empty (" + size + ")");
  if (widthPx > kMostPixelBytes || heightPx > kMostPixelBytes ||
      widthPx * 3 + 3 > kMostPixelBytes / heightPx) {
    Fail(source, "the page is too large (" + size +
                     "); at most 1 GiB of pixels can be printed: export it smaller");
  }
  page.widthPx = static_cast<std::uint32_t>(widthPx);
  page.heightPx = static_cast<std::uint32_t>(heightPx);
  page.strideBytes = (std::size_t{3} * page.widthPx + 3) / 4 * 4;
  page.roundedUp = false;
  page.pixels.resize(page.strideBytes * page.heightPx);
  WhitenPadding(page);
}

void TrimPage(PageImage& page, std::uint32_t widthPx, std::uint32_t heightPx) {
  const std::size_t strideBytes = (std::size_t{3} * widthPx + 3) / 4 * 4;
  for (std::uint32_t y = 0; y < heightPx && strideBytes != page.strideBytes; ++y) {
    std::memmove(page.pixels.data() + y * strideBytes, page.Row(y), std::size_t{3} * widthPx);
  }
  page.widthPx = widthPx;
  page.heightPx = heightPx;
  page.strideBytes = strideBytes;
  page.pixels.resize(strideBytes * heightPx);
  WhitenPadding(page);
}

void PageReader::Closer::operator()(std::FILE* file) const {
  if (file != stdin) std::fclose(file);
}

PageReader::PageReader(std::vector<std::string> files, int dpi)
    : m_files(std::move(files)), m_dpi(dpi) {}
PageReader::~PageReader() = default;

std::size_t PageReader::KnownCount() const {
  for (const std::string& file : m_files) {
    if (!file.ends_with(".png") && !file.ends_with(".PNG")) return 0;  // may hold several pages
  }
  return m_files.size();
}

void PageReader::Open() {
  const std::string& name = m_files[m_next++];
  m_source = name == "-" ? "standard input" : name;
  m_pagesOfFile = 0;
  std::error_code error;
  if (std::filesystem::is_directory(name, error)) {
    Fail(m_source, "is a folder; name its files, as " + name + "/*.png");
  }
  m_file.reset(name == "-" ? stdin : std::fopen(name.c_str(), "rbe"));
  if (m_file == nullptr) Fail(m_source, std::string("cannot be opened: ") + std::strerror(errno));
  if (name != "-" || m_next == 1) std::setvbuf(m_file.get(), nullptr, _IOFBF, kBufferBytes);
  // The first byte tells the formats apart.
  const int first = std::ungetc(std::getc(m_file.get()), m_file.get());
  m_isPng = first == 0x89;
  if (first == '%') m_pdf = std::make_unique<PdfPages>(m_file.get(), m_source, m_dpi);
}

void PageReader::Close() {
  m_pdf.reset();
  m_file.reset();
}

// The next page of the file at hand, false after its last.
bool PageReader::ReadFromStream(PageImage& page) {
  if (m_pdf != nullptr) return m_pdf->Next(page);
  if (!m_isPng) return ReadPnm(m_file.get(), m_source, page);
  if (m_pagesOfFile > 0) return false;
  ReadPng(m_file.get(), m_source, page);
  return true;
}

bool PageReader::Next(PageImage& page) {
  for (;;) {
    if (m_file == nullptr) {
      if (m_next == m_files.size()) return false;
      Open();
    }
    if (ReadFromStream(page)) {
      ++m_pagesOfFile;
      return true;
    }
    if (m_pagesOfFile == 0) {
      Fail(m_source, "holds no page; PNG, PBM, PGM, PPM and PDF can be read");
    }
    Close();
  }
}
