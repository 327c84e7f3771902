// Some of the pages of several files, in any order.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/pages/page_files.h"

// Page numbers from 1, counted across all files: page 1 is the first page of the first file.
struct PageRange {
  static constexpr std::size_t kOpen = SIZE_MAX;
  std::size_t first;
  std::size_t last;  // kOpen: up to the last page
};

// A text like "3-7,1,12-". Throws HostError (usage) that quotes it for anything else.
std::vector<PageRange> ParsePageRanges(std::string_view text);

class SelectedPages final : public PageSource {
 public:
  // Delivers the pages in the order of the ranges, as often as these name them. files and dpi: see
  // PageFiles. Going back to an earlier page needs files that can be opened again. Throws HostError
  // (settings) if the files are known to have fewer pages.
  SelectedPages(std::vector<std::string> files, int dpi, std::vector<PageRange> ranges);

  // Throws HostError: settings for a page that does not exist; input if the ranges go back in a
  // pipe, or if a page cannot be read.
  bool Next(PageImage& page) override;
  std::optional<std::size_t> Count() const override { return m_count; }

 private:
  void GoTo(std::size_t number, PageImage& scratch);
  [[noreturn]] void FailMissing(std::size_t number, std::size_t total) const;

  const std::vector<std::string> m_paths;
  const int m_dpi;
  const std::vector<PageRange> m_ranges;
  std::optional<std::size_t> m_count;
  std::unique_ptr<PageFiles> m_files;
  std::size_t m_read = 0;    // pages of m_files that have been read or skipped
  std::size_t m_range = 0;   // index of the current range
  std::size_t m_within = 0;  // how many of its pages have been delivered
  std::size_t m_keptAs = 0;  // number of the page in m_kept; 0: none
  PageImage m_kept;          // a page that comes again at once
};
