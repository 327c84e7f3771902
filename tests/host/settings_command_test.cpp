#include <cstring>
#include <random>

#include "config/oemdev_fields.h"
#include "tests/host/vlx_process.h"

namespace {

using SettingsCommand = VlxProcess;

// Every field set at random to what a record can hold.
OEMDEV RandomRecord(std::mt19937& random) {
  OEMDEV devmode = {};
  devmode.header = {sizeof(OEMDEV), kOemDevSignature, kOemDevVersion};
  for (const OemDevField& field : OemDevFields()) {
    auto* bytes = reinterpret_cast<BYTE*>(&devmode) + field.offset;
    const bool plain = random() % 2 == 0;  // small numbers are the words and flags of the keys
    if (field.kind == OemDevKind::Margin && field.offset < 0x668) continue;  // no paper holds them
    const std::size_t length = field.kind == OemDevKind::Text ? random() % field.size : field.size;
    for (std::size_t i = 0; i < length; ++i) {
      if (field.kind == OemDevKind::Text) {
        bytes[i] = static_cast<BYTE>("a\"\\\t\x7F\xE4\x80#="[random() % 9]);
      } else if (!plain || i == 0) {
        bytes[i] = static_cast<BYTE>(plain ? random() % 3 : random());
      }
    }
  }
  devmode.dwSensorType %= 6;  // the plug-in repairs these
  devmode.dwRotation %= 4;
  devmode.dwColorMode = devmode.dwColorMode % 2 + 1;
  devmode.wDitherer %= 2;
  devmode.nCut1Count |= 1;  // settings that make no sense are refused
  devmode.nCut2Count |= 1;
  if (devmode.dwColorMode == 2) devmode.bTopSideSameAsBottom = 0;
  devmode.dwInitialCutSent = 0;
  for (int i = 0; i < kCustomBlockCount; ++i) {  // so are files that cannot be read
    WORD& kind = (&devmode.wCustomType0)[i];
    if (kind == kBlockFile) kind = kBlockPlain;
  }
  return devmode;
}

TEST_F(SettingsCommand, ShownRecordCanBeReadAgain) {
  std::mt19937 random(11);
  for (int round = 0; round < 12; ++round) {
    const OEMDEV devmode = RandomRecord(random);
    home.WriteFile("r", {reinterpret_cast<const char*>(&devmode), sizeof devmode});
    for (const char* show : {"settings devmode {}r", "settings show {}s.toml --changed"}) {
      ASSERT_EQ(RunVlx(show), 0) << Read("err.txt");
      home.WriteFile("s.toml", Read("out.txt"));
      ASSERT_EQ(Run("{}page.pgm -o {}a.job --settings {}s.toml --save-devmode {}r2" + paper), 0)
          << Read("err.txt") << Read("s.toml");
      ASSERT_EQ(Read("r2") == Read("r"), true) << Read("s.toml");
    }
    const std::string shown = Job("a.job");
    ASSERT_EQ(Run("{}page.pgm -o {}a.job --devmode {}r" + paper), 0) << Read("err.txt");
    ASSERT_EQ(Job("a.job") == shown, true) << Read("s.toml");
  }
}

TEST_F(SettingsCommand, ShowsPageSettingsAndRefusesOtherFiles) {
  home.WriteFile("s.toml", "[paper]\nsize = \"4x6in\"\norientation = \"landscape\"\n");
  ASSERT_EQ(RunVlx("settings show {}s.toml --set print.copies=3 --changed"), 0);
  EXPECT_EQ(
      Read("out.txt"),
      "[paper]\nsize = \"101.6x152.4mm\"\norientation = \"landscape\"\n\n[print]\ncopies = 3\n");
  EXPECT_EQ(RunVlx("settings devmode {}s.toml"), 4);
  EXPECT_NE(Read("err.txt").find("s.toml is no settings record"), std::string::npos);
  EXPECT_EQ(RunVlx("settings devmode {}none"), 3);
  std::mt19937 random;
  OEMDEV devmode = RandomRecord(random);
  devmode.dwSensorType = 9;
  home.WriteFile("r", {reinterpret_cast<const char*>(&devmode), sizeof devmode});
  EXPECT_EQ(RunVlx("settings show {}r"), 4);
  EXPECT_NE(Read("err.txt").find("vlx settings devmode"), std::string::npos) << Read("err.txt");
  EXPECT_EQ(RunVlx("settings devmode {}r"), 0);
  EXPECT_NE(Read("err.txt").find("dwSensorType"), std::string::npos);
}

TEST_F(SettingsCommand, StocksAreThoseOfThePrinter) {
  EXPECT_EQ(RunVlx("stocks"), 0);
  EXPECT_NE(Read("out.txt").find("UI\\VLXLabel\\LabelPrinter\\Stocks"), std::string::npos);
  const std::string key =
      "[HKEY_CURRENT_USER\\Software\\Veltrix Printer Driver\\UI\\VLXLabel\\LabelPrinter\\Stocks\\";
  home.WriteFile("registry.reg", "Windows Registry Editor Version 5.00\r\n\r\n" + key +
                                     "a]\r\n\"DisplayName\"=\"Gl\u00E4nzend\"\r\n" +
                                     "\"Id\"=\"{0a1b2c3d-0001-0002-0304-05060708090a}\"\r\n" +
                                     "\"UnprintableLeft\"=dword:000005dc\r\n\r\n" + key +
                                     "b]\r\n\"Rotation\"=dword:00000002\r\n");
  ASSERT_EQ(RunVlx("stocks"), 0);
  EXPECT_EQ(Read("out.txt"),
            "{0A1B2C3D-0001-0002-0304-05060708090A}  Gl\u00E4nzend  (used when none is selected)\n"
            "  margins: left 1.5mm, right 0mm, top 0mm, bottom 0mm\n"
            "  stored: SpeedInMmPerSec 0\n"
            "(without Id, cannot be selected)  (no name)\n"
            "  margins: left 0mm, right 0mm, top 0mm, bottom 0mm\n"
            "  stored: SpeedInMmPerSec 0, Rotation 2\n");
  EXPECT_EQ(RunVlx("stocks --printer Nobody"), 4);
  EXPECT_NE(Read("err.txt").find("\"Nobody\""), std::string::npos);
}

}  // namespace
