#include "host/settings/settings.h"

#include <gtest/gtest.h>

#include <cstring>

#include "host/error.h"
#include "host/settings/setting_keys.h"
#include "tests/support/record.h"
#include "tests/support/temp_home.h"

namespace {

// The error of a setting, empty when it is taken.
std::string Error(const std::function<void(Settings&)>& use) {
  Settings settings;
  try {
    use(settings);
  } catch (const HostError& error) {
    return std::to_string(error.Code()) + " " + error.what();
  }
  return "";
}

TEST(Settings, FileSetsWhatItNames) {
  const TempHome home;
  home.WriteFile("s.toml", R"(
[paper]
size = "60x40mm"
[print]
method = "direct"
model = "K7ä"
[colour]
highlight = "#112233"
[blocks.4]
text = '\x41'
[devmode]
nOptionSet2A4 = -5
guidSelectedStock = "{00000001-0002-0003-0405-060708090A0B}"
nCpValue = "1500um"
)");
  Settings settings;
  settings.ReadFile(home.Path("s.toml"));
  settings.Set("print.speed=150");
  settings.Set("paper.gap=2mm");  // no quotes on a command line
  OEMDEV devmode = {};
  settings.ApplyTo(devmode);
  EXPECT_EQ(settings.Page().paper.lengthUm, 40000);
  OEMDEV expected = {};  // and nothing else
  SetFields(expected,
            "dwPrintMethod=1 szModelCode=K7\xE4 crHighlightColor=3351057 szCustomText4=\\x41 "
            "nOptionSet2A4=-5 nCpValue=1500 dwSpeed=150 dwGapDistance=2000");
  expected.guidSelectedStock = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(std::memcmp(&devmode, &expected, sizeof devmode), 0);
  devmode.dwSpeed = 1;
  EXPECT_THROW(settings.Check(devmode, {}), HostError);
}

TEST(Settings, RefusalNamesKeyValueAndRemedy) {
  const std::pair<const char*, const char*> rows[] = {
      {"print.sped=1", "4 There is no setting \"print.sped\"; did you mean \"print.speed\"?"},
      {"devmode.dwSped=1", "did you mean \"devmode.dwSpeed\"?"},
      {"print.speed=0", "4 \"print.speed\" is 0: a whole number from 1 to 1000 is expected"},
      {"print.speed=fast", "\"print.speed\" is \"fast\""},
      {"print.method=laser", "one of transfer, direct is expected"},
      {"print.crop=1", "true or false is expected"},
      {"paper.gap=3", "\"paper.gap\" is 3: write a length with its unit"},
      {"paper.gap=-3mm", "not negative"},
      {"paper.offset_y=-3276.8mm", "a length from -3276.7mm to 3276.7mm is expected"},
      {"devmode.nCpValue=3", "write a length with its unit"},
      {"paper.gap=2,5 mm",
       "paper.gap is \"2,5 mm\"; write a point in place of the comma: \"2.5 mm\""},
      {"paper.gap='3'", "add the unit, mm, um, cm or in: \"3mm\""},
      {"paper.gap=3 mm 2", "write a length with its unit"},
      {"paper.size=101,6x152,4mm",
       "is \"101,6x152,4mm\"; write a point in place of the comma: \"101.6x152.4mm\""},
      {"paper.size=100x150", "\"100x150\"; add the unit"},
      {"paper.size=100x150px", "is \"100x150px\"; write the unit as mm, um, cm or in, not \"px\""},
      {"paper.size=100mm", "write width x length"},
      {"paper.size=100x", "write width x length"},
      {"paper.size=100x150x2mm", "write width x length"},
      {"paper.size=100x0.05mm", "make each side 0.1 mm to 3276.7 mm"},
      {"colour.highlight=red", "#RRGGBB"},
      {"paper.stock=1", "a text is expected"},
      {"print.model=01234567890123456789", "at most 19 characters fit"},
      {"print.model=\u4E00", "code page"},
      {"devmode.dwSpeed=-1", "0 to 4294967295"},
      {"devmode.wCustomType3=65536", "0 to 65535"},
      {"speed", "2 The setting is \"speed\"; write KEY=VALUE"},
  };
  for (const auto& [set, message] : rows) {
    const std::string error = Error([text = set](Settings& settings) { settings.Set(text); });
    EXPECT_NE(error.find(message), std::string::npos) << set << ": " << error;
  }
  EXPECT_NE(Error([](Settings& settings) {
              settings.Set("print.speed=5");
              settings.Set("devmode.dwSpeed=6");
            }).find("\"print.speed\" (5) and \"devmode.dwSpeed\" (6) set the same thing"),
            std::string::npos);
  const TempHome home;
  home.WriteFile("s.toml", "[print]\nspeed = = 1\n");
  const auto read = [&home](const char* name) {
    return Error([&](Settings& settings) { settings.ReadFile(home.Path(name)); });
  };
  EXPECT_TRUE(read("s.toml").starts_with("4 " + home.Path("s.toml") + ", line 2"));
  EXPECT_TRUE(read("none.toml").starts_with("3 "));
  home.WriteFile("empty.toml", "");
  EXPECT_EQ(read("empty.toml"), "");
}

TEST(Settings, PaperSizesAreTakenAsPeopleWriteThem) {
  const std::pair<const char*, const char*> rows[] = {
      {"100x150mm", "100x150mm"},
      {" 100 x 150 mm ", "100x150mm"},
      {"100mm x 150mm", "100x150mm"},
      {"100X150MM", "100x150mm"},
      {"100\u00D7150\u00A0mm", "100x150mm"},
      {"101.6x152.4mm", "101.6x152.4mm"},
      {"4x6in", "101.6x152.4mm"},
      {"4in x 15cm", "101.6x150mm"},
  };
  for (const auto& [text, size] : rows) {
    EXPECT_EQ(FormatPaperSize(ParsePaperSize(text, "--paper")), size) << text;
  }
}

TEST(Settings, EveryKeyIsDocumented) {
  std::ifstream file(SETTINGS_DOCUMENT);
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  for (const SettingKey& key : SettingKeys()) {
    EXPECT_NE(document.find("`" + std::string(key.name) + "`"), std::string::npos) << key.name;
  }
  for (const OemDevField& field : OemDevFields()) {
    EXPECT_NE(document.find("`" + std::string(field.name) + "`"), std::string::npos) << field.name;
  }
}

}  // namespace
