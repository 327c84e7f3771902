#include "host/page_reader.h"

#include <cerrno>
#include <cstring>

#include "host/error.h"

namespace {

constexpr std::uint64_t kMostPixelBytes = std::uint64_t{1} << 30;

[[noreturn]] void Fail(const std::string& source, const std::string& reason) {
  throw HostError(kExitInput, source + ": " + reason);
}

}  // namespace

PageImage MakePage(std::uint64_t widthPx, std::uint64_t heightPx, const std::string& source) {
  const std::string size = std::to_string(widthPx) + " x " + std::to_string(heightPx) + " pixels";
  if (widthPx == 0 || heightPx == 0) Fail(source, "the page is empty (" + size + ")");
  if (widthPx > kMostPixelBytes || heightPx > kMostPixelBytes ||
      widthPx * 3 > kMostPixelBytes / heightPx) {
    Fail(source, "the page is too large (" + size + "); at most 1 GiB of pixels can be printed");
  }
  PageImage page;
  page.widthPx = static_cast<std::uint32_t>(widthPx);
  page.heightPx = static_cast<std::uint32_t>(heightPx);
  page.pixels.assign(page.RowBytes() * page.heightPx, 0xFF);
  return page;
}

void PageReader::Closer::operator()(std::FILE* file) const {
  if (file != stdin) std::fclose(file);
}

PageReader::PageReader(std::vector<std::string> files) : m_files(std::move(files)) {}
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
  m_file.reset(name == "-" ? stdin : std::fopen(name.c_str(), "rb"));
  if (m_file == nullptr) Fail(m_source, std::string("cannot be opened: ") + std::strerror(errno));
}

std::optional<PageImage> PageReader::Next() {
  for (;;) {
    if (m_file == nullptr) {
      if (m_next == m_files.size()) return std::nullopt;
      Open();
    }
    const int first = std::getc(m_file.get());
    if (first == 0x89 && m_pagesOfFile == 0) {
      std::ungetc(first, m_file.get());
      PageImage page = ReadPng(m_file.get(), m_source);
      m_file.reset();
      return page;
    }
    if (first != EOF) std::ungetc(first, m_file.get());
    if (std::optional<PageImage> page = ReadPnm(m_file.get(), m_source)) {
      ++m_pagesOfFile;
      return page;
    }
    m_file.reset();
    if (m_pagesOfFile == 0) Fail(m_source, "holds no page; PNG, PBM, PGM and PPM can be read");
  }
}
