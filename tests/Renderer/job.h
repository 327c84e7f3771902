// Jobs through the loaded plug-in, in a state folder of their own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/png_image.h"
#include "tests/support/record.h"
#include "tests/support/temp_home.h"
#include "tests/torture/machine.h"

inline const std::string kHeader =
    ";Created: dd.mm.yyyy, hh:mm:ss\r\n;Driver version: 1.3.0.25\r\n;Printer model: VLX Label\r\n"
    ";Print job name: job\r\n";

class Job : public ::testing::Test {
 protected:
  using Events = std::vector<std::string>;

  void SetUp() override {
    machine.widthPx = 60;
    machine.heightPx = 40;
    machine.bandPx = 10;
    machine.notesCalls = true;
    ASSERT_TRUE(machine.Do('O'));
    DevModeCall call(nullptr, *machine.devmode);
    ASSERT_EQ(machine.Object()->DevMode(OEMDM_DEFAULT, &call.block), S_OK);
    machine.Run("VN");
  }
  void TearDown() override { EXPECT_EQ(machine.results, ""); }

  void Set(const std::string& fields) { SetFields(*machine.devmode, fields); }
  // The writes between the driver's own calls, page images as <png>.
  Events Take() {
    Events events = machine.Writes();
    machine.writes.clear();
    for (std::string& event : events) {
      const PngImage png = DecodePng(event);
      if (png.width == 0) continue;
      event = "<png " + std::to_string(png.width) + "x" + std::to_string(png.height) + " " +
              std::to_string(png.bitDepth) + "-bit>";
    }
    return events;
  }
  // An image that has been downloaded since; of width 0 when none was.
  PngImage Image(const std::string& name = "0") const {
    const auto& writes = machine.writes;
    const auto found = std::find(writes.begin(), writes.end(), "dPNG;" + name + "\r\n\x1B:");
    return found == writes.end() ? PngImage() : DecodePng(found[1]);
  }
  std::string LastLogLine() const { return home.LogLines().back(); }

  TempHome home;
  LoadedPlugin plugin;
  Machine machine;
};
