// Labels in dots: where each image lands, and the picture of a label.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "viewer/image/bit_image.h"
#include "viewer/language/job.h"

namespace viewer {

// A label of the printer at a resolution, its corner where the printing starts: x to the right
// across the web, y in the direction of the feed.
struct LabelDots {
  std::int64_t width = 0;
  std::int64_t length = 0;
};
LabelDots SizeInDots(const Label& label, double dpi);

// Where a placed image lands, in dots from the label's corner. Of two colours, the left half of the
// width prints black and the right half the highlight; `left` counts from the half's own edge.
struct Landing {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t width = 0;  // as turned
  std::int64_t height = 0;
  bool highlight = false;

  bool Within(const LabelDots& label) const {
    return left >= 0 && top >= 0 && left + width <= label.width && top + height <= label.length;
  }
};
// The placement must have an image and the label a size.
Landing Land(const Label& label, const Placement& placement, double dpi);

// The dots of a label. Black lies over the highlight where both print.
struct LabelPicture {
  BitImage black;
  BitImage highlight;

  bool operator==(const LabelPicture&) const = default;
};

// Draws a label as it leaves the printer: the row printed first on top. None, with the reason in
// `why`, when the label has no size or is too large.
std::optional<LabelPicture> DrawLabel(const Label& label, double dpi, std::string& why);

// Degrees to the left that bring the images of a label upright; `before` when it has none.
int UprightTurn(const Label& label, int before);
LabelPicture Turn(const LabelPicture& picture, int degrees);

// The picture as a PNG file: white, black and the highlight colour.
std::string PicturePng(const LabelPicture& picture, double dpi, Colour highlight);

constexpr Colour kDefaultHighlight = {0xE3, 0x00, 0x0F};
constexpr double kDefaultDpi = 300;

// The resolution that a job was made for: a job does not say it, but a page image is as wide as the
// label or, when nothing was cropped, of its very size. None when no image tells.
std::optional<double> GuessDpi(std::string_view job);

}  // namespace viewer
