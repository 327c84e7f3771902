// Fixture for the images of pages: documents of one painted page, saved stages, failing calls; and
// the pictures that are painted.
#pragma once

#include "platform/extensions.h"
#include "tests/driver/job_test.h"

class Pages : public JobTest {
 protected:
  ~Pages() override {
    PlatformSetFaultHook(nullptr, nullptr);
    unsetenv("VLX_SAVE_BITMAPS");
  }

  using Picture = DWORD (*)(LONG x, LONG y);
  // A document of one page, of that size and those colours.
  void Print(LONG width, LONG height, Picture picture) {
    driver.widthPx = width;
    driver.heightPx = height;
    driver.paint = picture;
    driver.writes.clear();
    EXPECT_TRUE(driver.PrintDocument("a"));
  }
  // Lets one platform call fail, the n-th of that name.
  void FailCall(const char* name, int n) {
    m_failing = {name, n};
    PlatformSetFaultHook(
        [](const char* call, void* context) {
          auto& failing = *static_cast<std::pair<std::string, int>*>(context);
          return failing.first == call && --failing.second == 0;
        },
        &m_failing);
  }
  // The names of the stages saved since SaveStages, sorted.
  Events Stages() const {
    Events names;
    for (const auto& entry : std::filesystem::directory_iterator(home.Path("stages"))) {
      names.push_back(entry.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  PngImage Stage(const std::string& name) const {
    std::ifstream file(home.Path("stages/" + name + ".png"), std::ios::binary);
    return DecodePng({std::istreambuf_iterator<char>(file), {}});
  }
  void SaveStages() {
    std::filesystem::remove_all(home.Path("stages"));
    std::filesystem::create_directory(home.Path("stages"));
    setenv("VLX_SAVE_BITMAPS", home.Path("stages").c_str(), 1);
  }

 private:
  std::pair<std::string, int> m_failing;
};

inline DWORD Grey(LONG, LONG) { return 0x606060; }
inline DWORD Paper(LONG, LONG) { return 0xFFFFFF; }
inline DWORD DotAt30And40(LONG x, LONG y) { return x == 30 && y == 40 ? 0 : 0xFFFFFF; }
inline DWORD Speckles(LONG x, LONG y) {
  return x * x % 3 == 0 || (x + 3 * y) % 5 == 0 ? 0 : 0xFFFFFF;
}
// All mixtures of white, black and something coloured.
inline DWORD Mixtures(LONG x, LONG y) {
  return static_cast<DWORD>(4 * x) << 16 | static_cast<DWORD>(4 * y) << 8 |
         static_cast<DWORD>(x + y);
}
// Black, and to the right of it red, away from the edges.
inline DWORD TwoBlocks(LONG x, LONG y) {
  if (y < 8 || y >= 24) return 0xFFFFFF;
  return x >= 12 && x < 20 ? 0x000000 : x >= 30 && x < 44 ? 0xFF0000 : 0xFFFFFF;
}
