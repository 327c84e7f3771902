#include "host/pages/selected_pages.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "host/error.h"
#include "host/pages/page_formats.h"

namespace {

bool CanBeReopened(const std::string& path) {
  std::error_code error;
  return path != "-" && std::filesystem::is_regular_file(path, error);
}

// nullopt if the number is not known before the pages are read.
std::optional<std::size_t> CountPages(const std::vector<std::string>& paths, int dpi) {
  std::size_t total = 0;
  for (const std::string& path : paths) {
    if (!CanBeReopened(path)) return std::nullopt;
    const std::optional<std::size_t> count = OpenPages(PageInput::Open(path), dpi)->Count();
    if (!count) return std::nullopt;
    total += *count;
  }
  return total;
}

// Removes a page number from the front of the text; nullopt if there is none.
std::optional<std::size_t> TakeNumber(std::string_view& text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number == 0) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

}  // namespace

std::vector<PageRange> ParsePageRanges(std::string_view text) {
  const auto refuse = [text](const std::string& remedy) {
    return HostError(kExitUsage, "--pages is \"" + std::string(text) + "\"", remedy);
  };
  std::vector<PageRange> ranges;
  std::string compact(text);
  std::erase(compact, ' ');
  for (std::string_view rest = compact;;) {
    const std::optional<std::size_t> first = TakeNumber(rest);
    std::optional<std::size_t> last = first;
    if (first && rest.starts_with('-')) {
      rest.remove_prefix(1);
      last = rest.empty() || rest.starts_with(',') ? PageRange::kOpen : TakeNumber(rest);
    }
    if (!first || !last || !(rest.empty() || rest.starts_with(','))) {
      throw refuse("write page numbers from 1 and ranges of them, as \"3-7,12-\"");
    }
    if (*last < *first) {
      throw refuse("write the lower number first: \"" + std::to_string(*last) + "-" +
                   std::to_string(*first) + "\"");
    }
    ranges.push_back({*first, *last});
    if (rest.empty()) return ranges;
    rest.remove_prefix(1);
  }
}

SelectedPages::SelectedPages(std::vector<std::string> files, int dpi, std::vector<PageRange> ranges)
    : m_paths(std::move(files)), m_dpi(dpi), m_ranges(std::move(ranges)) {
  const std::optional<std::size_t> total = CountPages(m_paths, m_dpi);
  std::size_t wanted = 0;
  for (const PageRange& range : m_ranges) {
    const std::size_t last = range.last == PageRange::kOpen ? range.first : range.last;
    if (total && last > *total) FailMissing(std::max(range.first, *total + 1), *total);
    if (total) wanted += std::min(range.last, *total) - range.first + 1;
  }
  if (total) m_count = wanted;
}

void SelectedPages::FailMissing(std::size_t number, std::size_t total) const {
  throw HostError(kExitSettings,
                  "There is no page " + std::to_string(number) + ": " +
                      (m_paths.size() > 1  ? std::string("all files together have ")
                       : m_paths[0] == "-" ? std::string("standard input has ")
                                           : m_paths[0] + " has ") +
                      std::to_string(total) + (total == 1 ? " page" : " pages"),
                  "change --pages");
}

// Moves m_files so that its next page is the one of this number.
void SelectedPages::GoTo(std::size_t number, PageImage& scratch) {
  if (m_files == nullptr || number <= m_read) {
    const auto pipe = std::find_if_not(m_paths.begin(), m_paths.end(), CanBeReopened);
    if (m_files != nullptr && pipe != m_paths.end()) {
      throw HostError(kExitInput,
                      (*pipe == "-" ? std::string("standard input") : *pipe) +
                          ": --pages goes back to page " + std::to_string(number) + " after page " +
                          std::to_string(m_read) + ", but a stream can be read only forwards",
                      "save it to a file and print that, or name the pages in ascending order");
    }
    m_files = std::make_unique<PageFiles>(m_paths, m_dpi);
    m_read = 0;
  }
  while (m_read + 1 < number) {
    if (!m_files->Skip(scratch)) FailMissing(number, m_read);
    ++m_read;
  }
}

bool SelectedPages::Next(PageImage& page) {
  for (; m_range < m_ranges.size(); ++m_range, m_within = 0) {
    const PageRange& range = m_ranges[m_range];
    const std::size_t number = range.first + m_within;
    if (number > range.last) continue;
    if (number == m_keptAs) {
      page = m_kept;
    } else {
      GoTo(number, page);
      if (!m_files->Next(page)) {
        if (range.last == PageRange::kOpen && m_within > 0) continue;
        FailMissing(number, m_read);
      }
      ++m_read;
    }
    const bool comesAgain = number == range.last && m_range + 1 < m_ranges.size() &&
                            m_ranges[m_range + 1].first == number;
    m_keptAs = comesAgain ? number : 0;
    if (comesAgain) m_kept = page;
    ++m_within;
    return true;
  }
  return false;
}
