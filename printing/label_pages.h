// The pages of a queue's document as they are to be printed: those that the job wants, in its
// order, each of the label's size.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "common/file.h"
#include "host/label_job.h"
#include "printing/label_paper.h"

struct PageRange {
  int first;  // from 1
  int last;
};

struct PageOrder {
  LabelPaper paper;
  int dpi = 300;
  bool landscape = false;
  std::vector<PageRange> ranges;  // that are wanted; empty: all pages
  int repeats = 1;                // of the whole document
};

class LabelPages final : public PageSource {
 public:
  // path: of the document; "-" is standard input. title: for messages.
  LabelPages(PageOrder order, const std::string& path, const std::string& title);

  // The label's size, which the first page may decide. Throws HostError (input) if there is none.
  PaperSize Label();

  // Sets what the pages are cropped to. Throws HostError (settings) if the first one does not fit.
  void CropTo(const DevicePage& label);

  // A page that cannot be read or does not fit ends the pages, so that the labels before it become
  // a whole job; RethrowFailure throws its error.
  bool Next(PageImage& page) override;
  void RethrowFailure() const {
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  void Open();
  bool ReadWanted(PageImage& page);
  bool IsWanted(int page) const;
  void Crop(PageImage& page) const;

  const PageOrder m_order;
  const std::string m_path;
  const std::string m_title;
  FilePtr m_copy;  // of standard input if it is read several times
  int m_repeats;   // that are left, the one at hand included
  std::unique_ptr<PageSource> m_document;
  bool m_isPicture = false;
  int m_page = 0;  // of the document
  std::optional<PageImage> m_first;
  DevicePage m_label = {};
  std::exception_ptr m_failure;
};

// Prints the pages on their label; spool is not finished yet. Returns their number. Throws
// HostError before anything is sent; RethrowFailure reports a page that fails later.
std::size_t PrintLabels(LabelPages& pages, JobRequest request, Spool& spool, JobObserver& observer);
