// The pages of several files, one file after the other.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/pages/page_source.h"

class PageFiles final : public PageSource {
 public:
  // files: paths; "-" is standard input. Each is opened when its first page is needed. dpi: see
  // PageOpener.
  PageFiles(std::vector<std::string> files, int dpi);

  // Throw HostError (input) for a file without pages, too.
  bool Next(PageImage& page) override { return Advance(page, &PageSource::Next); }
  bool Skip(PageImage& scratch) override { return Advance(scratch, &PageSource::Skip); }
  std::optional<std::size_t> Count() const override;

 private:
  bool Advance(PageImage& page, bool (PageSource::*step)(PageImage&));

  const std::vector<std::string> m_files;
  const int m_dpi;
  std::size_t m_opened = 0;            // files opened so far
  std::unique_ptr<PageSource> m_file;  // the current one
  bool m_anyPage = false;              // whether the current file has had a page
};
