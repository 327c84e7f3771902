#include <gtest/gtest.h>

#include "tests/support/png_image.h"
#include "viewer/drawing/job_view.h"
#include "viewer/reports/diff.h"
#include "viewer/reports/explain.h"
#include "viewer/reports/lint.h"

namespace {

using namespace std::string_literals;

// A 1-bit PNG file of rows like "#..#", # a dot; written by libpng, not by the code under test.
std::string PngOf(const std::vector<std::string>& rows) {
  std::string grey;
  for (const std::string& row : rows) {
    for (const char c : row) grey += c == '#' ? '\0' : '\xFF';
  }
  return EncodePng(PNG_FORMAT_GRAY, grey, rows.front().size());
}

std::string Download(const std::string& name, const std::string& png) {
  return "dPNG;" + name + "\r\n\x1B:" + png + "\033end-of-data\r\n";
}

// An image of one dot that claims another width and height.
std::string Claim(const std::string& widthAndHeight) {
  return Download("0", PngOf({"#"}).replace(16, 8, widthAndHeight));
}

// At 25.4 dpi a millimetre is a dot.
constexpr double kDotAMm = 25.4;

std::string PageSetUp(const std::string& size, const std::string& options = "") {
  return "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\n" + options + "Sl0;0.00,0.00," + size + "\r\n";
}

const std::string kArrow = PngOf({"###", "#.."});
const std::string kHeader = ";Print job name: test\r\neIMG;*\r\n";

std::vector<viewer::DrawnLabel> Labels(const std::string& job) {
  viewer::JobView view(job, kDotAMm);
  std::vector<viewer::DrawnLabel> labels;
  while (std::optional<viewer::DrawnLabel> label = view.Next()) labels.push_back(*label);
  return labels;
}

// On some printers the second colour is set apart: half of 8.06 mm is 4.03 mm.
TEST(LabelDrawing, RightHalfOfAWiderHeadLiesOverTheLeft) {
  const auto labels = Labels(kHeader + Download("0", PngOf({"#"})) + Download("1", PngOf({"###"})) +
                             PageSetUp("2.00,3.00,8.06", "O H0.00\r\n") +
                             "I:Image0;8.06,1.00,180;0\r\nI:Image1;3.00,1.00,180;1\r\nA1\r\n");
  const viewer::LabelPicture& picture = *labels.at(0).picture;
  EXPECT_EQ(picture.black.width, 4u);
  EXPECT_TRUE(picture.black.At(0, 0) && picture.black.At(2, 0) && picture.highlight.At(3, 0));
}

TEST(JobReading, CutsFollowCountAndEnd) {
  std::string job;
  for (const char* page : {"C2,0.00,0.00\r\nA1\r\n", "C2,0.00,0.00\r\nA4\r\n", "A1\r\n",
                           "C9998,0.00,0.00\r\nA7\r\n", "Ce,2.00,1.50\r\nA3\r\n"}) {
    job += PageSetUp("5.00,5.00,5.00") + page;
  }
  std::string cuts;
  for (const auto& drawn : Labels(job)) {
    cuts += std::to_string(drawn.label.cuts) + (drawn.label.cutAtEnd ? "| " : " ");
  }
  EXPECT_EQ(cuts, "0 2 1| 0 1| ");
}

// The printer keeps one image 0: what a label of one colour downloads replaces the highlight.
TEST(Lint, FindsAFieldWhoseImageWasOverwritten) {
  const std::string black = Download("1", kArrow), red = Download("0", kArrow);
  const std::string two = PageSetUp("4.00,5.00,10.00", "O H0.00\r\n");
  const std::string both = "I:Image0;5.00,0.00,0;0\r\nI:Image1;0.00,0.00,0;1\r\nA1\r\n";
  const std::string one = PageSetUp("4.00,5.00,5.00") + "I:Image0;0.00,0.00,0;0\r\nA1\r\n";
  const std::string first = kHeader + red + black + two + both;
  // The line of the only fault; 0 if there is none.
  const std::pair<std::string, std::size_t> rows[] = {
      {first + red + one + two + both, 31},
      {first + red + one + red + two + both, 0},   // sent again
      {first + red + two + both + two + both, 0},  // a newer highlight, twice
      {first + red + one + two + "I:Image1;0.00,0.00,0;1\r\nA1\r\n", 0},  // without highlight
      {first + one + one, 0},
  };
  for (const auto& [job, line] : rows) {
    const viewer::LintResult result = viewer::LintJob(job, kDotAMm);
    ASSERT_EQ(result.count, line != 0 ? 1u : 0u) << job;
    if (line == 0) continue;
    EXPECT_EQ(result.faults[0].place.line, line) << result.faults[0].text;
    EXPECT_NE(result.faults[0].text.find("image 0 again"), std::string::npos);
    EXPECT_NE(result.faults[0].text.find("download of line 17:"), std::string::npos);
  }
}

TEST(Lint, SaysWhatAPrinterWouldStumbleOver) {
  const std::string image = Download("0", kArrow);
  const std::string place = "I:Image0;0.00,0.00,0;0\r\n";
  const std::string size = PageSetUp("4.00,5.00,5.00");
  const std::string head = kHeader + image + size;
  const std::string good = head + place + "A1\r\n";
  // The line and the words of the only fault; null if there is none.
  const std::tuple<std::string, std::size_t, const char*> rows[] = {
      {good, 0, nullptr},
      {good + "\x1B!whatever of the user's own\r\n", 0, nullptr},
      {kHeader + size + place + "A1\r\n", 8, "not downloaded"},
      {head + "A1\r\n", 4, "never placed"},
      {kHeader + image + image + size + place + "A1\r\n", 4, "never placed"},
      {head + "I:Image0;3.00,0.00,0;0\r\nA1\r\n", 10, "1 dots"},
      {head + "I:Image0;0.00,2.00,180;0\r\nA1\r\n", 10, "left edge"},
      {head + "I:Image0;0.00,0.00,45;0\r\nA1\r\n", 10, "angle"},
      {head + "I:Image0;0.00,0\r\n" + place + "A1\r\n", 10, "I:FIELD;X,Y"},
      {head + "R Image0;0\r\n" + place + "A1\r\n", 10, "no earlier label"},
      {head + place + "A1\n", 11, "LF alone"},
      {head + place + "A1\r", 11, "CR alone"},
      {head + place + "A1", 11, "not ended"},
      {head + place + "A0\r\n", 11, "copies"},
      {head + place + "A1000000\r\n", 11, "copies"},
      {head + "O H1\r\n" + place + "A1\r\n" + "dPNG;0\r\n", 13, "ends before"},
      {head + place + "A1\r\ndPNG;1\r\nJ\r\n", 13, "no data"},
      {good + "\x1B:xx\033end-of-data\r\n", 12, "follows no download"},
      {good + place, 12, "last label"},
      {good + place + "J\r\n", 13, "before the images"},
      {kHeader + image + place + "A1\r\n", 6, "without a size"},
      {kHeader + image + PageSetUp("4.00,3.00,5.00") + place + "A1\r\n", 9, "pitch"},
      {kHeader + image + "H9999,5,T,R0\r\n" + size.substr(15) + place + "A1\r\n", 5, "speed"},
      {kHeader + Download("0", "no PNG") + size + place + "A1\r\n", 4, "not a PNG file"},
      {kHeader + Claim("\0\1\x86\xA0\0\0\7\xD1"s) + size + place + "A1\r\n", 4, "dots a side"},
      {kHeader + Claim("\0\1\x86\xA1\0\0\0\1"s) + size + place + "A1\r\n", 4, "dots a side"},
      {kHeader + Download("0", kArrow.substr(0, kArrow.size() - 20)) + size + place + "A1\r\n", 4,
       "cannot be read"},
      {";\r\n", 1, "no label"},
      {good + ";" + std::string(512 - good.size() % 512 - 3, 'x') + "\r\n", 12, "multiple of 512"},
      {kHeader + image + Download("1", kArrow) + PageSetUp("4.00,5.00,10.00", "O H0.00\r\n") +
           "I:Image0;6.00,0.00,0;0\r\nI:Image1;0.00,0.00,0;1\r\nA1\r\n",
       13, "1 mm right of the black"},
  };
  for (const auto& [job, line, text] : rows) {
    const viewer::LintResult result = viewer::LintJob(job, kDotAMm);
    ASSERT_EQ(result.faults.size(), text != nullptr ? 1u : 0u) << job;
    if (text == nullptr) continue;
    EXPECT_NE(result.faults[0].text.find(text), std::string::npos) << result.faults[0].text;
    EXPECT_EQ(result.faults[0].place.line, line) << result.faults[0].text;
  }
  const viewer::LintResult cut = viewer::LintJob((kHeader + image).substr(0, 60), kDotAMm);
  ASSERT_FALSE(cut.faults.empty());
  EXPECT_NE(cut.faults.front().text.find("ends inside a data block"), std::string::npos);
  EXPECT_EQ(cut.faults.front().place.offset, 60u);
}

// The fuzz target covers malformed jobs; these are large or claim to be. A reader without bounds
// would run into the test's time limit.
TEST(JobReading, HostileStreamsEnd) {
  std::string manyFields, manyDownloads;
  for (int i = 0; i < 30000; ++i) {
    manyFields += "I:F" + std::to_string(i) + ";0.00,0.00,0;0\r\n";
    manyDownloads += Download(std::to_string(i), kArrow);
  }
  const std::string image = Download("0", kArrow), size = PageSetUp("4.00,5.00,5.00");
  const std::string place = "I:Image0;0.00,0.00,0;0\r\nA1\r\n";
  const std::string jobs[] = {
      std::string(1 << 20, '\n'),
      Claim("\0\1\x86\xA0\0\0\7\xD0"s) + size + place,
      image + PageSetUp("10000000.00,10000000.00,5000000.00") + place,
      image + size + "I:F;" + std::string(400, '9') + ",-99999999999,180;0\r\nA9999999999999\r\n",
      "S" + std::string(100000, 'l') + ";\r\nSl0;" + std::string(5000, '1') + ",1,1,1,1\r\nA1\r\n",
      image + size + manyFields + "A1\r\n",
      manyDownloads,
      "O " + std::string(1 << 16, ','),
  };
  for (const std::string& job : jobs) {
    for (const viewer::DrawnLabel& drawn : Labels(job)) {
      EXPECT_TRUE(drawn.picture || !drawn.why.empty());
    }
    EXPECT_GT(viewer::LintJob(job, 0).count, 0u) << job.substr(0, 80);
    viewer::ExplainJob(job, [](const viewer::Explanation& it) { EXPECT_FALSE(it.words.empty()); });
  }
}

TEST(Resolution, IsGuessedFromPagesThatFillTheLabel) {
  const std::pair<std::string, double> rows[] = {
      {PngOf(std::vector<std::string>(79, std::string(159, '#'))), 203},
      {PngOf(std::vector<std::string>(9, std::string(236, '#'))), 300},  // cropped
      {PngOf(std::vector<std::string>(98, std::string(197, '#'))), 250},
      {PngOf(std::vector<std::string>(9, std::string(50, '#'))), 0},
  };
  for (const auto& [png, dpi] : rows) {
    const std::string job = kHeader + Download("0", png) + PageSetUp("10.00,13.00,20.00") +
                            "I:Image0;0.00,0.00,0;0\r\nA1\r\n";
    EXPECT_EQ(viewer::GuessDpi(job).value_or(0), dpi);
  }
}

TEST(Explain, SaysEachLineInUnits) {
  const std::string job =
      kHeader + Download("1", kArrow) + "O H0.25,A1='START signal',EXY\r\n" +
      "Sl0;0.00,-1.50,50.00,53.00,200.00Q\r\nC9998,2.00,1.50\r\n!x\x01\r\nA3\r\n";
  std::vector<viewer::Explanation> lines;
  viewer::ExplainJob(job, [&](const viewer::Explanation& it) { lines.push_back(it); });
  const char* const words[] = {
      "comment",
      "erases the images",
      "name 1",
      "image 1: 3 x 2 dots",
      "option H 0.25 mm, option A1 'START signal', option E, then \"XY\" passed",
      "offset y -1.5 mm, length 50 mm, pitch 53 mm, width 200 mm (two colours of 100 mm side by "
      "side), then \"Q\" passed",
      "first value 2 mm",
      "passed to the printer unchanged",
      "copies 3"};
  ASSERT_EQ(lines.size(), std::size(words));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_NE(lines[i].words.find(words[i]), std::string::npos) << lines[i].words;
    EXPECT_EQ(lines[i].place.line, i + 1);
  }
  EXPECT_EQ(lines[7].text, "!x\\x01");
}

TEST(Diff, ComparesPrintNotBytes) {
  const auto job = [](const std::vector<std::string>& rows, const std::string& place,
                      const std::string& print) {
    return kHeader + Download("0", PngOf(rows)) + PageSetUp("4.00,5.00,5.00") + "I:Image0;" +
           place + ";0\r\n" + print;
  };
  const std::string a = job({"###", "#.."}, "1.00,1.00,0", "A1\r\n");
  const std::tuple<std::string, std::uint64_t, const char*> rows[] = {
      {job({".....", ".###.", ".#..."}, "0.00,0.00,0", "A1\r\n"), 0, nullptr},
      {job({"..#", "###"}, "4.00,3.00,180", "A1\r\n"), 0, nullptr},
      {job({"###", "##."}, "1.00,1.00,0", "A1\r\n"), 1, "from 2, 2 to 3, 3 mm"},
      {job({"###", "#.."}, "2.00,1.00,0", "A1\r\n"), 4, "from 1, 1 to 5, 3 mm"},
      {job({"###", "#.."}, "1.00,1.00,0", "A2\r\n"), 0, "copies: 1 and 2"},
      {job({"###", "#.."}, "1.00,1.00,0", "A1\r\nA1\r\n"), 0, "only the second"},
  };
  for (const auto& [b, dots, text] : rows) {
    std::vector<viewer::LabelDiff> diffs;
    const viewer::JobDiff result =
        viewer::DiffJobs(a, b, kDotAMm, [&](const viewer::LabelDiff& d) { diffs.push_back(d); });
    ASSERT_EQ(result.different, text != nullptr ? 1u : 0u);
    if (text == nullptr) continue;
    EXPECT_NE(diffs[0].texts.at(0).find(text), std::string::npos) << diffs[0].texts[0];
    EXPECT_EQ(diffs[0].dots, dots);
    EXPECT_EQ(diffs[0].png.empty(), dots == 0);
  }
}

}  // namespace
