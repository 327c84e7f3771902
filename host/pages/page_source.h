// Where the pages of a job come from. A front end implements it for what its print system hands
// over, or opens files with page_files.h and page_formats.h.
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

  // Passes over the next page, where possible without drawing it; false after the last one. Throws
  // as Next does. scratch: may be used, its content is then undefined.
  virtual bool Skip(PageImage& scratch) { return Next(scratch); }

  // The number of pages; nullopt if it is unknown before they are read.
  virtual std::optional<std::size_t> Count() const { return std::nullopt; }
};
