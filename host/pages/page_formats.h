// The formats that pages are read from. A new one is a row of the table, a function in a file of
// its own that opens it, and its tests.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "host/pages/page_input.h"
#include "host/pages/page_source.h"

// Makes the source that reads an input of one format. dpi: the resolution at which pages that are
// not pixels are drawn. Throws HostError (input).
using PageOpener = std::unique_ptr<PageSource>(PageInput input, int dpi);
PageOpener OpenBmp;
PageOpener OpenGif;
PageOpener OpenJpeg;
PageOpener OpenPdf;
PageOpener OpenPng;
PageOpener OpenPnm;
PageOpener OpenRaster;  // with libcups only
PageOpener OpenSvg;
PageOpener OpenTiff;
PageOpener OpenWebp;

struct PageFormat {
  const char* names;  // for messages
  // head: the input's first kPageHeadBytes, or all of a shorter one.
  bool (*matches)(std::string_view head);
  PageOpener* open;
};

constexpr bool HasAt(std::string_view head, std::size_t at, std::string_view bytes) {
  return head.size() >= at && head.substr(at).starts_with(bytes);
}

inline constexpr std::size_t kPageHeadBytes = 64;
inline constexpr std::size_t kMostFileBytes = std::size_t{1} << 30;  // of a file read whole
inline constexpr PageFormat kPageFormats[] = {
    {"PNG", [](std::string_view head) { return head.starts_with("\x89PNG"); }, OpenPng},
    {"PBM, PGM, PPM",
     [](std::string_view head) {
       head.remove_prefix(std::min(head.find_first_not_of(" \t\r\n\v\f"), head.size()));
       return head.size() > 1 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6';
     },
     OpenPnm},
    {"PDF", [](std::string_view head) { return head.starts_with('%') && !head.starts_with("%!"); },
     OpenPdf},
    {"JPEG", [](std::string_view head) { return head.starts_with("\xFF\xD8\xFF"); }, OpenJpeg},
    {"TIFF",
     [](std::string_view head) {
       return head.starts_with("II*") || head.starts_with("II+") ||
              head.starts_with({"MM\0*", 4}) || head.starts_with({"MM\0+", 4});
     },
     OpenTiff},
    {"GIF", [](std::string_view head) { return head.starts_with("GIF8"); }, OpenGif},
    {"BMP",
     [](std::string_view head) {
       return head.starts_with("BM") && HasAt(head, 6, {"\0\0\0\0", 4});
     },
     OpenBmp},
    {"WebP",
     [](std::string_view head) { return head.starts_with("RIFF") && HasAt(head, 8, "WEBP"); },
     OpenWebp},
    {"SVG",
     [](std::string_view head) {
       if (head.starts_with("\uFEFF")) head.remove_prefix(3);
       head.remove_prefix(std::min(head.find_first_not_of(" \t\r\n"), head.size()));
       return head.starts_with("<svg") || head.starts_with("<?xml") || head.starts_with("<!--") ||
              head.starts_with("<!DOCTYPE svg");
     },
     OpenSvg},
#ifdef VLX_RASTER_PAGES
    {"PWG raster, Apple raster (URF), CUPS raster",
     [](std::string_view head) {
       return head.starts_with("RaS") || head.starts_with("tSaR") || head.starts_with("2SaR") ||
              head.starts_with("3SaR") || head.starts_with("UNIRAST");
     },
     OpenRaster},
#endif
};

// Opens an input in the format that its first bytes show. Throws HostError (input) if no format
// matches.
std::unique_ptr<PageSource> OpenPages(PageInput input, int dpi);

// All names of the table: "PNG, PBM, PGM, PPM, PDF".
std::string PageFormatNames();
