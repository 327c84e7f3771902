#include "host/pages/page_files.h"

#include <algorithm>

#include "host/error.h"
#include "host/pages/page_formats.h"

PageFiles::PageFiles(std::vector<std::string> files, int dpi)
    : m_files(std::move(files)), m_dpi(dpi) {}

std::optional<std::size_t> PageFiles::Count() const {
  // The name tells the number of pages of PNG files only.
  const bool allPng = std::all_of(m_files.begin(), m_files.end(), [](const std::string& file) {
    return file.ends_with(".png") || file.ends_with(".PNG");
  });
  return allPng ? std::optional(m_files.size()) : std::nullopt;
}

bool PageFiles::Advance(PageImage& page, bool (PageSource::*step)(PageImage&)) {
  for (;;) {
    if (m_file == nullptr) {
      if (m_opened == m_files.size()) return false;
      m_file = OpenPages(PageInput::Open(m_files[m_opened++]), m_dpi);
      m_anyPage = false;
    }
    if ((m_file.get()->*step)(page)) return m_anyPage = true;
    m_file.reset();
    if (m_anyPage) continue;
    const std::string& file = m_files[m_opened - 1];
    throw HostError(kExitInput,
                    (file == "-" ? std::string("standard input") : file) + ": holds no page");
  }
}
