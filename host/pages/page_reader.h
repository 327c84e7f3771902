// The pages to print: image files, one page each, streams of PNM pages, PDF files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// One page: rows from the top, width x 3 bytes each in the order blue, green, red, padded with
// white to a multiple of 4 bytes. It is used again for page after page.
struct PageImage {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::size_t strideBytes = 0;
  // A renderer rounded the page's size up to whole dots: of the last column and row the page has a
  // part only.
  bool roundedUp = false;
  std::vector<std::uint8_t> pixels;

  std::uint8_t* Row(std::uint32_t y) { return pixels.data() + y * strideBytes; }
  const std::uint8_t* Row(std::uint32_t y) const { return pixels.data() + y * strideBytes; }
};

// Gives the page that size; its pixels are whatever they were. Throws HostError that names the
// source for a size of zero or beyond 1 GiB of pixels.
void ShapePage(PageImage& page, std::uint64_t widthPx, std::uint64_t heightPx,
               const std::string& source);

// Cuts the page to a smaller size in its place.
void TrimPage(PageImage& page, std::uint32_t widthPx, std::uint32_t heightPx);

// Reads a PNG file of any depth, colour type and interlace; alpha is laid on white. The file is
// positioned at its start.
void ReadPng(std::FILE* file, const std::string& source, PageImage& page);

// Reads one page of a PBM, PGM or PPM stream (plain or raw, any maximum value); false at its end.
bool ReadPnm(std::FILE* file, const std::string& source, PageImage& page);

class PdfPages;

// Goes through the files in order, one page in memory at a time; "-" is standard input.
class PageReader {
 public:
  // dpi: the resolution at which pages without pixels of their own (PDF) are drawn.
  PageReader(std::vector<std::string> files, int dpi);
  ~PageReader();

  // Reads the next page, false after the last. Throws HostError (input) that names the file and
  // the reason; the page is then undefined.
  bool Next(PageImage& page);
  // How many pages there are when that is known before they are read, else 0.
  std::size_t KnownCount() const;

 private:
  struct Closer {
    void operator()(std::FILE* file) const;
  };
  void Open();
  void Close();
  bool ReadFromStream(PageImage& page);

  const std::vector<std::string> m_files;
  const int m_dpi;
  std::size_t m_next = 0;
  std::string m_source;
  std::unique_ptr<std::FILE, Closer> m_file;
  std::unique_ptr<PdfPages> m_pdf;
  bool m_isPng = false;
  std::size_t m_pagesOfFile = 0;
};
