#include <algorithm>
#include <cmath>

#include "viewer/drawing/drawing.h"

namespace viewer {

namespace {

constexpr double kUsualDpi[] = {203, 300, 600, 200, 400, 406, 305, 609, 152, 1200};
constexpr int kLeastDpi = 100;
constexpr int kMostDpi = 1200;
constexpr int kMostLabelsRead = 20;

// True if the dots cover the length to within one dot; pages are cut to whole dots.
bool Fills(std::uint32_t dots, double mm, double dpi) {
  return std::abs(dots - mm * dpi / kMmAnInch) < 1.0;
}

std::optional<double> GuessFrom(const Label& label) {
  for (const Placement& placement : label.placements) {
    if (!placement.image) continue;
    const bool sideways = placement.angle == 90 || placement.angle == 270;
    const std::uint32_t across = sideways ? placement.image->height : placement.image->width;
    const std::uint32_t along = sideways ? placement.image->width : placement.image->height;
    const auto fillsAll = [&](double dpi) {
      return Fills(across, label.WidthMm(), dpi) && Fills(along, label.size->lengthMm, dpi);
    };
    const auto fillsAcross = [&](double dpi) { return Fills(across, label.WidthMm(), dpi); };
    // An image of the label's exact size determines any resolution. A cropped one only has the
    // width, so only the usual resolutions count.
    const auto whole = std::find_if(std::begin(kUsualDpi), std::end(kUsualDpi), fillsAll);
    if (whole != std::end(kUsualDpi)) return *whole;
    const double dpi = std::round(across * kMmAnInch / label.WidthMm());
    if (dpi >= kLeastDpi && dpi <= kMostDpi && fillsAll(dpi)) return dpi;
    const auto cropped = std::find_if(std::begin(kUsualDpi), std::end(kUsualDpi), fillsAcross);
    if (cropped != std::end(kUsualDpi)) return *cropped;
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> GuessDpi(std::string_view job) {
  JobReader reader(job);
  for (int i = 0; i < kMostLabelsRead; ++i) {
    const std::optional<Label> label = reader.Next();
    if (!label) break;
    if (!label->size || label->WidthMm() <= 0) continue;
    if (const std::optional<double> dpi = GuessFrom(*label)) return dpi;
  }
  return std::nullopt;
}

}  // namespace viewer
