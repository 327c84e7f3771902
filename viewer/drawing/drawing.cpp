#include "viewer/drawing/drawing.h"

#include <algorithm>
#include <cmath>

#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr double kFarthestMm = 1e7;

std::int64_t Dots(double mm, double dpi) {
  return std::llround(std::clamp(mm, -kFarthestMm, kFarthestMm) * dpi / kMmAnInch);
}

bool Sideways(int angle) { return angle == 90 || angle == 270; }

// Sets the dots of an image on a label. Dots outside the label are lost.
void Stamp(const BitImage& image, const Landing& at, BitImage& label) {
  const auto left = std::max<std::int64_t>(0, -at.left);
  const auto right = std::min<std::int64_t>(image.width, label.width - at.left);
  const auto top = std::max<std::int64_t>(0, -at.top);
  const auto bottom = std::min<std::int64_t>(image.height, label.height - at.top);
  for (std::int64_t y = top; y < bottom; ++y) {
    const std::uint8_t* row = image.bits.data() + static_cast<std::size_t>(y) * image.stride;
    for (std::int64_t x = left; x < right; ++x) {
      if (row[x / 8] == 0) {
        x |= 7;  // skip eight white dots
      } else if ((row[x / 8] >> (7 - x % 8) & 1) != 0) {
        label.Set(static_cast<std::uint32_t>(at.left + x), static_cast<std::uint32_t>(at.top + y));
      }
    }
  }
}

}  // namespace

LabelDots SizeInDots(const Label& label, double dpi) {
  return {Dots(label.WidthMm(), dpi), label.size ? Dots(label.size->lengthMm, dpi) : 0};
}

Landing Land(const Label& label, const Placement& placement, double dpi) {
  const bool sideways = Sideways(placement.angle);
  Landing at;
  at.width = sideways ? placement.image->height : placement.image->width;
  at.height = sideways ? placement.image->width : placement.image->height;
  // The image turns about its first dot.
  const std::int64_t back = placement.angle == 180 || placement.angle == 270 ? at.width : 0;
  const std::int64_t up = placement.angle == 180 || placement.angle == 90 ? at.height : 0;
  const double halfMm = label.WidthMm();
  const double middleDots = placement.xMm * dpi / kMmAnInch - static_cast<double>(back) +
                            static_cast<double>(at.width) / 2;
  at.highlight = label.twoColours && middleDots >= halfMm * dpi / kMmAnInch;
  at.left = Dots(at.highlight ? placement.xMm - halfMm : placement.xMm, dpi) - back +
            Dots(label.size->offsetXMm, dpi);
  at.top = Dots(placement.yMm, dpi) - up + Dots(label.size->offsetYMm, dpi);
  return at;
}

std::optional<LabelPicture> DrawLabel(const Label& label, double dpi, std::string& why) {
  const LabelDots size = SizeInDots(label, dpi);
  if (!label.size || size.width <= 0 || size.length <= 0) {
    why = "the job gives it no size";
    return std::nullopt;
  }
  if (size.width > kMostDotsASide || size.length > kMostDotsASide ||
      static_cast<std::uint64_t>(size.width * size.length) > kMostDots) {
    why = "it is " + Plain(label.WidthMm()) + " x " + Plain(label.size->lengthMm) +
          " mm, more than can be drawn at " + Plain(dpi) + " dpi; check its size or give --dpi";
    return std::nullopt;
  }
  const auto width = static_cast<std::uint32_t>(size.width);
  const auto length = static_cast<std::uint32_t>(size.length);
  LabelPicture picture = {BitImage(width, length), BitImage(width, length)};
  for (const Placement& placement : label.placements) {
    if (!placement.image) continue;
    const Landing at = Land(label, placement, dpi);
    BitImage& plane = at.highlight ? picture.highlight : picture.black;
    if (placement.angle == 0) {
      Stamp(*placement.image, at, plane);
    } else {
      Stamp(Turn(*placement.image, placement.angle), at, plane);
    }
  }
  return picture;
}

int UprightTurn(const Label& label, int before) {
  if (label.placements.empty()) return before;
  return (360 - label.placements.front().angle) % 360;
}

LabelPicture Turn(const LabelPicture& picture, int degrees) {
  return {Turn(picture.black, degrees), Turn(picture.highlight, degrees)};
}

std::string PicturePng(const LabelPicture& picture, double dpi, Colour highlight) {
  const BitImage& black = picture.black;
  const std::vector<Colour> palette = {{255, 255, 255}, {0, 0, 0}, highlight};
  return WritePng(black.width, black.height, dpi, palette, [&](std::uint32_t y, std::uint8_t* row) {
    for (std::uint32_t x = 0; x < black.width; ++x) {
      row[x] = black.At(x, y) ? 1 : picture.highlight.At(x, y) ? 2 : 0;
    }
  });
}

}  // namespace viewer
