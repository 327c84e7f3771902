// The queues' descriptions against the settings they stand for.

#include <gtest/gtest.h>

#include <set>

#include "printing/cups/queue_job.h"

namespace {

constexpr const char* kPpds[] = {PPD_FOLDER "/vlx-203.ppd", PPD_FOLDER "/vlx-300.ppd",
                                 PPD_FOLDER "/vlx-600.ppd"};

TEST(Ppd, EveryChoiceIsASettingThatTheQueueTakes) {
  // Options of the print system itself, whose names are not settings.
  const std::set<std::string> others = {"PageSize", "PageRegion", "ColorModel",
                                        "Collate",  "Resolution", "cut"};
  std::set<std::string> keys;
  for (const SettingKey& key : SettingKeys()) keys.emplace(key.name);
  for (const char* path : kPpds) {
    ppd_file_t* ppd = ppdOpenFile(path);
    ASSERT_NE(ppd, nullptr) << path;
    int choices = 0;
    for (ppd_option_t* option = ppdFirstOption(ppd); option; option = ppdNextOption(ppd)) {
      EXPECT_TRUE(keys.contains(option->keyword) || others.contains(option->keyword))
          << option->keyword;
      for (int i = 0; i < option->num_choices; ++i) {
        const std::string given = std::string(option->keyword) + "=" + option->choices[i].choice;
        if (given.ends_with("=Custom")) continue;
        EXPECT_NO_THROW(QueueJob(path, given)) << path << " " << given;
        ++choices;
      }
    }
    EXPECT_GT(choices, 150);
    ppdClose(ppd);
  }
}

TEST(Ppd, SizesAreWhatTheirNamesSay) {
  ppd_file_t* ppd = ppdOpenFile(kPpds[0]);
  ASSERT_NE(ppd, nullptr);
  for (int i = 0; i < ppd->num_sizes; ++i) {
    const ppd_size_t& size = ppd->sizes[i];
    if (std::string(size.name) == "Custom") continue;
    const PaperSize paper =
        QueueJob(kPpds[0], std::string("PageSize=") + size.name).Pages().paper.size;
    EXPECT_NEAR(paper.widthUm, size.width * 25400 / 72, 1) << size.name;
    EXPECT_NEAR(paper.lengthUm, size.length * 25400 / 72, 1) << size.name;
    // Nothing is kept free: a label is printed to its edges.
    EXPECT_EQ(size.right - size.left, size.width) << size.name;
  }
  ppdClose(ppd);
}

}  // namespace
