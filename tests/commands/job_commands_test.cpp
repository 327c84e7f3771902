#include <gtest/gtest.h>

#include "commands/image_commands.h"
#include "commands/job_stream.h"
#include "commands/print_commands.h"
#include "platform/fault.h"
#include "platform/spooler.h"
#include "tests/support/device.h"
#include "tests/support/temp_home.h"

namespace {

using namespace std::string_literals;

TEST(JobHeader, NamesEverythingAndRestartsTheByteCount) {
  EXPECT_EQ(BuildJobHeader("07.03.2025, 14:05:09", "M", "J"),
            ";Created: 07.03.2025, 14:05:09\r\n;Driver version: 1.3.0.25\r\n;Printer model: M\r\n"
            ";Print job name: J\r\n");
  Device device;
  device.state.job.dwJobBytesWritten = 77;
  WriteJobHeader(&device.object, WTEXT("\u20AC \u4E00 \u00E4"));
  ASSERT_EQ(device.writes.size(), 1u);
  EXPECT_EQ(
      device.writes[0].substr(30),
      "\r\n;Driver version: 1.3.0.25\r\n;Printer model: \r\n;Print job name: \x80 ? \xE4\r\n"s);
  EXPECT_EQ(device.state.job.dwJobBytesWritten, device.writes[0].size());
  WriteJobHeader(&device.object, nullptr);
  EXPECT_TRUE(device.writes[1].ends_with(";Print job name: \r\n"));
  WriteJobHeader(&device.object, WTEXT("A"));
  EXPECT_TRUE(device.writes[2].ends_with(";Print job name: A\r\n"));
}

TEST(JobHeader, LeavesOutWhatHasNoRoomOrNoBytes) {
  const TempHome home;
  Device device;
  const auto header = [&device] {
    device.writes.clear();
    WriteJobHeader(&device.object, WTEXT("A"));
    return device.writes[0].substr(device.writes[0].find(";Printer model"));
  };
  for (const std::size_t units : {1022, 1023}) {
    const std::string driver(units, 'd');
    home.WriteFile("system.toml", "[[printer]]\nname = 'P'\ndriver = '" + driver + "'");
    WCHAR name[] = u"P";
    ASSERT_TRUE(OpenPrinterW(name, &device.object.hPrinter, nullptr));
    EXPECT_EQ(header(),
              ";Printer model: " + (units == 1022 ? driver : "") + "\r\n;Print job name: A\r\n");
    ClosePrinter(device.object.hPrinter);
  }
  PlatformSetFaultHook(
      [](const char* call, void*) { return std::string_view(call) == "WideCharToMultiByte"; },
      nullptr);
  EXPECT_EQ(header(), ";Printer model: \r\n;Print job name: \r\n");
  PlatformSetFaultHook(nullptr, nullptr);
}

TEST(ImageFrame, IsLiteral) {
  EXPECT_EQ(ComposeImageErase(), "eIMG;*\r\n");
  EXPECT_EQ(ComposeImageDownloadHeader("1"), "\x64\x50\x4E\x47\x3B\x31\x0D\x0A\x1B\x3A");
  EXPECT_EQ(ComposeImageDataEnd(), "\x1B\x65\x6E\x64\x2D\x6F\x66\x2D\x64\x61\x74\x61\x0D\x0A");
}

TEST(PrintLine, CarriesCopiesAndBlocks) {
  Device device;
  device.publicDevmode.dmCopies = 5;
  const auto line = [&device] { return BuildPrintCommand(device.publicDevmode, device.devmode); };
  EXPECT_EQ(line(), "\r\nA5\r\n");
  device.publicDevmode.dmCollate = 1;
  EXPECT_EQ(line(), "\r\nA1\r\n");
  device.SetBlock(7, 3, "X");
  device.SetBlock(5, 3, "ZZ");
  EXPECT_EQ(line(), "\r\nX\r\nA1\r\nZZ\r\n");
  device.SetBlock(5, 4, "ZZ");  // travels with the set-up instead
  EXPECT_EQ(line(), "\r\nX\r\nA1\r\n");
}

TEST(JobEnd, WritesEachPieceByItself) {
  Device device;
  device.Set("dwCut1Enabled=1 dwCut1AtJobEnd=1 nCut1Value1=2000 nCut1Value2=1500");
  device.SetBlock(3, 2, "three\\n");
  device.SetBlock(1, 3, "one");
  WriteJobEnd(&device.object);
  EXPECT_EQ(device.writes,
            (std::vector<std::string>{"\r\nCe,2.00,1.50", "\r\nA1\r\n", "\r\nthree\n", "\r\none"}));
}

TEST(JobEnd, NeverEndsOnAMultipleOf512Bytes) {
  const std::tuple<DWORD, WORD, const char*, std::string> rows[] = {
      {1024, 0, "", "\r\n"},   {1023, 0, "", ""}, {1021, 3, "a", "\r\na\r\n"},
      {1024, 3, "a", "\r\na"}, {512, 4, "a", ""}, {0xFFFFFFFDu, 3, "a", "\r\na\r\n"}};
  for (const auto& [before, kind, text, expected] : rows) {
    Device device;
    device.state.job.dwJobBytesWritten = before;
    device.SetBlock(1, kind, text);
    SendClosingBlock(&device.object);
    EXPECT_EQ(device.Stream(), expected) << before << " " << kind;
    EXPECT_EQ(device.writes.size(), expected.empty() ? 0u : 1u);
    EXPECT_EQ(device.state.job.dwJobBytesWritten, before + static_cast<DWORD>(expected.size()));
  }
}

}  // namespace
