// The pages to print: image files, one page each, or a stream of PNM pages on standard input.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One page: rows from the top, width x 3 bytes each without padding, in the order blue, green, red.
struct PageImage {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::vector<std::uint8_t> pixels;

  std::size_t RowBytes() const { return std::size_t{3} * widthPx; }
  std::uint8_t* Row(std::uint32_t y) { return pixels.data() + y * RowBytes(); }
  const std::uint8_t* Row(std::uint32_t y) const { return pixels.data() + y * RowBytes(); }
};

// Makes room for a white page of that size. Throws HostError that names the source for a size of
// zero or beyond 1 GiB of pixels.
PageImage MakePage(std::uint64_t widthPx, std::uint64_t heightPx, const std::string& source);

// Reads a PNG file of any depth, colour type and interlace; alpha is laid on white. The file is
// positioned at its start.
PageImage ReadPng(std::FILE* file, const std::string& source);

// Reads one page of a PBM, PGM or PPM stream (plain or raw, any maximum value), none at its end.
std::optional<PageImage> ReadPnm(std::FILE* file, const std::string& source);

// Goes through the files in order, one page in memory at a time; "-" is standard input.
class PageReader {
 public:
  explicit PageReader(std::vector<std::string> files);
  ~PageReader();

  // The next page, none after the last. Throws HostError (input) that names the file and the
  // reason.
  std::optional<PageImage> Next();
  // How many pages there are when that is known before they are read, else 0.
  std::size_t KnownCount() const;

 private:
  struct Closer {
    void operator()(std::FILE* file) const;
  };
  void Open();

  std::vector<std::string> m_files;
  std::size_t m_next = 0;
  std::string m_source;
  std::unique_ptr<std::FILE, Closer> m_file;
  std::size_t m_pagesOfFile = 0;
};
