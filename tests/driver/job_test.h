// Fixture for jobs through the loaded plug-in, in a state folder of their own: a driver with pages
// of 60 x 40 pixels, and what it received as a list of events.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/driver/script.h"
#include "tests/support/png_image.h"
#include "tests/support/record.h"
#include "tests/support/temp_home.h"

class JobTest : public ::testing::Test {
 protected:
  using Events = std::vector<std::string>;

  void SetUp() override {
    driver.widthPx = 60;
    driver.heightPx = 40;
    driver.bandPx = 10;
    driver.notesCalls = true;
    ASSERT_TRUE(driver.CreateObject());
    DevModeCall call(nullptr, *driver.devmode);
    ASSERT_EQ(driver.Object()->DevMode(OEMDM_DEFAULT, &call.block), S_OK);
    ASSERT_TRUE(driver.Open());
  }

  void Set(const std::string& fields) { SetFields(*driver.devmode, fields); }
  // The writes and the calls of the driver's own functions since the last time, in their order;
  // page images as <png WIDTHxHEIGHT BITS-bit>.
  Events Take() {
    Events events = WithoutTime(std::move(driver.writes));
    driver.writes.clear();
    for (std::string& event : events) {
      const PngImage png = DecodePng(event);
      if (png.width == 0) continue;
      event = "<png " + std::to_string(png.width) + "x" + std::to_string(png.height) + " " +
              std::to_string(png.bitDepth) + "-bit>";
    }
    return events;
  }
  // The image downloaded last under that name; its width is 0 if there is none.
  PngImage Image(const std::string& name = "0") const {
    const auto& writes = driver.writes;
    const auto found = std::find(writes.rbegin(), writes.rend(), "dPNG;" + name + "\r\n\x1B:");
    return found == writes.rend() ? PngImage() : DecodePng(found.base()[0]);
  }
  // The log lines since the last time, "level<TAB>category<TAB>text", addresses as #.
  Events NewLog() {
    const Events all = home.LogLines();
    Events lines(all.begin() + static_cast<std::ptrdiff_t>(m_linesSeen), all.end());
    m_linesSeen = all.size();
    for (std::string& line : lines) {
      for (std::size_t at; (at = line.find("=0x")) != line.npos;) {
        line.replace(at, line.find_first_not_of("0123456789abcdef", at + 3) - at, "=#");
      }
    }
    return lines;
  }
  std::string LastLogLine() const { return home.LogLines().back(); }

  TempHome home;
  Plugin plugin;
  Driver driver;

 private:
  std::size_t m_linesSeen = 0;
};

inline const std::string kHeader =
    ";Created: dd.mm.yyyy, hh:mm:ss\r\n;Driver version: 1.3.0.25\r\n;Printer model: VLX Label\r\n"
    ";Print job name: job\r\n";
