// Pages go through the real plug-in into a job, and the virtual printer has to give them back.

#include <cmath>
#include <random>

#include "tests/host/vlx_process.h"
#include "viewer/drawing/job_view.h"

namespace {

enum Ink : char { kWhite, kBlack, kRed };

struct Page {
  int width, height;
  std::vector<char> ink;
  char At(int x, int y) const {
    return x < 0 || y < 0 || x >= width || y >= height ? +kWhite : ink[y * width + x];
  }
};

// Bars, blocks and noise, away from the edges often enough for a crop to matter.
Page RandomPage(int width, int height, bool red, std::mt19937& random) {
  Page page = {width, height, std::vector<char>(width * height, kWhite)};
  const auto number = [&](int below) { return static_cast<int>(random() % std::max(below, 1)); };
  for (int i = 0; i < 12; ++i) {
    const int left = number(width), top = number(height);
    const int right = left + number(width / 4), bottom = top + number(height / 4);
    const char ink = red && number(2) == 0 ? kRed : kBlack;
    const bool noise = number(3) == 0;
    for (int y = top; y < std::min(bottom, height - height / 9); ++y) {
      for (int x = left; x < std::min(right, width - width / 7); ++x) {
        if (!noise || number(2) == 0) page.ink[y * width + x] = ink;
      }
    }
  }
  return page;
}

std::string Ppm(const Page& page) {
  const std::string colours[] = {"\xFF\xFF\xFF", std::string(3, '\0'), {"\xFF\0\0", 3}};
  std::string file =
      "P6 " + std::to_string(page.width) + " " + std::to_string(page.height) + " 255\n";
  for (const char ink : page.ink) file += colours[static_cast<int>(ink)];
  return file;
}

// A label format, in millimetres, and everything that changes where dots land.
struct Case {
  int dpi, rotation;
  bool landscape, crop, once, two;
  double widthMm, lengthMm, left, right, top, bottom, offsetX, offsetY;
  int copies;

  std::string Settings() const {
    std::ostringstream text;
    text << "paper = {size = \"" << widthMm << "x" << lengthMm << "mm\", dpi = " << dpi
         << ", orientation = \"" << (landscape ? "landscape" : "portrait")
         << "\", rotation = " << rotation * 90 << ", margin_left = \"" << left
         << "mm\", margin_right = \"" << right << "mm\", margin_top = \"" << top
         << "mm\", margin_bottom = \"" << bottom << "mm\", offset_x = \"" << offsetX
         << "mm\", offset_y = \"" << offsetY
         << "mm\"}\nprint = {crop = " << (crop ? "true" : "false")
         << ", setup_once = " << (once ? "true" : "false") << ", copies = " << copies
         << "}\ncolour = {mode = \"" << (two ? "two" : "one") << "\"}\n";
    return text.str();
  }
  bool BetweenDots(double mm) const {
    const double dots = mm * dpi / 25.4;
    return std::abs(dots - std::floor(dots) - 0.5) < 0.25;
  }
  int Dots(double mm) const { return static_cast<int>(std::lround(mm * dpi / 25.4)); }
};

using RoundTrip = VlxProcess;

// What a label shows, reckoned dot by dot from the page and the paper alone.
struct Expected {
  int width, length;
  std::vector<char> black = std::vector<char>(width * length), red = black;
};

Expected Expect(const Case& how, const Page& page) {
  const auto whole = [&](double mm) { return static_cast<int>(mm * how.dpi / 25.4 + 1e-6); };
  const bool turned = how.landscape, odd = how.rotation % 2 != 0;
  // A landscape page has the web's right margin on top and the web's top margin at the left.
  const int left = whole(turned ? how.top : how.left), top = whole(turned ? how.right : how.top);
  int width = page.width, height = page.height;  // as far as the head reaches
  if (how.left + how.right + how.top + how.bottom > 0) {
    const int across = whole(how.widthMm) - whole(how.left + how.right);
    const int along = whole(how.lengthMm) - whole(how.top + how.bottom);
    std::tie(width, height) = turned ? std::pair(along, across) : std::pair(across, along);
  }
  Expected label = {how.Dots((odd ? how.lengthMm : how.widthMm) - how.left - how.right),
                    how.Dots((odd ? how.widthMm : how.lengthMm) - how.top - how.bottom)};
  for (int y = top; y < height; ++y) {
    for (int x = left; x < width; ++x) {
      const char ink = page.At(x, y);
      if (ink == kWhite) continue;
      // Upright on the web; the highlight is placed one paper's width further, the half of the head
      // one label's width.
      const auto [u, v] = turned ? std::pair(height - 1 - y, x) : std::pair(x, y);
      const double shiftMm = ink == kRed ? how.left + how.right : 0;
      const std::pair<int, int> places[] = {
          {how.Dots(how.widthMm + shiftMm) - 1 - u, how.Dots(how.lengthMm) - 1 - v},
          {how.Dots(shiftMm) + v, how.Dots(how.widthMm) - 1 - u},
          {how.Dots(shiftMm) + u, v},
          {how.Dots(how.lengthMm + shiftMm) - 1 - v, u}};
      const int px = places[how.rotation].first + how.Dots(how.offsetX);
      const int py = places[how.rotation].second + how.Dots(how.offsetY);
      if (px < 0 || py < 0 || px >= label.width || py >= label.length) continue;
      (ink == kRed ? label.red : label.black)[py * label.width + px] = 1;
    }
  }
  return label;
}

int Differences(const viewer::BitImage& picture, const std::vector<char>& plane) {
  int count = 0;
  for (unsigned y = 0; y < picture.height; ++y) {
    for (unsigned x = 0; x < picture.width; ++x) {
      count += picture.At(x, y) != (plane[y * picture.width + x] != 0);
    }
  }
  return count;
}

TEST_F(RoundTrip, EveryPageComesOutInItsPlaceToTheDot) {
  std::mt19937 random(20);
  for (int i = 0; i < 64; ++i) {
    Case how = {};
    how.dpi = i % 3 == 0 ? 203 : i % 3 == 1 ? 300 : 600;
    how.rotation = i % 4;
    how.landscape = random() % 2, how.crop = random() % 2, how.once = random() % 2;
    how.two = random() % 2;
    // A recalled field stays where the first label had it, so what is cropped elsewhere moves.
    how.once = how.once && !how.crop;
    how.copies = 1 + random() % 3;
    // Two decimals of a millimetre cannot say a crop to the dot when the edge lies between two.
    do {
      how.widthMm = 16 + random() % 20, how.lengthMm = 12 + random() % 16;
    } while (how.BetweenDots(how.widthMm) || how.BetweenDots(how.lengthMm));
    if (random() % 3 == 0) how.left = 1.5, how.right = 1, how.top = 2, how.bottom = 0.5;
    if (random() % 3 == 0) how.offsetX = 1.5, how.offsetY = -0.75;
    const int width = how.Dots(how.widthMm), height = how.Dots(how.lengthMm);
    std::vector<Page> pages;
    for (int p = 0; p < 3; ++p) {
      pages.push_back(p == 1 && random() % 2
                          ? pages.back()
                          : RandomPage(how.landscape ? height : width,
                                       how.landscape ? width : height, how.two, random));
    }
    std::string stream;
    for (const Page& sheet : pages) stream += Ppm(sheet);
    home.WriteFile("pages.ppm", stream);
    home.WriteFile("settings.toml", how.Settings());
    ASSERT_EQ(Run("- --settings {}settings.toml -o {}job <{}pages.ppm"), 0)
        << how.Settings() << Read("err.txt");
    const std::string job = Read("job");
    viewer::JobView view(job, how.dpi);
    for (const Page& sheet : pages) {
      const std::optional<viewer::DrawnLabel> drawn = view.Next();
      ASSERT_TRUE(drawn && drawn->picture) << how.Settings();
      EXPECT_EQ(drawn->label.copies, how.copies);
      const Expected expected = Expect(how, sheet);
      ASSERT_EQ(int(drawn->picture->black.width), expected.width) << how.Settings();
      ASSERT_EQ(int(drawn->picture->black.height), expected.length) << how.Settings();
      EXPECT_EQ(Differences(drawn->picture->black, expected.black), 0) << i << how.Settings();
      EXPECT_EQ(Differences(drawn->picture->highlight, expected.red), 0) << i << how.Settings();
      if (how.landscape || how.offsetX != 0 || how.left != 0) continue;
      const viewer::LabelPicture upright = viewer::Turn(*drawn->picture, drawn->turn);
      std::vector<char> black(sheet.ink.size());
      for (std::size_t dot = 0; dot < black.size(); ++dot) black[dot] = sheet.ink[dot] == kBlack;
      ASSERT_EQ(int(upright.black.width), sheet.width);
      EXPECT_EQ(Differences(upright.black, black), 0) << i << how.Settings();
    }
    EXPECT_FALSE(view.Next());
    for (const viewer::Fault& fault : view.Reader().Faults()) ADD_FAILURE() << fault.text;
  }
}

}  // namespace
