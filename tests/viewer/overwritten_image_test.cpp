// Jobs in which the colour mode changes, from the plug-in to the virtual printer.

#include "tests/driver/job_test.h"
#include "viewer/reports/lint.h"

namespace {

using OverwrittenImage = JobTest;

TEST_F(OverwrittenImage, IsFoundInAJobThatLeavesTwoColoursAndReturns) {
  driver.notesCalls = false;
  // The page of one colour takes the highlight's name; the highlight is not sent again.
  const std::pair<std::vector<DWORD>, int> rows[] = {{{2, 2, 1, 1, 2, 2}, 1}, {{2, 2, 2, 2}, 0}};
  for (const auto& [modes, expected] : rows) {
    driver.writes.clear();
    ASSERT_TRUE(driver.StartDocument());
    for (const DWORD mode : modes) {
      driver.devmode->dwColorMode = mode;
      ASSERT_TRUE(driver.ResetDevice() && driver.PrintPage('a'));
    }
    ASSERT_TRUE(driver.EndDocument());
    std::string job;
    for (const std::string& write : driver.writes) job += write;
    int found = 0;
    for (const viewer::Fault& fault : viewer::LintJob(job, 203).faults) {
      found += fault.text.starts_with("Field Image0 is filled with image 0 again");
    }
    EXPECT_EQ(found, expected);
  }
}

}  // namespace
