// What frames a job and its pages: header, print lines, end.

#include "platform/extensions.h"
#include "tests/driver/job_test.h"

namespace {

class JobCommands : public JobTest {
 protected:
  // The writes of a document without a page.
  Events Print() {
    driver.writes.clear();
    EXPECT_TRUE(driver.PrintDocument(""));
    Events writes = Take();
    std::erase_if(writes, [](const std::string& event) { return event.starts_with("Drv"); });
    return writes;
  }
  std::string Header() { return Print()[0]; }
};

const std::string kCreated = ";Created: dd.mm.yyyy, hh:mm:ss\r\n;Driver version: 1.3.0.25\r\n";

TEST_F(JobCommands, HeaderNamesPrinterAndDocument) {
  const std::string printer = kCreated + ";Printer model: VLX Label\r\n";
  driver.documentName = u"\u20AC \u4E00 \u00E4";
  EXPECT_EQ(Header(), printer + ";Print job name: \x80 ? \xE4\r\n");
  driver.documentName = u"";
  EXPECT_EQ(Header(), printer + ";Print job name: \r\n");
  EXPECT_TRUE(driver.StartDocument());
  std::string time = driver.writes[0].substr(10, 20);
  std::replace_if(
      time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
  EXPECT_EQ(time, "00.00.0000, 00:00:00");
  EXPECT_TRUE(driver.AbortDocument());
}

TEST_F(JobCommands, HeaderLeavesOutWhatHasNoRoomOrNoBytes) {
  for (const std::size_t units : {1022, 1023}) {
    const std::string name(units, 'd');
    home.WriteFile("system.toml", "[[printer]]\nname = 'Label Printer'\ndriver = '" + name + "'");
    EXPECT_EQ(Header(), kCreated + ";Printer model: " + (units == 1022 ? name : "") +
                            "\r\n;Print job name: job\r\n");
  }
  PlatformSetFaultHook(
      [](const char* call, void*) { return std::string_view(call) == "WideCharToMultiByte"; },
      nullptr);
  driver.writes.clear();
  EXPECT_TRUE(driver.StartDocument());
  EXPECT_EQ(driver.writes[0],
            ";Created: \r\n;Driver version: 1.3.0.25\r\n;Printer model: \r\n;Print job name: \r\n");
  EXPECT_TRUE(driver.AbortDocument());
  PlatformSetFaultHook(nullptr, nullptr);
}

TEST_F(JobCommands, PrintLineCarriesCopiesAndBlocks) {
  const auto line = [this] { return Print()[1]; };
  driver.publicDevmode.dmCopies = 5;
  EXPECT_EQ(line(), "\r\nA5\r\n");
  driver.publicDevmode.dmCollate = 1;
  EXPECT_EQ(line(), "\r\nA1\r\n");
  SetBlock(*driver.devmode, 7, kBlockPlain, "X");
  SetBlock(*driver.devmode, 5, kBlockPlain, "ZZ");
  EXPECT_EQ(line(), "\r\nX\r\nA1\r\nZZ\r\n");
  SetBlock(*driver.devmode, 5, kBlockInline, "ZZ");  // travels with the set-up instead
  EXPECT_EQ(line(), "\r\nX\r\nA1\r\n");
}

TEST_F(JobCommands, EndWritesEachPieceByItself) {
  Set("dwCut1Enabled=1 dwCut1AtJobEnd=1 nCut1Value1=2000 nCut1Value2=1500");
  SetBlock(*driver.devmode, 3, kBlockEscaped, "three\\n");
  SetBlock(*driver.devmode, 1, kBlockPlain, "one");
  EXPECT_EQ(Print(), (Events{kHeader, "\r\nCe,2.00,1.50", "\r\nA1\r\n", "\r\nthree\n", "\r\none"}));
}

// All bytes of the job count: images, and bytes written before a reset of the device.
TEST_F(JobCommands, JobIsNeverAMultipleOf512BytesLong) {
  Set("dwColorMode=2 dwSetupOnFirstPageOnly=1");
  SetBlock(*driver.devmode, 0, kBlockInline, "page {n}");
  const struct {
    WORD kind;
    bool reset;
    const char *text, *end, *paddedEnd;
  } rows[] = {{0, false, "", "", "\r\n"},
              {0, true, "", "", "\r\n"},
              {kBlockPlain, true, "end", "\r\nend", "\r\nend\r\n"},
              {kBlockInline, true, "end", "", ""}};
  for (const auto& row : rows) {
    SetBlock(*driver.devmode, 1, row.kind, std::string(row.text) + '\0');
    driver.documentName = u"";
    std::size_t shortest = 0;
    for (int step = -1; step <= 2; ++step) {
      // The first run measures the job. In the next three the name's length makes it one byte less
      // than a multiple of 512, a multiple, and one byte more.
      if (step >= 0) driver.documentName = std::u16string(2 * 512 - shortest % 512 + step - 1, 'n');
      EXPECT_TRUE(driver.StartDocument());
      for (const char picture : {'a', 'b', 'b'}) {
        EXPECT_TRUE(!row.reset || driver.ResetDevice());
        EXPECT_TRUE(driver.PrintPage(picture));
      }
      EXPECT_TRUE(driver.EndDocument());
      std::string job, end;
      std::erase_if(driver.writes, [](const auto& event) { return event.starts_with("Drv"); });
      for (const std::string& write : std::exchange(driver.writes, {})) job += write;
      end = job.substr(job.rfind("\r\nA1\r\n") + 6);
      if (step < 0) shortest = job.size() - (end.size() - std::string(row.end).size());
      EXPECT_TRUE(step < 0 || end == (step == 1 ? row.paddedEnd : row.end)) << row.text << step;
      EXPECT_EQ(std::count(job.begin(), job.end(), '{'), 0);
      if (row.kind != kBlockInline) {
        EXPECT_NE(job.find("\r\npage 2\r\n\r\nR Image1;1"), job.npos);
        EXPECT_NE(job.size() % 512, 0u);
      }
    }
  }
}

}  // namespace
