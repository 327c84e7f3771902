#include "host/targets/job_cost.h"

#include <gtest/gtest.h>

namespace {

// The cost of a job, write by write.
std::string CostOf(const std::vector<std::string>& writes) {
  JobCost cost;
  for (const std::string& write : writes) cost.Count(write);
  std::string line = cost.Line();
  const std::size_t bytes = line.find(" mm of media, ");
  return line.erase(bytes, line.find(',', bytes + 15) - bytes);  // not the bytes
}

const std::string kSetup = "mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nSl0;0.00,0.00,50.00,53.00,100.00";
const std::string kPlace = "\r\nI:Image0;100.00,48.00,180;0";

TEST(JobCost, CountsCopiesMediaAndCuts) {
  const std::string header = ";Created: x\r\n;Print job name: A7\r\n";
  EXPECT_EQ(CostOf({header}), "0 labels, 0 cuts, 0, 0 images");
  EXPECT_EQ(CostOf({header, kSetup, "\r\nA1\r\n"}), "1 label, 0 cuts, 53, 0 images");
  EXPECT_EQ(CostOf({kSetup + "\r\nCe,2.00,1.50" + kPlace, "\r\nA3\r\n", kSetup, "\r\nX\r\nA2\r\n"}),
            "5 labels, 1 cut, 265, 0 images");
  EXPECT_EQ(CostOf({kSetup + "\r\nCs,3.00\r\nC2,2.00,1.50" + kPlace, "\r\nA3\r\n", "\r\nA2\r\n"}),
            "5 labels, 2 cuts, 265, 0 images");
  // A cut at the end of the job: its line is a write before the last print line.
  EXPECT_EQ(
      CostOf({kSetup + "\r\nC9998,2.00,1.50", "\r\nA3\r\n", "\r\nCe,2.00,1.50", "\r\nA2\r\n"}),
      "5 labels, 1 cut, 265, 0 images");
  // Set-up recalled: only the cut and the image are named again.
  EXPECT_EQ(CostOf({kSetup, "\r\nA1\r\n", "\r\nCe,0.00,0.00\r\nR Image0;0", "\r\nA1\r\n"}),
            "2 labels, 1 cut, 106, 0 images");
}

TEST(JobCost, KnowsWhatAPartOfTheJobPrints) {
  JobCost cost;
  cost.Count(kSetup);
  cost.Count("\r\nA3\r\n");
  const std::uint64_t first = cost.Bytes();
  cost.Count(kSetup + "\r\nA2\r\n");
  EXPECT_EQ(cost.PrintedWithin(first - 1).pages, 0u);
  EXPECT_EQ(cost.PrintedWithin(cost.Bytes() - 1).labels, 3u);
  EXPECT_EQ(cost.PrintedWithin(cost.Bytes()).labels, 5u);
  EXPECT_EQ(cost.PrintedWithin(cost.Bytes()).pages, 2u);
}

TEST(JobCost, KnowsWhatRepeatedImagesSave) {
  std::vector<std::string> job;
  const auto download = [&job](const std::string& name, const std::string& bytes) {
    job.insert(job.end(), {"dPNG;" + name + "\r\n\x1B:", bytes, "\033end-of-data\r\n"});
  };
  const auto print = [&job] {
    job.insert(job.end(), {kSetup + kPlace + "\r\nI:Image1;1,1,0;1", "\r\nA1\r\n"});
  };
  download("0", "dPNG;0 \r\nA9\r\n");
  download("1", std::string(86, 'b'));  // 100 bytes of images
  for (int i = 0; i < 4; ++i) print();
  EXPECT_EQ(CostOf(job), "4 labels, 0 cuts, 212, 2 images, 75 % of the image bytes saved");
  download("1", std::string(86, 'b'));  // sent again, 14 of 100 bytes saved
  print();
  EXPECT_EQ(CostOf(job), "5 labels, 0 cuts, 265, 2 images, 62 % of the image bytes saved");
}

}  // namespace
