// Codes that cannot be relied on to scan. The patterns are a bar code maker's.

#include "viewer/codes/codes.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using viewer::BitImage;
using viewer::CodeFault;

constexpr double kDpi = 300;
// Widths of bars and spaces.
constexpr const char* kBars = "2112143111231321313311211221322212312232113311212331112";
const std::vector<std::string> kFinderCode = {
    "#######.#.....#######", "#.....#...#...#.....#", "#.###.#.###.#.#.###.#",
    "#.###.#..##.#.#.###.#", "#.###.#.###.#.#.###.#", "#.....#...##..#.....#",
    "#######.#.#.#.#######", "........##...........", ".....##..###..#.#.#.#",
    "###.#......#..###...#", "#.##.###.....#.#..#.#", "###....##.##...#.##..",
    "###.###.##.#.#######.", "........#..##.#...##.", "#######....#.##.#.###",
    "#.....#.#.#.#.....###", "#.###.#..##.##..#.#..", "#.###.#..##.##.#.#...",
    "#.###.#...###..###.##", "#.....#..##...##.#..#", "#######....#.#.#..#.."};
const std::vector<std::string> kEdgeCode = {
    "#.#.#.#.#.#.#.#.", "#.#..#.....#...#", "#..##..#..#.##..", "####...#....####",
    "#.#..##.#..###..", "#..###..##..#.##", "#...#...#.#...#.", "#......#....##.#",
    "#.####...#.#.#..", "#.....#.##.##.##", "##...##..##.#...", "#..###..####.#.#",
    "#.#..######..##.", "#.#.....######.#", "##...#..#.#.#.#.", "################"};

std::vector<std::string> Bars(const std::string& widths, int rows) {
  std::string row;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    row += std::string(widths[i] - '0', i % 2 == 0 ? '#' : '.');
  }
  return std::vector<std::string>(rows, row);
}

// The symbol with dots of so many modules, 20 dots from the corner. noise: one dot of so many at
// random is the other colour, 0 for none.
BitImage Draw(const std::vector<std::string>& symbol, int module, int noise = 0) {
  std::mt19937 random(7);
  const auto height = static_cast<int>(symbol.size()) * module;
  const auto width = static_cast<int>(symbol[0].size()) * module;
  BitImage image(width + 40, height + 40);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool wrong = noise > 0 && random() % noise == 0;
      if ((symbol[y / module][x / module] == '#') != wrong) image.Set(20 + x, 20 + y);
    }
  }
  return image;
}

// "greys" or "dot" for each fault.
std::string Faults(const BitImage& image) {
  std::string words;
  for (const CodeFault& fault : viewer::FindCodes(image, kDpi).faults) {
    words += fault.kind == CodeFault::Kind::Greys ? "greys " : "dot ";
  }
  return words;
}

TEST(CodeFaults, AreFoundInEveryTurn) {
  const std::tuple<const char*, std::vector<std::string>, int> codes[] = {
      {"bars", Bars(kBars, 120), 1}, {"finders", kFinderCode, 0}, {"edges", kEdgeCode, 0}};
  for (const auto& [name, symbol, isBars] : codes) {
    // Of the bars, only as many rows as make them 10 mm high.
    const auto drawn = [&, &symbol = symbol, isBars = isBars](int module, int noise) {
      const auto rows = isBars ? symbol.begin() + 120 / module : symbol.end();
      return Draw({symbol.begin(), rows}, module, noise);
    };
    const viewer::Codes good = viewer::FindCodes(Turn(drawn(2, 0), 90), kDpi);
    EXPECT_EQ(good.bars.size(), isBars ? 1u : 0u) << name;
    EXPECT_EQ(good.squares.size(), isBars ? 0u : 1u) << name;
    for (const int degrees : {0, 90, 180, 270}) {
      EXPECT_EQ(Faults(Turn(drawn(2, 0), degrees)), "") << name << degrees;
      EXPECT_EQ(Faults(Turn(drawn(4, 0), degrees)), "") << name << degrees;
      EXPECT_EQ(Faults(Turn(drawn(1, 0), degrees)), "dot ") << name << degrees;
      EXPECT_EQ(Faults(Turn(drawn(3, 12), degrees)), "greys ") << name << degrees;
    }
  }
}

TEST(CodeFaults, AreSaidWithPlaceAndRemedy) {
  const auto faults = viewer::FindCodes(Draw(kFinderCode, 1), kDpi).faults;
  ASSERT_EQ(faults.size(), 1u);
  EXPECT_EQ(viewer::CodeFaultText(faults[0], kDpi),
            "The square code at 1.69, 1.69 mm (1.78 x 1.78 mm) has modules of 1 dot, too fine to "
            "print reliably: draw it with modules of 2 or more whole dots");
  const BitImage bars = Turn(Draw(Bars(kBars, 120), 1), 90);
  const auto turned = viewer::FindCodes(bars, kDpi).faults;
  ASSERT_EQ(turned.size(), 1u);
  const viewer::DotBox dots = FindDots(bars), box = turned[0].box;
  EXPECT_TRUE(box.top == dots.top && box.bottom == dots.bottom);
  EXPECT_NEAR(box.left, dots.left, 12);  // in steps of a millimetre
  EXPECT_NEAR(box.right, dots.right, 12);
}

TEST(CodeFaults, NothingElseIsBlamed) {
  std::mt19937 random(3);
  BitImage ruler(600, 300), tint(600, 300), ramp(600, 300), lines(600, 300), noise(300, 300);
  for (unsigned y = 10; y < 290; ++y) {
    for (unsigned x = 10; x < 590; ++x) {
      if (x % 10 == 0) ruler.Set(x, y);
      if (random() % 2 == 0) tint.Set(x, y);
      if (random() % 600 < x) ramp.Set(x, y);
      if (y % 40 < 20 && x % 17 % 5 % 3 == 0) lines.Set(x, y);  // as high as letters
      if (x < 290 && random() % 3 == 0) noise.Set(x, y);        // a square picture
    }
  }
  for (const BitImage* image : {&ruler, &tint, &ramp, &lines, &noise}) {
    EXPECT_EQ(Faults(*image), "");
    EXPECT_EQ(Faults(Turn(*image, 90)), "");
  }
  EXPECT_EQ(Faults(BitImage(1, 1)) + Faults(BitImage(0, 0)), "");
}

}  // namespace
