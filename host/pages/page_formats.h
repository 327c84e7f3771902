// The formats that pages can be read from. A new one is a row of the table, a function that opens
// it in a file of its own, and its tests.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "host/pages/page_input.h"
#include "host/pages/page_source.h"

// Makes the source that reads an input of one format. dpi: the resolution at which pages without
// pixels of their own are drawn. Throws HostError (input).
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
  const char* names;  // for people
  bool (*matches)(
      std::string_view head);  // the input's first kPageHeadBytes, or all of a shorter one
  PageOpener* open;
};

inline constexpr std::size_t kPageHeadBytes = 64;
inline constexpr std::size_t kMostFileBytes = std::size_t{1} << 30;  // of those read as a whole
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
       return head.starts_with("BM") && head.substr(6, 4) == std::string_view("\0\0\0\0", 4);
     },
     OpenBmp},
    {"WebP",
     [](std::string_view head) { return head.starts_with("RIFF") && head.substr(8, 4) == "WEBP"; },
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

// Opens an input by its first bytes, whatever its name is. Throws HostError (input) if no format
// matches.
std::unique_ptr<PageSource> OpenPages(PageInput input, int dpi);

// All names of the table: "PNG, PBM, PGM, PPM, PDF".
std::string PageFormatNames();
