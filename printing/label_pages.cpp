#include "printing/label_pages.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/pages/page_formats.h"

namespace {

FilePtr CopyOfStandardInput() {
  PageInput input = PageInput::Open("-");
  FilePtr copy(std::tmpfile());
  char buffer[1 << 16];
  bool written = copy != nullptr;
  while (const std::size_t size = written ? input.Read(buffer, sizeof buffer) : 0) {
    written = std::fwrite(buffer, 1, size, copy.get()) == size;
  }
  if (written && std::fflush(copy.get()) == 0) return copy;
  throw HostError(kExitInput,
                  std::string("The document cannot be copied to be printed several times: ") +
                      std::strerror(errno),
                  "free some space in " + std::string(P_tmpdir));
}

}  // namespace

LabelPages::LabelPages(PageRequest request, const std::string& path, const std::string& title)
    : m_request(std::move(request)),
      m_path(path),
      m_title(title),
      m_copy(path == "-" && m_request.repeats > 1 ? CopyOfStandardInput() : nullptr),
      m_repeats(m_request.repeats) {}

void LabelPages::Open() {
  FilePtr file;
  if (m_path == "-") {
    const int source = m_copy != nullptr ? fileno(m_copy.get()) : STDIN_FILENO;
    file.reset(fdopen(fcntl(source, F_DUPFD_CLOEXEC, 0), "rb"));
  } else {
    file.reset(std::fopen(m_path.c_str(), "rbe"));
  }
  if (file == nullptr) {
    throw HostError(kExitInput, m_title + ": cannot be opened: " + std::strerror(errno));
  }
  if (m_copy != nullptr) std::rewind(file.get());
  PageInput input(std::move(file), m_title);
  const std::string_view head = input.Peek(2);
  m_isPicture = head.starts_with('\x89') || head.starts_with('P');
  m_document = OpenPages(std::move(input), m_request.dpi);
  m_page = 0;
}

bool LabelPages::IsWanted(std::size_t page) const {
  return m_request.ranges.empty() || std::any_of(m_request.ranges.begin(), m_request.ranges.end(),
                                                 [page](const PageRange& range) {
                                                   return page >= range.first && page <= range.last;
                                                 });
}

bool LabelPages::ReadWanted(PageImage& page) {
  for (; m_repeats > 0; --m_repeats) {
    if (m_document == nullptr) Open();
    while (m_document->Next(page)) {
      if (IsWanted(++m_page)) return true;
    }
    m_document.reset();
  }
  return false;
}

PaperSize LabelPages::Label() {
  if (!m_first) {
    m_first.emplace();
    if (!ReadWanted(*m_first)) {
      throw HostError(kExitInput, m_title + ": there is no page to print",
                      "look at the document and at the page range");
    }
  }
  return LabelFor(m_request.paper, *m_first, m_request.dpi, m_request.landscape);
}

void LabelPages::Crop(PageImage& page) const {
  CropToLabel(page, m_label, "Page " + std::to_string(m_page), m_isPicture);
}

void LabelPages::CropTo(const DevicePage& label) {
  m_label = label;
  if (m_first) Crop(*m_first);
}

bool LabelPages::Next(PageImage& page) {
  if (m_first) {
    page = std::move(*m_first);
    m_first.reset();
    return true;
  }
  if (m_failure) return false;
  try {
    if (!ReadWanted(page)) return false;
    Crop(page);
    return true;
  } catch (const HostError&) {
    m_failure = std::current_exception();
    return false;
  }
}

std::size_t PrintLabels(LabelPages& pages, JobRequest request, Spool& spool,
                        JobObserver& observer) {
  SetPaper(request.settings, pages.Label());
  LabelJob job(request, spool, observer);
  pages.CropTo(job.Page());
  PrintPages(pages, job);
  return job.PagesPrinted();
}
