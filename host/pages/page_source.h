// Where the pages of a job come from. A front end implements it for the pages that its print system
// passes on, or opens files with page_files.h and page_formats.h.
#pragma once

#include <cstddef>
#include <optional>

#include "host/pages/page_image.h"

// Used by one thread at a time.
class PageSource {
 public:
  virtual ~PageSource() = default;

  // Reads the next page; false after the last one. Throws HostError (input) that names the source
  // and the reason; the page is then undefined and the source must not be used again.
  virtual bool Next(PageImage& page) = 0;

  // Skips the next page, if possible without drawing it; false after the last one. Throws as Next
  // does. scratch: an image that may be overwritten.
  virtual bool Skip(PageImage& scratch) { return Next(scratch); }

  // The number of pages; nullopt if it is not known before all are read.
  virtual std::optional<std::size_t> Count() const { return std::nullopt; }
};
