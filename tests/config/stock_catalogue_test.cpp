#include "config/stock_catalogue.h"

#include <gtest/gtest.h>

#include <set>

#include "config/oemdev_fields.h"
#include "platform/extensions.h"
#include "tests/support/temp_home.h"

namespace {

class StockCatalogue : public ::testing::Test {
 protected:
  // The stocks of a catalogue with these subkeys below "Stocks".
  StockList Load(const std::string& stocks) {
    std::string text = "Windows Registry Editor Version 5.00\n";
    std::string at = stocks;
    for (std::size_t i; (i = at.find("[S")) != at.npos;) {
      at.replace(i, 1, "[HKEY_CURRENT_USER\\Software\\Veltrix Printer Driver\\UI\\D\\P\\Stocks\\");
    }
    home.WriteFile("registry.reg", text + at);
    StockList list(3);
    LoadStocks(list, u"D", u"P");
    return list;
  }
  TempHome home;
};

TEST_F(StockCatalogue, ReadsValuesOverDefaults) {
  const StockList list = Load(
      "[S1]\n[S2]\n\"darkness\"=dword:00000007\n\"UnprintableTop\"=hex:01,02,03,04\n"
      "\"UnprintableLeft\"=hex(b):01,00,00,00,00,00,00,00\n\"Rotation\"=\"x\"\n"
      "\"PaperWidth\"=hex:01,02,03\n\"DisplayName\"=hex(1):41,00,42\n\"Id\"=\"{0000000A-000b-000C-"
      "0D0E-0f1011121314}\"\n");
  ASSERT_EQ(list.size(), 2u);
  // One whose name has no room does not hide those after it.
  EXPECT_EQ(Load("[S1" + std::string(300, 'x') + "]\n[S2]\n").size(), 1u);
  const StockItem& empty = list.front();
  EXPECT_EQ(std::tuple(empty.dwPaperWidth, empty.dwPaperLength, empty.dwSensorType,
                       empty.dwNumberCopies, empty.displayName),
            std::tuple(9000u, 6000u, 2u, 1u, u""));
  EXPECT_NE(empty.guid, GUID{});
  const StockItem& full = list.back();
  // Exactly four bytes are a number, whatever the value's type.
  EXPECT_EQ(std::tuple(full.dwDarkness, full.dwUnprintableTop, full.dwUnprintableLeft,
                       full.dwRotation, full.dwPaperWidth),
            std::tuple(7u, 0x04030201u, 0u, 0x00000078u, 9000u));
  EXPECT_EQ(full.displayName, u"A");  // a byte is no character
  EXPECT_EQ(full.guid, (GUID{10, 11, 12, {13, 14, 15, 16, 17, 18, 19, 20}}));
}

TEST_F(StockCatalogue, EachNumberGoesToItsField) {
  const std::pair<std::string, DWORD StockItem::*> rows[] = {
      {"SpeedInMmPerSec", &StockItem::dwSpeedInMmPerSec},
      {"Darkness", &StockItem::dwDarkness},
      {"Darkness2", &StockItem::dwDarkness2},
      {"PaperWidth", &StockItem::dwPaperWidth},
      {"PaperLength", &StockItem::dwPaperLength},
      {"UnprintableLeft", &StockItem::dwUnprintableLeft},
      {"UnprintableRight", &StockItem::dwUnprintableRight},
      {"UnprintableTop", &StockItem::dwUnprintableTop},
      {"UnprintableBottom", &StockItem::dwUnprintableBottom},
      {"OffsetX", &StockItem::dwOffsetX},
      {"OffsetY", &StockItem::dwOffsetY},
      {"SensorType", &StockItem::dwSensorType},
      {"GapDistance", &StockItem::dwGapDistance},
      {"IgnorePaperEnd", &StockItem::dwIgnorePaperEnd},
      {"Rotation", &StockItem::dwRotation},
      {"Mirror", &StockItem::dwMirror},
      {"Invert", &StockItem::dwInvert},
      {"TopSameAsBottom", &StockItem::dwTopSameAsBottom},
      {"BackfeedMode", &StockItem::dwBackfeedMode},
      {"BackfeedSpeed", &StockItem::dwBackfeedSpeed},
      {"PrintMode", &StockItem::dwPrintMode},
      {"NumberCopies", &StockItem::dwNumberCopies},
      {"RibbonSaver", &StockItem::dwRibbonSaver},
      {"SingleBuffer", &StockItem::dwSingleBuffer},
      {"IgnoreLabelPosition", &StockItem::dwIgnoreLabelPosition}};
  std::string key = "[S1]\n";
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    key += "\"" + rows[i].first + "\"=dword:" + std::to_string(11 + i) + "\n";  // hexadecimal
  }
  const StockList list = Load(key);
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(list.front().*rows[i].second, std::stoul(std::to_string(11 + i), nullptr, 16))
        << rows[i].first;
  }
}

TEST_F(StockCatalogue, NameHasRoomFor129Characters) {
  for (const std::size_t length : {129, 130}) {
    const std::string name(length, 'n');
    const StockList list = Load("[S1]\n\"DisplayName\"=\"" + name + "\"\n");
    EXPECT_EQ(list.front().displayName.size(), length == 129 ? 129u : 0u);
  }
  std::string unterminated = "[S1]\n\"DisplayName\"=hex(1):6e,00";
  for (int i = 1; i < 130; ++i) unterminated += ",6e,00";
  EXPECT_EQ(Load(unterminated + "\n").front().displayName, u"");
}

TEST_F(StockCatalogue, StockWithoutIdentityComesFirst) {
  const std::string id = "\"Id\"=\"{00000001-0000-0000-0000-000000000000}\"\n";
  const StockList list =
      Load("[S1]\n\"Darkness\"=dword:1\n" + id + "[S2]\n\"Darkness\"=dword:2\n" + id +
           "[S3]\n\"Darkness\"=dword:3\n\"Id\"=\"{00000000-0000-0000-0000-000000000000}\"\n" +
           "[S4]\n\"Id\"=\"no identifier\"\n");
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list.front().dwDarkness, 3u);
  EXPECT_NE(list.back().guid, GUID{});
  bool selected = false;
  EXPECT_EQ(ChooseStock(list, GUID{1, 0, 0, {}}, &selected)->dwDarkness, 1u);
  EXPECT_TRUE(selected);
  EXPECT_EQ(ChooseStock(list, GUID{9, 0, 0, {}}, &selected)->dwDarkness, 3u);
  EXPECT_FALSE(selected);
  EXPECT_EQ(ChooseStock({}, GUID{}, &selected), nullptr);
}

TEST_F(StockCatalogue, OnlyAStockWithoutIdNeedsARandomOne) {
  const auto guidsFail = [](const char* call, void*) {
    return std::string_view(call) == "CoCreateGuid";
  };
  PlatformSetFaultHook(guidsFail, nullptr);
  const StockList list = Load(
      "[S1]\n[S2]\n\"Id\"=\"{00000001-0000-0000-0000-000000000000}\"\n"
      "[S3]\n\"Id\"=\"{00000000-0000-0000-0000-000000000000}\"\n");
  PlatformSetFaultHook(nullptr, nullptr);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list.front().guid, GUID{});
  EXPECT_EQ(list.back().guid, (GUID{1, 0, 0, {}}));
}

TEST_F(StockCatalogue, NamesAreStrippedForTheKey) {
  EXPECT_EQ(StripKeyChars(u"\\\\ho st\\La:bel/ 1"), u"hostLabel1");
  StockList list(2);
  LoadStocksForPrinter(list, &list);  // no printer's handle
  EXPECT_TRUE(list.empty());
}

TEST(OemDevFieldTable, CoversTheRecordWithoutOverlap) {
  std::set<std::string_view> names;
  std::size_t end = sizeof(OEM_DMEXTRAHEADER);
  for (const OemDevField& field : OemDevFields()) {
    EXPECT_TRUE(names.insert(field.name).second) << field.name;
    EXPECT_GE(field.offset, end) << field.name;
    end = field.offset + field.size;
  }
  EXPECT_EQ(end, 2708u);
  EXPECT_EQ(names.size(), 96u);
}

}  // namespace
