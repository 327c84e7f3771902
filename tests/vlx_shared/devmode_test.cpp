#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "config/vlx_shared.h"
#include "tests/support/record.h"

namespace {

class DevMode : public ::testing::Test {
 protected:
  HRESULT Call(DWORD mode, const void* in = nullptr, WORD extra = 0) {
    DevModeCall call(in, out, extra, room);
    SetLastError(0);
    const HRESULT hr = hrOEMDevMode(client, nullptr, WTEXT(""), mode, &call.block);
    needed = call.block.cbBufSize;
    return hr;
  }
  OEMDEV Default() {
    EXPECT_EQ(Call(OEMDM_DEFAULT), S_OK);
    return out;
  }

  CLoggerClient client;
  OEMDEV out = {};
  DWORD room = sizeof(OEMDEV);
  DWORD needed = 0;
};

TEST_F(DevMode, DefaultIsACurrentOneColourRecord) {
  room = 0;
  EXPECT_EQ(Call(OEMDM_SIZE), S_OK);
  EXPECT_EQ(needed, 2708u);
  room = sizeof(OEMDEV);
  const OEMDEV record = Default();
  const OEM_DMEXTRAHEADER current = {2708, 0x564C5831, 1};
  EXPECT_EQ(std::memcmp(&record.header, &current, sizeof current), 0);
  EXPECT_EQ(record.dwColorMode, 1u);
}

TEST_F(DevMode, RefusesWithoutTouchingTheOutput) {
  OEMDEV record = Default();
  const OEMDEV before = out;
  const auto refused = [&](DWORD mode, const void* in, DWORD error, WORD extra = 0) {
    EXPECT_EQ(Call(mode, in, extra), E_FAIL);
    EXPECT_EQ(GetLastError(), error);
    EXPECT_EQ(std::memcmp(&out, &before, sizeof out), 0);
  };
  EXPECT_EQ(hrOEMDevMode(client, nullptr, nullptr, OEMDM_SIZE, nullptr), E_FAIL);
  refused(0, &record, 87);
  refused(5, &record, 87);
  refused(OEMDM_MERGE, nullptr, 87);
  refused(OEMDM_CONVERT, std::vector<BYTE>(11).data(), 87, 11);
  record.header.dwSize = 11;
  refused(OEMDM_MERGE, &record, 87);
  record.header = {2708, 0x564C5832, 1};
  refused(OEMDM_CONVERT, &record, 87);
  room = 2707;
  refused(OEMDM_DEFAULT, nullptr, 122);
  DevModeCall nowhere(nullptr, out);
  nowhere.block.pOEMDMOut = nullptr;
  EXPECT_EQ(hrOEMDevMode(client, nullptr, WTEXT(""), OEMDM_DEFAULT, &nowhere.block), E_FAIL);
}

TEST_F(DevMode, WhatIsInRangeIsKept) {
  const OEMDEV defaults = Default();
  for (const char* fields : {"dwSensorType=0 dwRotation=3 dwColorMode=2 wDitherer=5",
                             "dwSensorType=5 dwRotation=1 dwInitialCutSent=1 szModelCode=K7"}) {
    OEMDEV record = defaults;
    SetFields(record, fields);
    EXPECT_EQ(Call(OEMDM_CONVERT, &record), S_OK);
    EXPECT_EQ(std::memcmp(&out, &record, sizeof out), 0) << fields;
  }
  OEMDEV header = {};  // what a header does not cover has the defaults
  header.header = {12, 0x564C5831, 1};
  DevModeCall sizeless(&header, out);  // the public devmode does not tell
  sizeless.block.pPublicDMIn = &sizeless.publicDevmode;
  EXPECT_EQ(hrOEMDevMode(client, nullptr, WTEXT(""), OEMDM_CONVERT, &sizeless.block), S_OK);
  EXPECT_EQ(Call(OEMDM_CONVERT, &header, 12), S_OK);
  EXPECT_EQ(std::memcmp(&out, &defaults, sizeof out), 0);
}

TEST_F(DevMode, RecordFromOutsideIsRepaired) {
  OEMDEV record = Default();
  std::memset(record.szModelCode, 'K', sizeof record.szModelCode);
  std::memset(record.szCustomText7, 'x', sizeof record.szCustomText7);
  SetFields(record, "dwSensorType=6 dwRotation=4 dwColorMode=0 wDitherer=6 dwInitialCutSent=1");
  record.dwSpeed = 0xFFFFFFFF;
  record.reserved00C[5] = 0x5A;
  out = record;
  EXPECT_EQ(Call(OEMDM_MERGE, &out), S_OK);  // in place
  const OEMDEV repaired = out;
  OEMDEV expected = Default();
  expected.dwSpeed = 0xFFFFFFFF;
  expected.reserved00C[5] = 0x5A;
  EXPECT_EQ(std::memcmp(&repaired, &expected, sizeof repaired), 0);
  EXPECT_EQ(repaired.dwColorMode, 1u);
  record.dwColorMode = 3;
  EXPECT_EQ(Call(OEMDM_MERGE, &record), S_OK);
  EXPECT_EQ(out.dwColorMode, 1u);
}

TEST_F(DevMode, ConversionLeavesACurrentRecordAlone) {
  ConvertEp2Qor(nullptr);
  std::mt19937 random(5);
  OEMDEV record;
  for (int i = 0; i < 50; ++i) {
    auto* bytes = reinterpret_cast<BYTE*>(&record);
    std::generate(bytes, bytes + sizeof record, [&] { return static_cast<BYTE>(random()); });
    if (i % 2 == 0) record.header = {2708, 0x564C5831, 1};
    if (i % 10 == 1) record.header = {0x700, 0x564C5831, 0};
    OEMDEV once = record;
    ConvertEp2Qor(&once);
    EXPECT_TRUE(i % 2 != 0 || std::memcmp(&once, &record, sizeof record) == 0);
    // Bytes after the end of a record do not belong to it.
    EXPECT_TRUE(i % 10 != 1 || (once.nPSource1Value == 0 && once.header.dwSize == 2708));
    OEMDEV twice = once;
    ConvertEp2Qor(&twice);
    EXPECT_EQ(std::memcmp(&once, &twice, sizeof record), 0);
  }
  ConvertEp2Qor(nullptr);
}

}  // namespace
