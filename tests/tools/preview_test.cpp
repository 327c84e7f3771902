#include "tests/host/vlx_process.h"

namespace {

class Preview : public VlxProcess {
 protected:
  // Whether the picture shows the page of the fixture from its top left corner on.
  void ExpectPage(const PngImage& picture, unsigned width, unsigned height) const {
    ASSERT_EQ(std::pair(picture.width, picture.height), std::pair(width, height));
    int wrong = 0;
    for (unsigned y = 0; y < 47; ++y) {
      for (unsigned x = 0; x < 81; ++x) {
        wrong += (picture.At(x, y) < 128) != (page[y * 81 + x] == '\0');
      }
    }
    EXPECT_EQ(wrong, 0);
  }
};

TEST_F(Preview, ShowsThePageAsItWasGiven) {
  ASSERT_EQ(RunVlx("preview {}page.pgm -o {}seen.png" + paper), 0) << Read("err.txt");
  ExpectPage(DecodePng(Read("seen.png")), 96, 56);
  ASSERT_EQ(RunVlx("preview {}page.pgm -o {}seen.png --paper 7x12mm --dpi 203 "
                   "--orientation landscape"),
            0);
  ExpectPage(DecodePng(Read("seen.png")), 96, 56);
}

TEST_F(Preview, SeveralPagesNeedAFolder) {
  EXPECT_EQ(RunVlx("preview {}page.pgm {}page.pgm -o {}seen.png" + paper), 2);
  EXPECT_FALSE(std::filesystem::exists(home.Path("seen.png")));
  ASSERT_EQ(RunVlx("preview {}page.pgm {}page.pgm -o {}new/folder" + paper), 0) << Read("err.txt");
  ExpectPage(DecodePng(Read("new/folder/page-0002.png")), 96, 56);
  EXPECT_EQ(RunVlx("preview {}page.pgm -o {}seen.png --set print.speed=0"), 4);
}

TEST_F(Preview, MistypedWordsAreAnsweredWithTheNearest) {
  const std::pair<const char*, const char*> rows[] = {
      {"prewiev", "vlx: there is no command \"prewiev\"; did you mean \"preview\"?"},
      {"settings shw", "vlx settings: there is no command \"shw\"; did you mean \"show\"?"},
      {"print {}page.pgm --orientatoin=portrait", "did you mean \"--orientation\"?"},
      {"stocks all", "vlx stocks: \"all\" is not expected"},
      {"print {}page.pgm --copies 0", "vlx print: --copies"},
  };
  for (const auto& [arguments, message] : rows) {
    EXPECT_EQ(RunVlx(arguments), 2) << arguments;
    EXPECT_NE(Read("err.txt").find(message), std::string::npos) << Read("err.txt");
  }
}

}  // namespace
