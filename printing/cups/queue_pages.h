// The pages of a queue's document as they are to be printed: those that the job wants, in its
// order, each of the label's size.
#pragma once

#include <exception>
#include <optional>

#include "common/file.h"
#include "host/pages/page_source.h"
#include "printing/cups/queue_job.h"

class QueuePages final : public PageSource {
 public:
  // path: of the document; "-" is standard input. title: for messages. repeats: how often the whole
  // document is printed. job must outlive the pages.
  QueuePages(const QueueJob& job, const std::string& path, const std::string& title, int repeats);

  // The label's size, which the first page may decide. Throws HostError (input) if there is none.
  PaperSize Label();

  // Sets what the pages are cropped to. Throws HostError (settings) if the first one does not fit.
  void CropTo(const DevicePage& label);

  // A page that cannot be read or does not fit ends the pages, so that the labels before it become
  // a whole job; RethrowFailure tells of it.
  bool Next(PageImage& page) override;
  void RethrowFailure() const {
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  void Open();
  bool ReadWanted(PageImage& page);
  void Crop(PageImage& page) const;

  const QueueJob& m_job;
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
