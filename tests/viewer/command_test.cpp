// The viewer's commands as a script meets them: outcome, exit code and message.

#include "tests/host/vlx_process.h"

namespace {

class ViewerCommand : public VlxProcess {
 protected:
  void SetUp() override {
    VlxProcess::SetUp();
    ASSERT_EQ(Run("{}page.pgm -o {}a.job" + paper), 0) << Read("err.txt");
    std::string hostile = "J\r\nSl0;0.00,0.00,800.00,803.00,800.00\r\n";
    for (int i = 0; i < 1000; ++i) hostile += "A1\r\n";
    home.WriteFile("hostile.job", hostile);
    home.WriteFile("text.txt", "; a list\nMilk\nPaper\n");
    home.WriteFile("picture.png", "\x89PNG\r\n\x1A\n");
    home.WriteFile("scan.pgm", "P5\n100 100\n255\n");
    home.WriteFile("page.pdf", "%PDF-1.4\n");
    home.WriteFile("empty", "");
  }
};

TEST_F(ViewerCommand, SaysWhatWentWrong) {
  const std::tuple<const char*, int, const char*> rows[] = {
      {"explain {}picture.png", 3, "it is a PNG picture; make a job of it with vlx print"},
      {"view {}page.pdf", 3, "it is a PDF document"},
      {"lint {}scan.pgm", 3, "it is a PNM picture"},
      {"diff {}a.job {}text.txt", 3, "text.txt is not a job: it is text"},
      {"diff {}empty {}a.job", 3, "it is empty"},
      {"view {}hostile.job -o {}hostile --limit 1", 3, "the limit is 1 second"},
      {"view {}a.job --json >/dev/full", 5, "Standard output cannot be written: No space"},
      {"explain {}a.job >/dev/full", 5, "No space"},
      {"lint {}a.job >/dev/full", 5, "No space"},
      {"--help >/dev/full", 5, "No space"},
      {"explain {}a.job", 0, ""},
      {"lint {}a.job", 0, ""},
  };
  for (const auto& [command, code, words] : rows) {
    // In a shell of its own, so that a command can send its output elsewhere.
    const std::string script = std::string("sh -c '" VLX_PATH " ") + command + "'";
    EXPECT_EQ(RunProgram(script), code) << command << Read("err.txt");
    EXPECT_NE(Read("err.txt").find(words), std::string::npos) << command << Read("err.txt");
  }
}

TEST_F(ViewerCommand, ViewNamesTheFolderItWroteTo) {
  ASSERT_EQ(RunProgram("sh -c 'cd {} && " VLX_PATH " view a.job --dpi 203'"), 0);
  EXPECT_NE(Read("out.txt").find("a/a-0001.png: "), std::string::npos) << Read("out.txt");
  EXPECT_EQ(DecodePng(Read("a/a-0001.png")).width, 96u);
}

}  // namespace
