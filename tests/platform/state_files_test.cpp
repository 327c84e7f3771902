#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "platform/extensions.h"
#include "platform/registry.h"
#include "platform/spooler.h"
#include "platform/text.h"
#include "tests/support/temp_home.h"

namespace {

class StateFiles : public ::testing::Test {
 protected:
  StateFiles() { PlatformOpenEventLog(); }
  ~StateFiles() override { PlatformCloseEventLog(); }

  void WriteRegistry(const std::string& body) {
    home.WriteFile("registry.reg", "Windows Registry Editor Version 5.00\r\n\r\n" + body);
  }
  // The value's bytes, "-" when there is none.
  static std::string Query(const char16_t* path, const char16_t* name, DWORD* type = nullptr) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) != 0) return "-";
    BYTE data[64];
    DWORD size = sizeof data;
    const LSTATUS status = RegQueryValueExW(key, name, nullptr, type, data, &size);
    RegCloseKey(key);
    return status == 0 ? std::string(data, data + size) : "-";
  }

  TempHome home;
};

using namespace std::string_literals;

TEST_F(StateFiles, RegistryReadsEveryKindOfValue) {
  WriteRegistry(
      "; a comment\r\n[HKEY_CURRENT_USER\\A\\B c]\r\n@=\"d\"\r\n\"q\\\"\\\\\"=\"x\\\\y\\\"\"\r\n"
      "\"D\"=dword:0000012c\r\n\"H\"=hex(2):01,\\\r\n  02,\\\r\n  "
      "ff\r\n\"gone\"=\"1\"\r\n\"gone\"=-\r\n"
      "[HKEY_LOCAL_MACHINE\\A]\r\n\"other\"=\"1\"\r\n[HKEY_CURRENT_USER\\A\\x]\r\n\"v\"=\"1\"\r\n"
      "[-HKEY_CURRENT_USER\\A\\x]\r\n[HKEY_CURRENT_USER\\A\\\xC3\x84]\r\n\"u\"=\"1\"\r\n");
  DWORD type = 0;
  EXPECT_EQ(Query(u"a\\b C", u"", &type), "d\0\0\0"s);
  EXPECT_EQ(type, REG_SZ);
  EXPECT_EQ(Query(u"A\\B c", u"Q\"\\"), "x\0\\\0y\0\"\0\0\0"s);
  EXPECT_EQ(Query(u"A\\B c", u"d", &type), "\x2C\x01\0\0"s);
  EXPECT_EQ(type, REG_DWORD);
  EXPECT_EQ(Query(u"A\\B c", u"H", &type), "\x01\x02\xFF");
  EXPECT_EQ(type, 2u);
  EXPECT_EQ(Query(u"A\\B c", u"gone"), "-");
  EXPECT_EQ(Query(u"A", u"other"), "-");
  EXPECT_EQ(Query(u"A\\x", u"v"), "-");
  EXPECT_EQ(Query(u"a\\\u00E4", u"U"), "1\0\0\0"s);
  EXPECT_EQ(Query(u"A\\", u""), "-");
}

TEST_F(StateFiles, MalformedRegistryIsOneLineAndEmpty) {
  const char* bodies[] = {"[HKEY_CURRENT_USER\\A\n",
                          "\"v\"=\"1\"\n",
                          "[HKEY_CURRENT_USER\\A]\n\"v\"=dword:1g\n",
                          "[HKEY_CURRENT_USER\\A]\n\"v\"=hex:1,\\\n",
                          "[HKEY_CURRENT_USER\\A]\n\"v=\"1\"\n",
                          "[HKEY_CURRENT_USER\\A]\nv\n",
                          "[HKEY_CURRENT_USER\\A]\n\"v\"=1\n"};
  std::size_t lines = 0;
  for (const char* body : bodies) {
    WriteRegistry(body);
    EXPECT_EQ(Query(u"A", u"v"), "-") << body;
    EXPECT_EQ(Query(u"A", u"v"), "-") << body;
    EXPECT_EQ(home.LogLines().size(), ++lines) << body;
    EXPECT_NE(home.LogLines().back().find("registry.reg is ignored: line "), std::string::npos);
  }
  home.WriteFile("registry.reg", "REGEDIT4\n");
  EXPECT_EQ(Query(u"A", u"v"), "-");
  EXPECT_EQ(home.LogLines().size(), lines + 1);
  std::string utf16 = "\xFF\xFE";
  for (const char c :
       "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A]\n\"v\"=\"1\""s) {
    utf16 += {c, '\0'};
  }
  home.WriteFile("registry.reg", utf16);
  EXPECT_EQ(Query(u"A", u"v"), "1\0\0\0"s);
}

TEST_F(StateFiles, PrinterInformationTakesTwoCalls) {
  home.WriteFile("system.toml", "[[printer]]\nname = '\\\\host\\P 1'\ndriver = \"D\"\n");
  WCHAR name[] = u"\\\\HOST\\p 1";
  HANDLE printer = nullptr;
  ASSERT_TRUE(OpenPrinterW(name, &printer, nullptr));
  DWORD needed = 0;
  SetLastError(0);
  EXPECT_FALSE(GetPrinterW(printer, 2, nullptr, 0, &needed));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  std::vector<BYTE> block(needed);
  EXPECT_FALSE(GetPrinterW(printer, 2, block.data(), needed - 1, &needed));
  ASSERT_TRUE(GetPrinterW(printer, 2, block.data(), needed, &needed));
  const auto* info = reinterpret_cast<const PRINTER_INFO_2W*>(block.data());
  EXPECT_EQ(std::u16string(info->pServerName), u"\\\\host");
  EXPECT_EQ(std::u16string(info->pPrinterName), u"\\\\host\\P 1");
  EXPECT_EQ(std::u16string(info->pDriverName), u"D");
  EXPECT_TRUE(ClosePrinter(printer));
  EXPECT_FALSE(ClosePrinter(printer));
  EXPECT_FALSE(GetPrinterW(printer, 2, nullptr, 0, &needed));
  WCHAR unknown[] = u"Q";
  EXPECT_FALSE(OpenPrinterW(unknown, &printer, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PRINTER_NAME);
  EXPECT_EQ(printer, nullptr);
}

TEST_F(StateFiles, MalformedEntriesCountAsMissing) {
  std::size_t lines = 0;
  const std::string others = "dot_gain = 7\nansi_code_page = 850\n[[printer]]\nname = 'Q'\n";
  for (const std::string file :
       {"ansi_code_page = 'x'", "ansi_code_page = 31337", "dot_gain = 26", "png = 'tiny'",
        "[[printer]]\ndriver='D'", "printer = 5", "name = [",
        "[[printer]]\nname='P'\n[printer.label]\nmin_width_um=-1",
        "[[printer]]\nname='P'\n[printer.label]\nmin_width_um=1"}) {
    home.WriteFile("system.toml", file);
    for (int again = 0; again < 2; ++again) {
      EXPECT_NE(PlatformSystemFileComplaint().find("system.toml: line "), std::string::npos)
          << file;
    }
    EXPECT_EQ(home.LogLines().size(), ++lines) << file;
    WCHAR name[32];
    DWORD size = 32;
    EXPECT_TRUE(GetDefaultPrinterW(name, &size));
    EXPECT_EQ(std::u16string(name), u"Label Printer");
    EXPECT_EQ(PlatformDotGainPercent(), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"\u20AC", 1, nullptr, 0, nullptr, nullptr), 1);
  }
  // A malformed entry leaves the others in force.
  home.WriteFile("system.toml", "png = 'tiny'\n" + others);
  WCHAR name[32];
  DWORD size = 32;
  EXPECT_TRUE(GetDefaultPrinterW(name, &size));
  EXPECT_EQ(std::u16string(name), u"Q");
  EXPECT_EQ(PlatformDotGainPercent(), 7);
  EXPECT_NE(PlatformSystemFileComplaint().find("line 1: png must be"), std::string::npos);
  home.WriteFile("system.toml", others);
  EXPECT_EQ(PlatformSystemFileComplaint(), "");
  // A printer's own dot gain is in force for the thread that prints on it.
  PlatformSetPrinterDotGain(9);
  EXPECT_EQ(PlatformDotGainPercent(), 9);
  std::thread([] { EXPECT_EQ(PlatformDotGainPercent(), 7); }).join();
  PlatformSetPrinterDotGain(-1);
  EXPECT_EQ(PlatformDotGainPercent(), 7);
}

TEST_F(StateFiles, UnreadableFileIsOneLineAndCountsAsMissing) {
  const std::string path = home.Path("system.toml");
  // A regular file whose first read fails, a link to itself, a folder.
  for (const char* target : {"/proc/self/mem", "system.toml", "."}) {
    std::filesystem::create_symlink(target, path);
    for (int again = 0; again < 2; ++again) {
      EXPECT_EQ(PlatformDotGainPercent(), 0);
    }
    std::filesystem::remove(path);
    home.WriteFile("system.toml", "dot_gain = 7");
    EXPECT_EQ(PlatformDotGainPercent(), 7);
    std::filesystem::remove(path);
  }
  EXPECT_EQ(home.LogLines().size(), 3u);
}

TEST_F(StateFiles, LogLinesStayWholeAndEscaped) {
  PlatformWriteEvent(EventLevel::Warning, u"a\nb\tc\x1B\\ \u20AC\xD800", u"cat");
  EXPECT_EQ(home.LogLines().back(), "warning\tcat\ta\\nb\\tc\\x1B\\ \u20AC\uFFFD");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 200; ++i) PlatformWriteEvent(EventLevel::Trace, u"0123456789", nullptr);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto lines = home.LogLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "trace\t\t0123456789"), 800);
  PlatformCloseEventLog();
  setenv("VLX_LOG_LEVEL", "nonsense", 1);  // means info
  PlatformOpenEventLog();
  PlatformWriteEvent(EventLevel::Trace, u"no", nullptr);
  PlatformWriteEvent(EventLevel::Info, u"yes", nullptr);
  EXPECT_EQ(home.LogLines().size(), 802u);
}

}  // namespace
