// Labels in dots: where each image lands, and pictures of whole labels.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "viewer/image/bit_image.h"
#include "viewer/language/job.h"

namespace viewer {

// The size of a label at a resolution: width across the web, length along the feed. The origin is
// the corner where printing starts.
struct LabelDots {
  std::int64_t width = 0;
  std::int64_t length = 0;
};
LabelDots SizeInDots(const Label& label, double dpi);

// Where a placed image lands, in dots from the label's origin. In two colours, the left half of the
// width prints black and the right half the highlight; `left` counts from the edge of its half.
struct Landing {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t width = 0;  // after turning
  std::int64_t height = 0;
  bool highlight = false;

  bool Within(const LabelDots& label) const {
    return left >= 0 && top >= 0 && left + width <= label.width && top + height <= label.length;
  }
};
// The placement must have an image and the label a size.
Landing Land(const Label& label, const Placement& placement, double dpi);

// The dots of a label. Where both print, black covers the highlight.
struct LabelPicture {
  BitImage black;
  BitImage highlight;

  bool operator==(const LabelPicture&) const = default;
};

// Draws a label as it leaves the printer, with the row printed first on top. Returns nullopt, with
// the reason in `why`, if the label has no size or is too large.
std::optional<LabelPicture> DrawLabel(const Label& label, double dpi, std::string& why);

// Returns the counter-clockwise turn that brings a label's images upright; `before` if it has none.
int UprightTurn(const Label& label, int before);
// Turns both colours counter-clockwise by 0, 90, 180 or 270 degrees.
LabelPicture Turn(const LabelPicture& picture, int degrees);

// Encodes the picture as a PNG file in white, black and the highlight colour.
std::string PicturePng(const LabelPicture& picture, double dpi, Colour highlight);

constexpr Colour kDefaultHighlight = {0xE3, 0x00, 0x0F};
constexpr double kDefaultDpi = 300;

// Guesses the resolution that a job was made for. A job does not state it, but a page image is as
// wide as its label, and as long if it was not cropped. Returns nullopt if no image determines it.
std::optional<double> GuessDpi(std::string_view job);

}  // namespace viewer
