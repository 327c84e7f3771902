#include <gtest/gtest.h>

#include "host/error.h"
#include "host/pages/page_files.h"
#include "host/pages/page_raster.h"
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

TEST(PageFiles, RefusesWhatIsNoWholePage) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "is empty"},
      {" \n", "is not in a format"},
      {"GIF89a", "convert it to one of PNG, PBM, PGM, PPM, PDF"},
      {"P7 1 1 255\n", "convert it to one of PNG, PBM, PGM, PPM, PDF"},
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
  for (int dot = 0; dot < 18 * 15; ++dot) {
    const int x = dot % 18, y = dot / 18, surfaceX = x - 3, surfaceY = y - 1;
    PageImage page, surface;
    ShapePage(page, 18, 15, "page");
    std::fill(page.pixels.begin(), page.pixels.end(), 0xFF);
    page.Row(y)[3 * x] = 7;
    const bool onSurface = surfaceX >= 0 && surfaceY >= 0 && surfaceX < 9 && surfaceY < 12;
    EXPECT_EQ(LosesContent(page, device), !(onSurface && x < 9 && y < 12)) << x << " " << y;
    RasterPage(page, device, surface);
    ASSERT_EQ(std::count(surface.pixels.begin(), surface.pixels.end(), 7), onSurface);
    EXPECT_TRUE(!onSurface || surface.Row(surfaceY)[3 * surfaceX] == 7) << x << " " << y;
  }
}

}  // namespace
