// The filter as cupsd runs it, without a server: its job is that of `vlx print` with the same
// settings.

#include <cups/raster.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/host/vlx_process.h"

namespace {

class Filter : public VlxProcess {
 protected:
  Filter() {
    SetEnvironment("PPD=" PPD_FOLDER "/vlx-203.ppd");
    home.WriteFile("small.pgm", Grey(40, 20));
    home.WriteFile("fits.pgm", Grey(96, 56));
  }

  // A page of 12 x 7 mm at 203 dpi, or of another size, with a pattern.
  static std::string Grey(int width, int height) {
    return "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n" +
           Pattern(width, height);
  }
  static std::string Pattern(int width, int height) {
    std::string pixels;
    for (int i = 0; i < width * height; ++i) pixels += i * i / 7 % 3 == 0 ? '\0' : '\xFF';
    return pixels;
  }

  // One page of each size in points, with a black rectangle.
  static std::string Document(const std::vector<std::string>& sizes) {
    std::string body, kids;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      const std::string page = std::to_string(3 + 2 * i), content = std::to_string(4 + 2 * i);
      const std::string draw = std::to_string(2 + i) + " 2 6 5 re f";
      kids += page + " 0 R ";
      body += page + " 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 " + sizes[i] + "]/Contents " +
              content + " 0 R>> endobj\n" + content + " 0 obj <</Length " +
              std::to_string(draw.size()) + ">> stream\n" + draw + "\nendstream endobj\n";
    }
    return "%PDF-1.4\n1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n2 0 obj <</Type/Pages/Count " +
           std::to_string(sizes.size()) + "/Kids[" + kids + "]>> endobj\n" + body +
           "trailer <</Root 1 0 R>>\n%%EOF\n";
  }

  // The pattern as raster, by libcups's own writer; the page's size stays 0.
  void WriteRaster(const std::string& name, cups_mode_t mode, int dpi = 203, int rows = 56) {
    cups_page_header2_t header = {};
    header.HWResolution[0] = header.HWResolution[1] = static_cast<unsigned>(dpi);
    header.cupsWidth = header.cupsBytesPerLine = 96;
    header.cupsHeight = 56;
    header.cupsBitsPerColor = header.cupsBitsPerPixel = 8;
    header.cupsNumColors = 1;
    header.cupsColorSpace = CUPS_CSPACE_SW;
    const int file = open(home.Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    cups_raster_t* raster = cupsRasterOpen(file, mode);
    cupsRasterWriteHeader2(raster, &header);
    std::string pixels = Pattern(96, 56);
    for (int y = 0; y < rows; ++y) {
      cupsRasterWritePixels(raster, reinterpret_cast<unsigned char*>(&pixels[y * 96]), 96);
    }
    cupsRasterClose(raster);
    close(file);
  }

  // file: one of the folder; "<NAME" gives it as standard input.
  int RunFilter(const std::string& options, const std::string& file, int copies = 1) {
    const std::string input = file[0] == '<' ? "<{}" + file.substr(1) : "{}" + file;
    return RunProgram(FILTER_PATH " 7 somebody label " + std::to_string(copies) + " '" + options +
                      "' " + input);
  }
  // The jobs that the filter and `vlx print` make of the same input.
  void ExpectSame(const std::string& options, const std::string& file, const std::string& arguments,
                  int copies = 1) {
    SCOPED_TRACE(options + " " + file);
    ASSERT_EQ(RunFilter(options, file, copies), 0) << Read("err.txt");
    const std::string job = Job("out.txt");
    ASSERT_EQ(Run(arguments + " --name label --dpi 203 -o {}print.job"), 0) << Read("err.txt");
    EXPECT_GT(job.size(), 200u);
    EXPECT_EQ(job, Job("print.job"));
  }
  void ExpectRefused(const std::string& options, const std::string& file,
                     const std::string& message) {
    SCOPED_TRACE(options + " " + file);
    EXPECT_EQ(RunFilter(options, file), 1);
    EXPECT_EQ(Read("out.txt"), "");
    const std::string told = Read("err.txt");
    EXPECT_TRUE(told.starts_with("ERROR: ")) << told;
    EXPECT_NE(told.find(message), std::string::npos) << told;
    EXPECT_EQ(told.find("--"), std::string::npos) << "an option of the command: " << told;
  }

  const std::string size = "media=Custom.12x7mm ";
};

TEST_F(Filter, EveryDocumentGivesTheJobOfVlxPrint) {
  home.WriteFile("a.pdf", Document({"34.0157 19.8425", "34.0157 19.8425"}));
  WriteRaster("a.pwg", CUPS_RASTER_WRITE_PWG);
  WriteRaster("a.urf", CUPS_RASTER_WRITE_APPLE);
  WriteRaster("a.ras", CUPS_RASTER_WRITE);
  ASSERT_EQ(RunVlx("preview {}fits.pgm -o {}a.png" + paper), 0) << Read("err.txt");
  ExpectSame(size, "a.pdf", "{}a.pdf --paper 12x7mm");
  for (const char* same : {"fits.pgm", "a.pwg", "a.urf", "a.ras", "a.png"}) {
    ExpectSame(size, same, "{}fits.pgm --paper 12x7mm");
  }
  // A picture has no page size: it may be smaller than the label.
  ExpectSame(size, "small.pgm", "{}small.pgm --paper 12x7mm");
}

TEST_F(Filter, OptionsAreSettings) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},  // the queue's defaults are the driver's
      {"print.speed=150 print.darkness=5", "--set print.speed=150 --set print.darkness=5"},
      {"print.speed=Custom.120", "--set print.speed=120"},
      {"cut=every-3", "--set cut.enabled=true --set cut.mode=count --set cut.count=3"},
      {"cut=job-end", "--set cut.enabled=true --set cut.at_job_end=true"},
      {"finishings=60", "--set cut.enabled=true --set cut.mode=each-label"},
      {"ColorModel=RGB colour.highlight=#0000FF print-color-mode=monochrome",
       "--set colour.mode=two --set colour.highlight=#0000FF"},
      {"print-color-mode=color", "--set colour.mode=two"},
      {"colour.tolerance=40 paper.gap=Custom.2.2mm",
       "--set colour.tolerance=40 --set colour.mode=one --set paper.gap=2.2mm"},
      {"com.apple.print.Thing..n.=7 job-uuid=urn:uuid:1 number-up=1 finishings=3", ""},
      {"orientation-requested=6", "--set paper.rotation=180"},
  };
  for (const auto& [options, arguments] : rows) {
    ExpectSame(size + options, "fits.pgm", "{}fits.pgm --paper 12x7mm " + std::string(arguments));
  }
  ExpectSame("media=Custom.7x12mm landscape", "fits.pgm",
             "{}fits.pgm --paper 7x12mm --orientation landscape");
}

TEST_F(Filter, WhatAJobMayNotHaveIsRefused) {
  const std::pair<const char*, const char*> rows[] = {
      {"print.speed=5000",
       "print.speed is \"5000\", which this queue does not have; choose one of"},
      {"print.speed=Custom.5000", "\"print.speed\" is 5000"},
      {"cut=sometimes", "cut is \"sometimes\""},
      {"print.sped=100", "did you mean \"print.speed\""},
      {"blocks.0.kind=file", "A job may not set \"blocks.0.kind\""},
      {"blocks.0.text=Custom./etc/passwd", "A job may not set"},
      {"devmode.dwSpeed=50", "A job may not set"},
      {"preset=../secret", "There is no preset"},
      {"preset=missing", "There is no preset"},
      {"number-up=2", "number-up"},
      {"page-ranges=5", "there is no page to print"},
  };
  for (const auto& [options, message] : rows) ExpectRefused(size + options, "fits.pgm", message);
}

TEST_F(Filter, PresetOfTheAdministratorStandsBetweenQueueAndJob) {
  std::filesystem::create_directory(home.Path("presets"));
  home.WriteFile("presets/shelf.toml",
                 "[print]\nspeed = 50\ndarkness = 3\n[blocks.4]\nkind = 'plain'\ntext = 'mark'\n");
  ExpectSame(size + "preset=shelf print.speed=100", "fits.pgm",
             "{}fits.pgm --paper 12x7mm --settings {}presets/shelf.toml --set print.speed=100");
}

TEST_F(Filter, RoundedPaperTakesTheSizeOfThePage) {
  // 12 x 7 mm are 34.02 x 19.84 points.
  home.WriteFile("a.pdf", Document({"34.0157 19.8425"}));
  ExpectSame("PageSize=Custom.34x20", "a.pdf", "{}a.pdf --paper 12x7mm");
  ExpectSame("media=Custom.12x7mm PageSize=Custom.34x20", "a.pdf", "{}a.pdf --paper 12x7mm");
  ExpectSame("media=custom_12x7mm_12x7mm", "a.pdf", "{}a.pdf --paper 12x7mm");
  ExpectSame("media=Custom.1.2x0.7cm", "a.pdf", "{}a.pdf --paper 12x7mm");
}

TEST_F(Filter, PageWithinAPointIsCroppedOrPaddedAndNoOtherIs) {
  home.WriteFile("point.pgm", Grey(98, 58));
  ASSERT_EQ(RunFilter(size, "point.pgm"), 0) << Read("err.txt");
  const PngImage image = ImageOf(Job("out.txt"));
  EXPECT_EQ(std::pair(image.width, image.height), std::pair(96u, 56u));
  const std::string point = Pattern(98, 58);
  int wrong = 0;
  for (unsigned y = 0; y < 56; ++y) {
    for (unsigned x = 0; x < 96; ++x) wrong += (image.At(x, y) == 0) != (point[y * 98 + x] == '\0');
  }
  EXPECT_EQ(wrong, 0);
  home.WriteFile("a4.pdf", Document({"595.276 841.89"}));
  ExpectRefused("media=Custom.100x150mm", "a4.pdf", "is 210.1 x 297 mm, the label is 100 x 150");
  home.WriteFile("small.pdf", Document({"30 15"}));
  ExpectRefused(size, "small.pdf", "the label is 12");
  home.WriteFile("large.pgm", Grey(130, 56));
  ExpectRefused(size, "large.pgm", "the label is 12");
  // A landscape page is turned only on request.
  ExpectRefused("media=Custom.7x12mm", "fits.pgm", "the label is 7");
}

TEST_F(Filter, CopiesAndPageRanges) {
  home.WriteFile("a.pdf", Document({"34.0157 19.8425", "34.0157 19.8425", "34.0157 19.8425"}));
  ExpectSame(size, "a.pdf", "{}a.pdf --paper 12x7mm --copies 4", 4);
  ExpectSame(size + "page-ranges=1,3-", "fits.pgm", "{}fits.pgm --paper 12x7mm");
  // Collated: the document twice, from a file and from standard input, and without its second page.
  ASSERT_EQ(Run("{}a.pdf {}a.pdf --paper 12x7mm --dpi 203 --name label -o {}two.job"), 0);
  ASSERT_EQ(RunFilter(size + "collate=true", "a.pdf", 2), 0) << Read("err.txt");
  EXPECT_EQ(Job("out.txt"), Job("two.job"));
  ASSERT_EQ(RunFilter(size + "collate=true", "<a.pdf", 2), 0) << Read("err.txt");
  EXPECT_EQ(Job("out.txt"), Job("two.job"));
  ASSERT_EQ(RunFilter(size + "collate=true page-ranges=1,3", "a.pdf", 2), 0) << Read("err.txt");
  EXPECT_NE(Read("err.txt").find("PAGE: 4 1\n"), std::string::npos) << Read("err.txt");
  EXPECT_EQ(Read("err.txt").find("PAGE: 5"), std::string::npos);
}

TEST_F(Filter, BadPageInTheMiddleEndsTheJobWhole) {
  home.WriteFile("a.pdf", Document({"34.0157 19.8425", "34.0157 19.8425", "90 90"}));
  EXPECT_EQ(RunFilter(size, "a.pdf"), 1);
  EXPECT_NE(Read("err.txt").find("ERROR: Page 3 is 31.8 x 31.8 mm"), std::string::npos)
      << Read("err.txt");
  home.WriteFile("a.job", Read("out.txt"));
  EXPECT_EQ(RunVlx("lint {}a.job"), 0) << Read("out.txt");
  WriteRaster("cut.pwg", CUPS_RASTER_WRITE_PWG, 203, 30);
  ExpectRefused(size, "cut.pwg", "label: ends in the middle of page 1");
  WriteRaster("other.urf", CUPS_RASTER_WRITE_APPLE, 300);
  ExpectRefused(size, "other.urf", "made for 300 dpi, the printer has 203");
}

TEST_F(Filter, CostOfOneLabelIsToldBeforeTheJobIsSent) {
  ASSERT_EQ(RunFilter(size, "fits.pgm", 3), 0);
  EXPECT_EQ(Read("err.txt").find("PAGE: 1 3\nINFO: 3 labels, 0 cuts, "), 0u) << Read("err.txt");
  // A full disk behind the queue.
  EXPECT_EQ(
      RunProgram("sh -c '" FILTER_PATH " 7 somebody label 1 " + size + "{}fits.pgm >/dev/full'"),
      1);
  EXPECT_NE(Read("err.txt").find("ERROR: The job cannot be sent to the printer: No space left"),
            std::string::npos)
      << Read("err.txt");
}

// Bars of single dots, on a job of one label and on one whose first label is let go early.
TEST_F(Filter, CodesThatDoNotScanAreToldBeforeTheJobIsSent) {
  std::string code = "P5 400 240 255\n" + std::string(400 * 240, '\xFF');
  for (int y = 60; y < 180; ++y) {
    for (int x = 100, bar = 1; x < 300; bar = bar * 5 % 23) {
      std::fill_n(code.end() - 400 * (240 - y) + x, 1 + bar % 2, '\0');
      x += 2 + bar % 3;
    }
  }
  home.WriteFile("code.pgm", code);
  home.WriteFile("codes.pgm", code + code);
  for (const char* file : {"code.pgm", "codes.pgm"}) {
    ASSERT_EQ(RunFilter("media=Custom.50x30mm", file), 0);
    EXPECT_NE(Read("err.txt").find("WARNING: The bar code at "), std::string::npos)
        << Read("err.txt");
  }
}

// The filter reading from a pipe that stays open: what happens when cupsd cancels a job.
TEST_F(Filter, CancelledJobEndsAfterTheLabelInHand) {
  int document[2];
  ASSERT_EQ(pipe(document), 0);
  setenv("PPD", PPD_FOLDER "/vlx-203.ppd", 1);
  const pid_t filter = fork();
  if (filter == 0) {
    dup2(document[0], STDIN_FILENO);
    close(document[1]);
    dup2(open(home.Path("out.txt").c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    dup2(open(home.Path("err.txt").c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
    execl(FILTER_PATH, FILTER_PATH, "7", "somebody", "label", "1", size.c_str(), nullptr);
    _exit(127);
  }
  const std::string pages = Grey(96, 56) + Grey(96, 56) + Grey(96, 56).substr(0, 500);
  ASSERT_EQ(write(document[1], pages.data(), pages.size()), static_cast<ssize_t>(pages.size()));
  for (int i = 0; i < 1000 && Read("err.txt").find("PAGE: 2") == std::string::npos; ++i) {
    usleep(10000);
  }
  kill(filter, SIGTERM);
  int status = 0;
  waitpid(filter, &status, 0);
  close(document[0]);
  close(document[1]);
  unsetenv("PPD");
  EXPECT_EQ(status, 0) << Read("err.txt");
  home.WriteFile("cancelled.job", Read("out.txt"));
  ASSERT_EQ(RunVlx("lint {}cancelled.job"), 0) << Read("out.txt");
  home.WriteFile("two.pgm", Grey(96, 56) + Grey(96, 56));
  ASSERT_EQ(Run("{}two.pgm --paper 12x7mm --dpi 203 --name label -o {}two.job"), 0);
  EXPECT_EQ(Job("cancelled.job"), Job("two.job"));
}

}  // namespace
