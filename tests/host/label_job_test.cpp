// The pieces that every front end stands on, without a command line: page source, job, observer.
#include "host/label_job.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "tests/support/temp_home.h"

namespace {

constexpr std::string_view kPrintLine = "\r\nA1\r\n";

class MemoryTarget final : public JobTarget {
 public:
  explicit MemoryTarget(std::string& job) : m_job(job) {}
  void Write(std::string_view bytes) override { m_job += bytes; }
  void Finish() override {}

 private:
  std::string& m_job;
};

// Pages of 96 x 56 dots, each with a pattern of its own; only the page with the number large is
// wider.
class PatternPages final : public PageSource {
 public:
  PatternPages(std::size_t count, std::uint32_t seed) : m_count(count), m_random(seed) {}
  bool Next(PageImage& page) override {
    if (m_done == m_count) return false;
    if (++m_done == failing) {
      if (cancelled != nullptr) *cancelled = true;
      throw HostError(kExitInput, "the helper was ended");
    }
    ShapePage(page, m_done == large ? 97 : 96, 56, "pattern");
    std::fill(page.pixels.begin(), page.pixels.end(), 0xFF);
    for (std::uint32_t dot = 0; dot < 96 * 56; ++dot) {
      m_random = m_random * 1664525 + 1013904223;
      if (m_random >> 31) std::fill_n(page.Row(dot / 96) + 3 * (dot % 96), 3, 0);
    }
    return true;
  }
  std::size_t large = 0;
  std::size_t failing = 0;
  std::atomic<bool>* cancelled = nullptr;  // is set while the failing page is read

 private:
  const std::size_t m_count;
  std::uint32_t m_random;
  std::size_t m_done = 0;
};

class Listener final : public JobObserver {
 public:
  void Warning(const std::string& text) override { warnings.push_back(text); }
  void Progress(std::size_t printed, std::optional<std::size_t>) override {
    if (printed == cancelAfter) cancel = true;
  }
  bool Cancelled() override { return cancel; }

  std::vector<std::string> warnings;
  std::size_t cancelAfter = 0;
  std::atomic<bool> cancel = false;
};

// A job on paper of 96 x 56 dots, in memory.
struct Printing {
  explicit Printing(std::vector<std::string> sets = {}) {
    request.settings.Set("paper.size=12x7mm");
    request.settings.Set("paper.dpi=203");
    for (const std::string& set : sets) request.settings.Set(set);
  }
  PrintEnd Print(PageSource& pages) {
    Spool spool(std::make_unique<MemoryTarget>(job));
    LabelJob labels(request, spool, listener);
    return PrintPages(pages, labels);
  }
  // Without the first line, which holds the time.
  std::string Body() const { return job.substr(std::min(job.find('\n'), job.size())); }
  std::size_t Labels() const {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = job.find(kPrintLine, at)) != job.npos; ++at) ++count;
    return count;
  }

  JobRequest request;
  Listener listener;
  std::string job;
};

class LabelJobTest : public ::testing::Test {
 protected:
  TempHome home;
};

TEST_F(LabelJobTest, RefusedFirstPageSendsNothing) {
  Printing run;
  PatternPages pages(2, 1);
  pages.large = 1;
  try {
    run.Print(pages);
    FAIL() << "a page of 97 dots fits into 96";
  } catch (const PageTooLargeError& error) {
    EXPECT_NEAR(error.PageWidthMm(), 97 * 25.4 / 203, 1e-9);
    EXPECT_NEAR(error.PageHeightMm(), 56 * 25.4 / 203, 1e-9);
    EXPECT_NE(error.Fact().find("12.1 x 7 mm"), std::string::npos) << error.Fact();
    EXPECT_EQ(std::string(error.what()), error.Fact() + "; " + error.Remedy());
    EXPECT_EQ(std::string(error.what()).find("--"), std::string::npos) << "no option of vlx";
  }
  EXPECT_EQ(run.job, "");
}

TEST_F(LabelJobTest, RefusedLaterPageLeavesTheChoiceToTheFrontEnd) {
  Printing two;
  PatternPages before(2, 1);
  ASSERT_EQ(two.Print(before), PrintEnd::AllPages);
  Printing aborted;
  PatternPages some(3, 1);
  some.large = 3;
  EXPECT_THROW(aborted.Print(some), PageTooLargeError);
  EXPECT_EQ(aborted.Labels(), 1u) << "the second label was still in the plug-in";

  Printing ended;
  Spool spool(std::make_unique<MemoryTarget>(ended.job));
  LabelJob labels(ended.request, spool, ended.listener);
  PatternPages again(3, 1);
  again.large = 3;
  PageImage page;
  for (int i = 0; i < 2 && again.Next(page); ++i) labels.Print(page);
  ASSERT_TRUE(again.Next(page));
  EXPECT_THROW(labels.Print(page), PageTooLargeError);
  labels.End();
  EXPECT_EQ(ended.Body(), two.Body());
}

TEST_F(LabelJobTest, CancelledJobIsTheWholeJobOfThePagesSoFar) {
  Printing whole;
  PatternPages two(2, 7);
  ASSERT_EQ(whole.Print(two), PrintEnd::AllPages);
  ASSERT_EQ(whole.Labels(), 2u);

  Printing cancelled;
  cancelled.listener.cancelAfter = 2;
  PatternPages five(5, 7);
  EXPECT_EQ(cancelled.Print(five), PrintEnd::Cancelled);
  EXPECT_EQ(cancelled.Body(), whole.Body());

  Printing killed;  // the source is ended together with the job
  PatternPages failing(5, 7);
  failing.failing = 3;
  failing.cancelled = &killed.listener.cancel;
  EXPECT_EQ(killed.Print(failing), PrintEnd::Cancelled);
  EXPECT_EQ(killed.Body(), whole.Body());

  Printing damaged;  // nobody has cancelled
  PatternPages broken(5, 7);
  broken.failing = 3;
  EXPECT_THROW(damaged.Print(broken), HostError);

  Printing never;
  never.listener.cancel = true;
  PatternPages none(5, 7);
  EXPECT_EQ(never.Print(none), PrintEnd::Cancelled);
  EXPECT_EQ(never.job, "");
}

TEST_F(LabelJobTest, ObserverHearsWarnings) {
  home.WriteFile("system.toml", "printer = = 1\n");
  Printing run({"paper.margin_left=2mm"});
  PatternPages pages(1, 3);
  run.Print(pages);
  ASSERT_EQ(run.listener.warnings.size(), 2u);
  EXPECT_NE(run.listener.warnings[0].find("system.toml"), std::string::npos);
  EXPECT_NE(run.listener.warnings[1].find("Page 1 has content in the margins"), std::string::npos);
}

TEST_F(LabelJobTest, JobsAtOnceGiveTheBytesOfEachAlone) {
  const auto print = [](std::uint32_t seed) {
    Printing run({"print.speed=" + std::to_string(100 + seed),
                  "paper.orientation=" + std::string(seed % 2 ? "portrait" : "landscape")});
    if (seed % 2 == 0) run.request.settings.Set("paper.size=7x12mm");
    PatternPages pages(20, seed);
    run.Print(pages);
    return run.Body();
  };
  constexpr std::uint32_t kJobs = 4;
  std::vector<std::string> alone, together(kJobs);
  for (std::uint32_t seed = 0; seed < kJobs; ++seed) alone.push_back(print(seed));
  std::vector<std::thread> threads;
  for (std::uint32_t seed = 0; seed < kJobs; ++seed) {
    threads.emplace_back([&, seed] { together[seed] = print(seed); });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::uint32_t seed = 0; seed < kJobs; ++seed) {
    EXPECT_TRUE(alone[seed] == together[seed]) << "job " << seed;
    EXPECT_GT(alone[seed].size(), 10000u);
  }
  EXPECT_FALSE(alone[1] == alone[3]);
}

TEST_F(LabelJobTest, OneAddressOneTarget) {
  EXPECT_THROW(OpenTarget("ftp://x"), HostError);
  try {
    OpenTarget("TCP://127.0.0.1:0");
    FAIL();
  } catch (const HostError& error) {
    EXPECT_EQ(error.Code(), kExitUsage);
    EXPECT_NE(error.Remedy().find("tcp://HOST"), std::string::npos);
  }
}

}  // namespace
