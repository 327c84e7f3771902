// The pages of a queue's document as labels: those that the job asks for, cropped to the label and
// repeated for collated copies.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "common/file.h"
#include "host/label_job.h"
#include "host/pages/selected_pages.h"
#include "printing/label_paper.h"

struct PageRequest {
  LabelPaper paper;
  int dpi = 300;
  bool landscape = false;
  std::vector<PageRange> ranges;  // printed in the document's order; empty: all pages
  int repeats = 1;                // of the whole document
};

class LabelPages final : public PageSource {
 public:
  // path: of the document; "-" is standard input, which is copied if it is printed several times.
  // title: for messages. Throws HostError (input) if it cannot be copied.
  LabelPages(PageRequest request, const std::string& path, const std::string& title);

  // The label's size, for which the first page is read. Throws HostError (input) if it cannot be
  // read or if there is none.
  PaperSize Label();

  // Sets the label that all pages are cropped to. Throws HostError (settings) if the first page
  // does not fit it.
  void CropTo(const DevicePage& label);

  // A page that cannot be read or does not fit counts as the end, so that the labels before it form
  // a complete job. RethrowFailure throws its error.
  bool Next(PageImage& page) override;
  void RethrowFailure() const {
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  void Open();
  bool ReadWanted(PageImage& page);
  bool IsWanted(std::size_t page) const;
  void Crop(PageImage& page) const;

  const PageRequest m_request;
  const std::string m_path;
  const std::string m_title;
  FilePtr m_copy;  // of standard input, if the document is printed several times
  int m_repeats;   // left to do, including the current one
  std::unique_ptr<PageSource> m_document;
  bool m_isPicture = false;
  std::size_t m_page = 0;  // number of the last page that was read
  std::optional<PageImage> m_first;
  DevicePage m_label = {};
  std::exception_ptr m_failure;
};

// Prints the pages and ends the job; the caller finishes the spool. Returns the number of pages
// printed. Throws HostError if the first page fails, before anything is sent; for a later page,
// call pages.RethrowFailure.
std::size_t PrintLabels(LabelPages& pages, JobRequest request, Spool& spool, JobObserver& observer);
