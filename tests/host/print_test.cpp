#include <csignal>

#include "tests/host/vlx_process.h"

namespace {

class Print : public VlxProcess {
 protected:
  // Neither a job nor a part of one is left.
  void ExpectNoJob() const {
    for (const auto& entry : std::filesystem::directory_iterator(home.Path(""))) {
      EXPECT_EQ(entry.path().filename().string().find("job"), std::string::npos) << entry;
    }
  }
};

TEST_F(Print, PageArrivesDotForDotWhateverTheBands) {
  const std::string landscape = " --orientation landscape --paper 7x12mm --dpi 203 ";
  for (const std::string& options : {paper, landscape}) {
    const bool turned = options == landscape;  // clockwise
    ASSERT_EQ(Run("{}page.pgm -o {}a.job" + options), 0) << Read("err.txt");
    const std::string cost = Read("out.txt");
    EXPECT_EQ(cost.substr(cost.find(": ")),
              ": 1 label, 0 cuts, " + std::string(turned ? "15" : "10") + " mm of media, " +
                  std::to_string(Read("a.job").size()) + " bytes, 1 image\n");
    ASSERT_EQ(Run("- --name page.pgm -o - <{}page.pgm" + options), 0) << Read("err.txt");
    EXPECT_NE(Read("err.txt").find("standard output: 1 label"), std::string::npos);
    EXPECT_EQ(Job("out.txt"), Job("a.job"));
    for (const char* rows : {"1", "7", "1000"}) {
      EXPECT_EQ(Run("{}page.pgm -o {}b.job --band-rows " + (rows + options)), 0);
      EXPECT_EQ(Job("b.job"), Job("a.job")) << rows;
    }
    // The label comes out as the job has it; a preview is the page as it was given.
    const PngImage image = ImageOf(Job("a.job"));
    ASSERT_EQ(RunVlx("preview {}page.pgm -o {}seen.png" + options), 0) << Read("err.txt");
    ASSERT_EQ(RunVlx("view {}a.job -o {} --dpi 203"), 0) << Read("err.txt");
    const PngImage preview = DecodePng(Read("seen.png")), view = DecodePng(Read("a-0001.png"));
    int wrong = 0;
    for (unsigned y = 0; y < 56; ++y) {
      for (unsigned x = 0; x < 96; ++x) {
        const bool black = x < 81 && y < 47 && page[y * 81 + x] == '\0';
        for (const PngImage* label : {&image, &view}) {
          wrong += ((turned ? label->At(55 - y, x) : label->At(x, y)) == 0) != black;
        }
        wrong += (preview.At(x, y) < 128) != black;
      }
    }
    EXPECT_EQ(wrong, 0) << options;
  }
}

TEST_F(Print, PreviewOfSeveralPagesNeedsAFolder) {
  EXPECT_EQ(RunVlx("preview {}page.pgm {}page.pgm -o {}seen.png" + paper), 2);
  EXPECT_FALSE(std::filesystem::exists(home.Path("seen.png")));
  ASSERT_EQ(RunVlx("preview {}page.pgm {}page.pgm -o {}new/folder" + paper), 0) << Read("err.txt");
  EXPECT_EQ(DecodePng(Read("new/folder/page-0002.png")).width, 96u);
}

TEST_F(Print, MistypedWordsAreAnsweredWithTheNearest) {
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

TEST_F(Print, FailureHasItsCodeAndLeavesNothing) {
  home.WriteFile("cut.pgm", Read("page.pgm") + "P5 81");
  const std::pair<const char*, int> rows[] = {
      {"-o {}a.job", 2},
      {"{}page.pgm", 2},
      {"{}page.pgm -o {}a.job --dpi 5", 2},
      {"{}page.pgm -o {}a.job --to ftp://x", 2},
      {"{}missing.png -o {}a.job", 3},
      {"{}cut.pgm -o {}a.job --paper 12x7mm --dpi 203", 3},
      {"{}page.pgm -o {}a.job --paper 5x5mm", 4},
      {"{}page.pgm -o {}a.job --paper 12x7", 4},
      {"{}page.pgm -o {}a.job --devmode {}", 3},
      {"{}page.pgm -o {}a.job --devmode {}cut.pgm", 4},
      {"{}page.pgm -o {}a.job --settings {}", 3},
      {"{} -o {}a.job", 3},
      {"{}page.pgm -o {}a.job --paper 12x7mm --dpi 203 --set paper.margin_left=8mm "
       "--set paper.margin_right=8mm",
       4},
      {"{}page.pgm -o {}a.job --printer Nobody", 4},
      {"{}page.pgm -o {}a.job --set colour.threshold=9 --paper 12x7mm --dpi 203", 4},
      {"{}page.pgm -o {}a.job --set devmode.dwSensorType=9 --paper 12x7mm --dpi 203", 4},
      {"{}page.pgm -o {}nowhere/a.job --paper 12x7mm --dpi 203", 5},
  };
  for (const auto& [arguments, code] : rows) {
    EXPECT_EQ(Run(arguments), code) << arguments << ": " << Read("err.txt");
    ExpectNoJob();
  }
  EXPECT_EQ(Run("{}page.pgm -o - --paper 5x5mm"), 4);
  EXPECT_EQ(Read("out.txt"), "");
}

TEST_F(Print, InterruptedJobLeavesNothing) {
  // The job waits for more pages when the signal comes: the record is saved before the first one.
  const std::string command =
      "cd " + home.Path("") +
      "; mkfifo pages; exec 3<>pages; cat page.pgm >&3; '" VLX_PATH
      "' print - -o a.job --save-devmode saved" +
      paper +
      "<&3 & for i in $(seq 300); do [ -s saved ] && break; sleep 0.1; done; sleep 0.2; "
      "kill -TERM $!; wait $!";
  ASSERT_EQ(WEXITSTATUS(std::system(command.c_str())), 128 + SIGTERM);
  EXPECT_EQ(Read("saved").size(), 2708u);
  ExpectNoJob();
}

TEST_F(Print, LeftoverOfAKilledRunIsInNobodysWay) {
  const std::string job = home.Path("a.job");
  const std::string command = "echo old >" + job + ".$$.part; exec '" VLX_PATH "' print " +
                              home.Path("page.pgm") + " -o " + job + paper;
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_NE(Job("a.job").find("\r\nA1\r\n"), std::string::npos);
}

TEST_F(Print, PipesAndLinksStay) {
  const std::string pipe = home.Path("pipe");
  ASSERT_EQ(
      std::system(("mkfifo " + pipe + "; cat " + pipe + " >" + home.Path("got") + " &").c_str()),
      0);
  EXPECT_EQ(Run("{}page.pgm -o {}pipe" + paper), 0) << Read("err.txt");
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  ASSERT_EQ(Run("{}page.pgm -o {}a.job" + paper), 0);
  for (int i = 0; i < 500 && Job("got").size() < Job("a.job").size(); ++i) usleep(10000);
  EXPECT_EQ(Job("got"), Job("a.job"));
  std::filesystem::create_symlink(home.Path("a.job"), home.Path("link"));
  EXPECT_EQ(Run("{}page.pgm -o {}link --copies 5" + paper), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(home.Path("link")));
  EXPECT_NE(Job("a.job").find("\r\nA5\r\n"), std::string::npos);
  std::filesystem::create_symlink("new.job", home.Path("dangling"));
  EXPECT_EQ(Run("{}page.pgm -o {}dangling" + paper), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(home.Path("dangling")));
  EXPECT_NE(Job("new.job").find("\r\nA1\r\n"), std::string::npos);
}

}  // namespace
