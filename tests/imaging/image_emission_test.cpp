#include "imaging/image_emission.h"

#include <gtest/gtest.h>

#include "config/device_state.h"
#include "tests/support/logged_home.h"

namespace {

TEST(ImageEmission, RefusesAnIncompleteDevice) {
  const LoggedHome home;
  COemPDEV state;
  DEVOBJ device = {};
  SURFOBJ surface = {};
  auto* image = reinterpret_cast<Gdiplus::Bitmap*>(&state);  // never looked at
  const auto refused = [&](SURFOBJ* pso, Gdiplus::Bitmap* background) {
    const std::size_t before = home.LogLines().size();
    SetLastError(0);
    EXPECT_EQ(SendImageToPrinter(pso, background, nullptr, false, false), 0);
    EXPECT_EQ(GetLastError(), 87u);
    std::string lines;
    for (std::size_t i = before + 1; i < home.LogLines().size(); ++i) lines += home.LogLines()[i];
    return lines;
  };
  const auto line = [](const std::string& name) {
    return "error\t\tSendImageToPrinter: " + name + " == NULL !!!";
  };
  EXPECT_EQ(refused(nullptr, nullptr), line("pso") + line("pbmpBackground"));
  EXPECT_EQ(refused(nullptr, image), line("pso"));
  EXPECT_EQ(refused(&surface, nullptr), line("pbmpBackground"));
  EXPECT_EQ(refused(&surface, image), line("pDevObj"));
  surface.dhpdev = &device;
  EXPECT_EQ(refused(&surface, image), line("pOemPDEV"));
  device.pdevOEM = &state;
  EXPECT_EQ(refused(&surface, image), line("pOemDevMode"));
}

}  // namespace
