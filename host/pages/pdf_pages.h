// The pages of a PDF file, drawn by the program pdftoppm (poppler-utils) and read from it one by
// one: a file of any length needs the memory of one page.
#pragma once

#include <sys/types.h>

#include "host/pages/page_reader.h"

class PdfPages {
 public:
  // pdf: the file, opened and not closed here; what cannot be read twice (a pipe) is copied to a
  // temporary file. Throws HostError (input) when pdftoppm cannot be started.
  PdfPages(std::FILE* pdf, const std::string& source, int dpi);
  // Ends the process when pages are left.
  ~PdfPages();
  PdfPages(const PdfPages&) = delete;
  PdfPages& operator=(const PdfPages&) = delete;

  // Reads the next page, false after the last. Throws HostError (input) with what pdftoppm said
  // when it failed, before the first page or in the middle.
  bool Next(PageImage& page);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, Closer>;

  void Start(int pdfDescriptor, int dpi);
  void CheckEnd();

  const std::string m_source;
  File m_copy;
  File m_messages;  // what the process says
  File m_pages;
  pid_t m_process = -1;
};
