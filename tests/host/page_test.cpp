#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs what cstdio declares
#include <jpeglib.h>
#include <tiffio.h>
#include <webp/encode.h>

#include "host/error.h"
#include "host/pages/page_files.h"
#include "host/pages/page_raster.h"
#include "host/pages/selected_pages.h"
#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

namespace {

using namespace std::string_literals;

// The pages of one file: each as "WxH" and its pixels' red, green, blue in hexadecimal, then the
// error.
std::string ReadPages(const std::string& content) {
  const TempHome home;
  home.WriteFile("page", content);
  std::string pages;
  try {
    PageFiles files({home.Path("page")}, 300);
    for (PageImage page; files.Next(page);) {
      pages += (pages.empty() ? "" : ", ") + std::to_string(page.widthPx) + "x" +
               std::to_string(page.heightPx);
      for (std::uint32_t x = 0; x < page.widthPx * page.heightPx; ++x) {
        const std::uint8_t* pixel = page.Row(x / page.widthPx) + 3 * (x % page.widthPx);
        char rgb[8];
        std::snprintf(rgb, sizeof rgb, " %02x%02x%02x", pixel[2], pixel[1], pixel[0]);
        pages += rgb;
      }
    }
  } catch (const HostError& error) {
    EXPECT_EQ(error.Code(), kExitInput);
    const std::string what = error.what();
    pages += "error: " + what.substr(what.find("page: ") + 6);
  }
  return pages;
}

TEST(PageFiles, ReadsEveryPnmForm) {
  const std::pair<std::string, std::string> rows[] = {
      {"P1 3 1 1 0 1", "3x1 000000 ffffff 000000"},
      {"P1\n# a\n3 1\n10#b\n1", "3x1 000000 ffffff 000000"},
      {"P4 9 1\n\x7F\x80", "9x1 ffffff 000000 000000 000000 000000 000000 000000 000000 000000"},
      {"P2 2 1 10 0 5", "2x1 000000 808080"},
      {"P3 1 1 255 1 2 3", "1x1 010203"},
      {"P5 2 1 65535\n\xFF\xFF\x80\x00"s, "2x1 ffffff 808080"},
      {"P6 5 1 255\nabcdefghijklmno", "5x1 616263 646566 676869 6a6b6c 6d6e6f"},
      {"P5 2 1 10\n\n\x05", "2x1 ffffff 808080"},
      {"P6 1 1 255\nabcP5 1 1 255\nd\n", "1x1 616263, 1x1 646464"}};
  for (const auto& [file, pages] : rows) EXPECT_EQ(ReadPages(file), pages);
}

std::string Bytes(std::uint32_t number, int count = 4) {
  std::string bytes;
  for (; count > 0; --count, number >>= 8) bytes += static_cast<char>(number);
  return bytes;
}

// A BMP file; with palettes its colours are 010101, 020202 and 030303.
std::string Bmp(int width, int height, int bits, int form, const std::string& pixels,
                const std::string& masks = "") {
  const std::string palette = bits > 8 ? "" : "\1\1\1\0\2\2\2\0\3\3\3\0"s;
  const std::string header = Bytes(40) + Bytes(width) + Bytes(height) + Bytes(1, 2) +
                             Bytes(bits, 2) + Bytes(form) + Bytes(0) + Bytes(0) + Bytes(0) +
                             Bytes(bits > 8 ? 0 : 3) + Bytes(0) + masks + palette;
  return "BM" + Bytes(0) + Bytes(0) + Bytes(static_cast<std::uint32_t>(14 + header.size())) +
         header + pixels;
}

std::string Webp(const std::string& bgra, int width) {
  std::uint8_t* file = nullptr;
  const std::size_t size = WebPEncodeLosslessBGRA(
      reinterpret_cast<const std::uint8_t*>(bgra.data()), width, 1, 4 * width, &file);
  const std::string content(reinterpret_cast<char*>(file), size);
  WebPFree(file);
  return content;
}

// The same picture in the form that has room for Exif data.
std::string WithExif(const std::string& webp, std::uint32_t width, const std::string& exif) {
  const std::string extended = "VP8X" + Bytes(10) + Bytes(8) + Bytes(width - 1, 3) + Bytes(0, 3);
  const std::string chunks = "WEBP" + extended + webp.substr(12) + "EXIF" +
                             Bytes(static_cast<std::uint32_t>(exif.size())) + exif;
  return "RIFF" + Bytes(static_cast<std::uint32_t>(chunks.size())) + chunks;
}

// Two pages of two grey pixels, the second one on its left side, with a thumbnail in between.
std::string Tiff() {
  const TempHome home;
  TIFF* tiff = TIFFOpen(home.Path("a").c_str(), "w");
  for (int page = 0; page < 3; ++page) {
    std::string row = {'\x10', static_cast<char>(page)};
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 2);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, page == 1 ? FILETYPE_REDUCEDIMAGE : 0);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, page == 2 ? 6 : 1);
    TIFFWriteScanline(tiff, row.data(), 0, 0);
    TIFFWriteDirectory(tiff);
  }
  TIFFClose(tiff);
  std::ifstream file(home.Path("a"), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// An area of one colour, 16 x 8 pixels; exif: of a marker, if any.
std::string Jpeg(J_COLOR_SPACE space, std::string colour, const std::string& exif = "") {
  jpeg_error_mgr errors;
  jpeg_compress_struct jpeg;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* file = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &file, &size);
  jpeg.image_width = 16;
  jpeg.image_height = 8;
  jpeg.input_components = static_cast<int>(colour.size());
  jpeg.in_color_space = space;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  if (!exif.empty()) {
    jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.data()),
                      static_cast<unsigned>(exif.size()));
  }
  std::string row;
  for (int x = 0; x < 16; ++x) row += colour;
  auto* samples = reinterpret_cast<JSAMPLE*>(row.data());
  for (int y = 0; y < 8; ++y) jpeg_write_scanlines(&jpeg, &samples, 1);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const std::string content(reinterpret_cast<char*>(file), size);
  std::free(file);
  return content;
}

TEST(PageFiles, ReadsPicturesOnWhite) {
  const std::string picture = ",\0\0\0\0\3\0\1\0\0\2\3\x44\x34\5\0;"s;  // colours 0, 1, 2
  const std::string colours = "GIF89a\3\0\1\0\xF1\0\0\1\2\3\xAA\xBB\xCC\5\5\5\6\6\6"s;
  const std::pair<std::string, std::string> rows[] = {
      {colours + picture, "3x1 010203 aabbcc 050505"},
      {colours + "!\xF9\4\1\0\0\1\0"s + picture, "3x1 010203 ffffff 050505"},
      {Bmp(1, 2, 24, 0, "abc\0def\0"s), "1x2 666564 636261"},  // from the bottom
      {Bmp(1, -2, 24, 0, "abc\0def\0"s), "1x2 636261 666564"},
      {Bmp(3, 1, 4, 0, "\1\x20\0\0"s), "3x1 010101 020202 030303"},
      {Bmp(3, 2, 8, 1, "\2\1\0\0\0\3\2\1\0\0\0\1"s),
       "3x2 030303 020202 010101 020202 020202 ffffff"},
      {Bmp(3, 1, 4, 2, "\3\x12\0\1"s), "3x1 020202 030303 020202"},
      {Bmp(1, 1, 16, 3, "\x1F\xF8\0\0"s, "\0\xF8\0\0\xE0\7\0\0\x1F\0\0\0"s), "1x1 ff00ff"},
      {Bmp(1, 1, 32, 6, "\0\0\0\x80"s, "\0\0\xFF\0\0\xFF\0\0\xFF\0\0\0\0\0\0\xFF"s), "1x1 7f7f7f"},
      {Webp("\1\2\3\xFF\0\0\0\x80"s, 2), "2x1 030201 7f7f7f"},
      {Tiff(), "2x1 101010 000000, 1x2 101010 020202"},
  };
  for (const auto& [file, pages] : rows) EXPECT_EQ(ReadPages(file), pages);

  // Exif data of one entry, its orientation: on the left side.
  const std::string exif = "Exif\0\0MM\0*\0\0\0\x8\0\1\x1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0"s;
  const std::pair<std::string, std::string> areas[] = {
      {Jpeg(JCS_GRAYSCALE, "\x64"), "16x8 646464"},
      {Jpeg(JCS_GRAYSCALE, "\x64", exif), "8x16 646464"},
      {WithExif(Webp("\x40\x40\x40\xFF\x60\x60\x60\xFF", 2), 2, exif.substr(6)),
       "1x2 404040 606060"},
      {Jpeg(JCS_RGB, "\xFF\xFF\xFF"), "16x8 ffffff"},
      {Jpeg(JCS_CMYK, "\xFF\x80\xFF\x80"), "16x8 804080"},  // 255 is paper
  };
  for (const auto& [file, start] : areas) {
    EXPECT_TRUE(ReadPages(file).starts_with(start)) << ReadPages(file);
    EXPECT_TRUE(ReadPages(file.substr(0, file.size() / 2)).starts_with("error: "));
  }
}

TEST(SelectedPages, ComeInTheOrderGiven) {
  const TempHome home;
  home.WriteFile("a", "P5 1 1 255\naP5 1 1 255\nbP5 1 1 255\nc");
  home.WriteFile("b", EncodePng(PNG_FORMAT_GRAY, "d", 1));
  const auto print = [&](std::vector<std::string> files, const char* ranges) {
    std::string pages;
    try {
      for (std::string& file : files) file = home.Path(file);
      SelectedPages source(files, 300, ParsePageRanges(ranges));
      for (PageImage page; source.Next(page);) pages += static_cast<char>(page.pixels[0]);
      if (source.Count().value_or(pages.size()) != pages.size()) pages += " counted otherwise";
    } catch (const HostError& error) {
      pages += " " + std::to_string(error.Code()) + " " + error.what();
    }
    return pages;
  };
  const std::pair<const char*, const char*> rows[] = {
      {"2-3,1", "bca"},
      {"4,4,4-", "ddd"},
      {"3-", "cd"},
      {"1 - 2, 2-,1", "abbcda"},
      {"6", " 4 There is no page 6: all files together have 4 pages"},
      {"3-5", "cd 4 There is no page 5"},
      {"0", " 2 --pages is \"0\"; write page numbers from 1"},
      {"5-2", " 2 --pages is \"5-2\"; write the lower number first: \"2-5\""},
      {"1,", " 2 "},
      {"1-2-3", " 2 "},
      {"99999999999", " 2 "}};
  for (const auto& [ranges, pages] : rows) {
    EXPECT_TRUE(print({"a", "b"}, ranges).starts_with(pages)) << print({"a", "b"}, ranges);
  }
  EXPECT_EQ(print({"b", "b"}, "2-,1"), "dd");
  EXPECT_TRUE(print({"b", "b"}, "2-3").starts_with(" 4 There is no page 3")) << "none is read";
}

TEST(PageFiles, RefusesWhatIsNoWholePage) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "is empty"},
      {" \n", "plain text"},
      {"\x7F"
       "ELF\1",
       "convert it to one of PNG, PBM, PGM, PPM, PDF, JPEG"},
      {"P7 1 1 255\n",
       "seems to be a PAM picture, which cannot be printed; convert it: pamtopnm /"},
      {"%!PS-Adobe-3.0 EPSF-3.0", "EPS drawing"},
      {"\0\0\0\x20"
       "ftypheic"s,
       "HEIC"},
      {"PK\3\4xxxxxxxxxxxxxxxxxxxxxxxxxx[Content_Types].xml", "soffice --headless"},
      {"PK\3\4", "ZIP"},
      {"<!DOCTYPE HTML>", "HTML"},
      {"Dear Sir", "plain text"},
      {"Pfand", "plain text"},
      {"BM", "plain text"},
      {"BM\1\2", "is not in a format that can be printed"},
      {"RIFF", "plain text"},
      {"<?xml version='1.0'?><a/>", "no SVG drawing"},
      {"<svg", "rsvg-convert cannot read"},
      {"GIF89a\1\0\1\0\0\0\0;"s, "is not a whole GIF file (it holds no picture)"},
      {"GIF89a\1\0\1\0\0\0\0,\0\0\0\0\xFF\xFF\xFF\xFF\0\2"s, "it has no colours"},
      {"\xFF\xD8\xFF\xE0", "is not a whole JPEG file (it ends early)"},
      {"II*\0\x08\0\0\0"s, "is no TIFF file"},
      {"RIFF\x20\0\0\0WEBPVP8 "s, "is not a whole WebP file"},
      {Bmp(1, 1, 8, 1, "\5\1\0\1"s), "a run leaves the picture"},
      {Bmp(1, 1, 8, 0, "\3\0\0\0"s), "it uses colour 3"},
      {Bmp(1, 2, 24, 0, "abc\0"s), "it ends early"},
      {Bmp(40000, 40000, 24, 0, ""), "is too large (40000 x"},
      {"P5 2 2 255\nabc", "breaks off"},
      {"P5 x 2 255\n", "malformed number"},
      {"P5 0 2 255\n", "is empty (0 x 2"},
      {"P5 2147483648 2147483648 255\n", "is too large (2147483648 x"},
      {"P5 99999999999 1 255\n", "out of range"},
      {"P5 1 1 0\na", "maximum value 0"},
      {"P2 1 1 7 8", "above its maximum"},
      {"P1 1 1 2", "malformed bit"},
      {"\x89PNG\r\n\x1A\n", "is not a whole PNG file"},
  };
  for (const auto& [content, message] : rows) {
    const std::string pages = ReadPages(content);
    EXPECT_TRUE(pages.starts_with("error: ") && pages.find(message) != pages.npos) << pages;
  }
  EXPECT_EQ(ReadPages("P5 1 1 255\naGIF"),
            "1x1 616161error: goes on with something that is no PNM page; export it again");
  EXPECT_EQ(ReadPages("P5 1 1 255\naP5 1"),
            "1x1 616161error: breaks off in the middle of a page; export it again");
}

TEST(PageFiles, ReadsPngOnWhite) {
  const std::string rgba = "\xFF\0\0\xFF\0\0\0\0\0\0\0\x80"s;
  EXPECT_EQ(ReadPages(EncodePng(PNG_FORMAT_RGBA, rgba, 3)), "3x1 ff0000 ffffff 7f7f7f");
  const std::string file = EncodePng(PNG_FORMAT_GRAY, "\7", 1);
  EXPECT_EQ(ReadPages(file), "1x1 070707");
  for (std::size_t size = 8; size < file.size() - 12; size += 7) {
    EXPECT_TRUE(ReadPages(file.substr(0, size)).starts_with("error: is not a whole PNG"));
  }
}

TEST(PageRaster, CutsTheSurfaceAndTellsWhatIsLost) {
  const DevicePage device = {20, 20, 3, 1, 9, 12, 203};
  for (int dot = 0; dot < 2 * 18 * 15; ++dot) {
    const POINT at = dot < 18 * 15 ? POINT{0, 0} : POINT{2, 5};
    const int x = dot % 18, y = dot / 18 % 15, paperX = x + at.x, paperY = y + at.y,
              surfaceX = paperX - 3, surfaceY = paperY - 1;
    PageImage page, surface;
    ShapePage(page, 18, 15, "page");
    std::fill(page.pixels.begin(), page.pixels.end(), 0xFF);
    page.Row(y)[3 * x] = 7;
    const bool onSurface = surfaceX >= 0 && surfaceY >= 0 && surfaceX < 9 && surfaceY < 12;
    EXPECT_EQ(LosesContent(page, device, at), !(onSurface && paperX < 9 && paperY < 12))
        << x << " " << y;
    RasterPage(page, device, at, surface);
    ASSERT_EQ(std::count(surface.pixels.begin(), surface.pixels.end(), 7), onSurface);
    EXPECT_TRUE(!onSurface || surface.Row(surfaceY)[3 * surfaceX] == 7) << x << " " << y;
  }
}

TEST(PageRaster, ScalesToTheStatedSizeAndToThePaper) {
  struct Row {
    std::uint32_t width, height;
    double xDpi, yDpi;
    Fit fit;
    std::uint32_t scaledWidth, scaledHeight;
    bool isWhole;
  };
  const Row rows[] = {
      // paper of 100 x 80 dots at 300 dpi
      {40, 30, 0, 0, Fit::None, 40, 30, true},
      {40, 30, 301, 299, Fit::None, 40, 30, true},
      {40, 30, 150, 150, Fit::None, 80, 60, true},
      {40, 30, 200, 600, Fit::None, 60, 15, false},
      {40, 30, 96, 96.2, Fit::None, 40, 30, true},
      {40, 30, 1, 1, Fit::None, 40, 30, true},
      {200, 40, 0, 0, Fit::Shrink, 100, 20, false},
      {200, 40, 600, 600, Fit::None, 100, 20, false},
      {40, 30, 0, 0, Fit::Shrink, 40, 30, true},
      {40, 40, 0, 0, Fit::Scale, 80, 80, true},
      {40, 30, 150, 150, Fit::Scale, 100, 75, false},
      {99, 80, 0, 0, Fit::Scale, 99, 80, true},
  };
  for (const Row& row : rows) {
    const DevicePage device = {100, 80, 0, 0, 100, 80, 300};
    PageImage page;
    ShapePage(page, row.width, row.height, "page");
    for (std::size_t i = 0; i < page.pixels.size(); ++i) page.pixels[i] = i / 3 % 2 * 255;
    StateResolution(page, row.xDpi, row.yDpi);
    const auto scale = FitPage(page, device, row.fit, "page");
    EXPECT_EQ(std::pair(page.widthPx, page.heightPx), std::pair(row.scaledWidth, row.scaledHeight));
    EXPECT_EQ(scale.has_value(), row.width != row.scaledWidth || row.height != row.scaledHeight);
    EXPECT_EQ(!scale || scale->isWhole, row.isWhole);
    // Black and white columns become grey of half the light; --fit shrink averages values.
    if (row.width == 2 * row.scaledWidth) {
      EXPECT_NEAR(page.Row(10)[150], row.xDpi > 0 ? 188 : 128, 2);
    }
    if (row.isWhole && scale) {
      EXPECT_EQ(page.Row(7)[3 * 41], 41 / (page.widthPx / row.width) % 2 * 255);
    }
  }
}

TEST(PageRaster, NamesThePaperThatFitsAPage) {
  struct Row {
    std::uint32_t width, height;
    bool roundedUp;
    int dpi;
    double statedDpi;
    bool landscape;
    const char* paper;
  };
  const Row rows[] = {
      {1181, 1772, false, 300, 0, false, "100x150mm"},
      {1181, 1771, false, 300, 0, false, "100x150mm"},  // the last dot is a part of one
      {1200, 1800, false, 300, 0, false, "101.6x152.4mm"},
      {1182, 1772, true, 300, 0, false, "100x150mm"},      // a PDF page of 100 x 150 mm
      {1200, 1800, true, 300, 0, false, "101.6x152.4mm"},  // a PDF page of 4 x 6 inches
      {96, 56, false, 203, 0, true, "7x12mm"},
      {400, 200, false, 300, 100, false, "101.6x50.8mm"},
      {1, 1, false, 1200, 0, false, "0.1x0.1mm"},
      {40000, 1, false, 300, 0, false, ""},  // longer than any paper
  };
  for (const Row& row : rows) {
    PageImage page;
    ShapePage(page, row.width, row.height, "page");
    page.roundedUp = row.roundedUp;
    StateResolution(page, row.statedDpi, row.statedDpi);
    const std::optional<PaperSize> paper = PaperFor(page, row.dpi, row.landscape);
    EXPECT_EQ(paper ? FormatPaperSize(*paper) : "", row.paper);
  }
}

}  // namespace
