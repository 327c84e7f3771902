#include <sys/resource.h>

#include "tests/host/vlx_process.h"

namespace {

class Pdf : public VlxProcess {
 protected:
  // A page of 12 x 7 mm, each with one black rectangle: x, y, width and height in points.
  static std::string Document(const std::vector<std::string>& rectangles) {
    std::string body, kids;
    for (std::size_t i = 0; i < rectangles.size(); ++i) {
      const std::string page = std::to_string(3 + 2 * i), content = std::to_string(4 + 2 * i);
      const std::string draw = rectangles[i] + " re f";
      kids += page + " 0 R ";
      body += page + " 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 40 30]/CropBox[0 0 34.0157 " +
              "19.8425]/Contents " + content + " 0 R>> endobj\n" + content + " 0 obj <</Length " +
              std::to_string(draw.size()) + ">> stream\n" + draw + "\nendstream endobj\n";
    }
    return "%PDF-1.4\n1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n2 0 obj <</Type/Pages/Count " +
           std::to_string(rectangles.size()) + "/Kids[" + kids + "]>> endobj\n" + body +
           "trailer <</Root 1 0 R>>\n%%EOF\n";
  }
  // Puts a program in place of pdftoppm that runs the script.
  void StandInFor(const std::string& script) {
    std::filesystem::create_directory(home.Path("bin"));
    home.WriteFile("bin/pdftoppm", "#!/bin/sh\n" + script);
    std::filesystem::permissions(home.Path("bin/pdftoppm"), std::filesystem::perms::owner_all);
    SetEnvironment("PATH=" + home.Path("bin") + ":$PATH");
  }
  std::string Error() const { return Read("err.txt"); }
};

TEST_F(Pdf, PagesAreDrawnAtTheDeviceResolution) {
  // In points from the bottom left; at 720 dpi a point is ten dots.
  home.WriteFile("a.pdf", Document({"1 2 10 5", "20 10 3 4"}));
  const std::string size = " --paper 12x7mm --dpi 720 ";
  ASSERT_EQ(Run("{}a.pdf -o {}a.job" + size), 0) << Error();
  const std::string job = Job("a.job");
  const PngImage first = ImageOf(job), second = ImageOf(job.substr(job.find("\r\nA1\r\n")));
  ASSERT_EQ(std::pair(first.width, first.height), std::pair(340u, 198u));
  int wrong = 0;
  for (unsigned i = 0; i < 340 * 198; ++i) {
    const double x = i % 340 + 0.5, up = 198.425 - i / 340 - 0.5;
    const auto compare = [&](const PngImage& drawn, double left, double low, double right,
                             double high) {
      const double inside = std::min({x - left, right - x, up - low, high - up});
      wrong +=
          std::abs(inside) > 1.5 && (drawn.grey[i] == 0) != (inside > 0);  // edges fall between
    };
    compare(first, 10, 20, 110, 70);
    compare(second, 200, 100, 230, 140);
  }
  EXPECT_EQ(wrong, 0);
  ASSERT_EQ(Run("{}a.pdf {}a.pdf -o {}b.job --pages 4,1 --name a.pdf" + size), 0) << Error();
  const std::string selected = Job("b.job");
  EXPECT_EQ(ImageOf(selected).grey, second.grey);
  EXPECT_EQ(ImageOf(selected.substr(selected.find("\r\nA1\r\n"))).grey, first.grey);
  EXPECT_EQ(Run("{}a.pdf -o {}d.job --pages 2-3" + size), 4);
  EXPECT_NE(Error().find("There is no page 3"), std::string::npos);
  // A pipe, which cannot seek, gives the same.
  const std::string piped =
      "cat " + home.Path("a.pdf") + " | '" VLX_PATH "' print - --name a.pdf -o ";
  ASSERT_EQ(std::system((piped + home.Path("c.job") + size + ">/dev/null").c_str()), 0);
  EXPECT_EQ(Job("c.job"), job);
}

TEST_F(Pdf, WhatCannotBeReadIsAnErrorThatSaysWhy) {
  home.WriteFile("cut.pdf", Document({"1 2 10 5"}).substr(0, 60));
  EXPECT_EQ(Run("{}cut.pdf -o {}a.job" + paper), 3);
  EXPECT_NE(Error().find("cut.pdf: pdftoppm cannot read this PDF file ("), std::string::npos);
  EXPECT_NE(Error().find("export it again"), std::string::npos);

  const std::pair<const char*, const char*> rows[] = {
      {"echo 'Command Line Error: Incorrect password' >&2; exit 1", "without a password"},
      {"cat \"$(dirname \"$0\")/../page.pgm\"; exit 99", "export it again"},
      {"cat \"$(dirname \"$0\")/../page.pgm\"; echo P5 9; kill -9 $$", "ended by signal 9"},
      {"exit 0", "holds no page"},
      {"printf 'P5 99999 99999 255\\n'; exec sleep 600", "too large"},
      {"printf 'P5 1 1 255\\n\\377'", "too large for pdftoppm"},
  };
  for (const auto& [script, message] : rows) {
    StandInFor(script);
    EXPECT_EQ(Run("{}cut.pdf -o {}a.job" + paper), 3) << script;
    EXPECT_NE(Error().find(message), std::string::npos) << script << ": " << Error();
    EXPECT_FALSE(std::filesystem::exists(home.Path("a.job")));
  }
  SetEnvironment("PATH=" + home.Path(""));
  for (const bool stdbuf : {false, true}) {
    if (stdbuf) std::filesystem::create_symlink("/usr/bin/stdbuf", home.Path("stdbuf"));
    EXPECT_EQ(Run("{}cut.pdf -o {}a.job" + paper), 3);
    EXPECT_NE(Error().find("install poppler-utils"), std::string::npos) << Error();
  }
}

TEST_F(Pdf, ManyPagesNeedTheMemoryOfOne) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer keeps what is freed";
#endif
  home.WriteFile("a.pdf", "%PDF");
  const auto peakKb = [&](int pages) {
    StandInFor("cd \"$(dirname \"$0\")/..\"; for i in $(seq " + std::to_string(pages) +
               "); do cat page.pgm; done");
    EXPECT_EQ(Run("{}a.pdf -o {}a.job" + paper), 0) << Error();
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
  };
  const long few = peakKb(2);
  EXPECT_LT(peakKb(1000), few + 2048) << "a page's surface is 16 KB";
}

}  // namespace
