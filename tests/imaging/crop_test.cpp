// Images without their white borders, and where they are placed.

#include "tests/imaging/pages.h"

namespace {

TEST_F(Pages, CropKeepsContentAndMovesTheImage) {
  const struct {
    std::string fields;
    Picture picture;
    unsigned width, height;
    int dot;  // the only black one, counted row by row
    std::string place;
  } rows[] = {{"dwRotation=0", DotAt30And40, 90, 1, 30, "100.00,45.00,180"},  // 40 rows: 5.00 mm
              {"dwRotation=1", DotAt30And40, 1, 200, 40, "0.00,96.25,90"},    // 30 columns: 3.75 mm
              {"dwRotation=3", DotAt30And40, 1, 200, 40, "50.00,3.75,270"},
              {"dwRotation=5", DotAt30And40, 90, 1, 30, "50.00,95.00,270"},
              {"dwRotation=0", Paper, 90, 1, -1, "100.00,50.00,180"},
              {"dwRotation=1", Paper, 1, 200, -1, "0.00,100.00,90"}};
  driver.publicDevmode.dmPaperWidth = 1000;
  driver.publicDevmode.dmPaperLength = 500;
  const auto placed = [this] { return driver.writes[driver.writes.size() - 3]; };
  for (const auto& row : rows) {
    Set("bCropToContent=1 " + row.fields);
    Print(90, 200, row.picture);
    std::vector<unsigned char> dots(row.width * row.height, 255);
    if (row.dot >= 0) dots[row.dot] = 0;
    EXPECT_EQ(Image().width, row.width);
    EXPECT_EQ(Image().grey, dots) << row.fields;
    EXPECT_TRUE(placed().ends_with("\r\nI:Image0;" + row.place + ";0")) << placed();
  }
  Set("bCropToContent=0 dwRotation=0");
  Print(90, 200, DotAt30And40);
  EXPECT_EQ(Image().height, 200u);
  EXPECT_TRUE(placed().ends_with("\r\nI:Image0;100.00,50.00,180;0")) << placed();
  Set("bCropToContent=1 dwRotation=2");
  for (const auto& [dpi, place] : {std::pair(0, "1016.00"), {1, "1016.00"}, {2, "508.00"}}) {
    driver.publicDevmode.dmYResolution = static_cast<SHORT>(dpi);
    Print(90, 200, DotAt30And40);
    EXPECT_TRUE(placed().ends_with("\r\nI:Image0;0.00," + std::string(place) + ",0;0")) << dpi;
  }
}

TEST_F(Pages, CropByColumnsKeepsEveryBit) {
  for (const auto& [first, last] :
       {std::pair(3, 60), {5, 13}, {5, 11}, {8, 39}, {8, 23}, {9, 40}, {9, 61}, {33, 63}, {1, 8}}) {
    static LONG from, to;
    from = first;
    to = last;
    Set("bCropToContent=1 dwRotation=1");
    Print(64, 7, [](LONG x, LONG y) {
      return x >= from && x <= to ? Speckles(x - from, y) & Speckles(to - x, y) : 0xFFFFFF;
    });
    const PngImage cropped = Image();
    ASSERT_EQ(cropped.width, static_cast<unsigned>(last - first + 1)) << first;
    for (LONG y = 0; y < 7; ++y) {
      for (LONG x = 0; x <= last - first; ++x) {
        EXPECT_EQ(cropped.At(x, y), driver.paint(first + x, y) & 0xFF) << first << ": " << x;
      }
    }
  }
}

TEST_F(Pages, ImageThatCannotBeCroppedIsSentWhole) {
  Set("bCropToContent=1 dwRotation=0");
  FailCall("GdipCreateBitmapFromScan0", 4);
  Print(90, 200, DotAt30And40);
  EXPECT_EQ(Image().height, 200u);
}

// Two images can differ and yet be alike where they have content.
TEST_F(Pages, CroppedImagesAreComparedUncropped) {
  Set("dwColorMode=2 bCropToContent=1");
  static LONG down;
  down = 0;
  driver.paint = [](LONG x, LONG y) { return TwoBlocks(x, y - down); };
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_TRUE(driver.PrintPage('a'));
  down = 8;
  Take();
  for (const int downloads : {2, 2, 0}) {
    EXPECT_TRUE(downloads != 0 ? driver.PrintPage('a') : driver.EndDocument());
    const Events events = Take();
    EXPECT_EQ(std::count(events.begin(), events.end(), "<png 60x16 1-bit>"), downloads);
  }
  // Content in the first row is content.
  Print(60, 40, [](LONG x, LONG y) { return TwoBlocks(x, y + 8); });
  EXPECT_EQ(std::pair(Image("0").height, Image("1").height), std::pair(16u, 16u));
}

}  // namespace
