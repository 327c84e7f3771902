#include "tools/test_label/blocks.h"

#include <algorithm>
#include <cmath>

#include "common/pixel_text.h"

namespace {

constexpr int kMostModuleDots = 4;
constexpr int kQuietModules = 10;  // on either side of bars
constexpr double kCodeHeightMm = 8;
constexpr double kTextMm = 65;  // longer lines are broken

Block SettingLines(const TestLabelJob& job, int widthDots) {
  std::vector<std::string> lines;
  for (const std::string& setting : job.settings) {
    if (!lines.empty() && job.TextWidth(lines.back() + ", " + setting) <= widthDots) {
      lines.back() += ", " + setting;
    } else {
      lines.push_back(setting);
    }
  }
  Block block = {"", {0, static_cast<int>(lines.size()) * job.LineDots()}, nullptr};
  for (const std::string& line : lines) {
    block.size.width = std::max(block.size.width, job.TextWidth(line));
  }
  block.draw = [job, lines](Canvas& canvas, Spot at) {
    for (const std::string& line : lines) {
      canvas.Text(at, line);
      at.y += job.LineDots();
    }
  };
  return block;
}

// Crosses of 1 to 8 dots, black on white and white on black: too little heat breaks the thin black
// ones, too much closes the thin white ones.
Block Heat(const TestLabelJob& job) {
  constexpr int kSteps = 8;
  const int cell = job.Dots(4), gap = job.Dots(0.5);
  const auto cross = [cell](Canvas& canvas, Spot at, int dots, Ink ink) {
    canvas.Fill({at.x + (cell - dots) / 2, at.y}, {dots, cell}, ink);
    canvas.Fill({at.x, at.y + (cell - dots) / 2}, {cell, dots}, ink);
  };
  return {"heat, 1 to 8 dots",
          {kSteps * (cell + gap), 2 * cell + gap + job.LineDots()},
          [=](Canvas& canvas, Spot at) {
            for (int dots = 1; dots <= kSteps; ++dots, at.x += cell + gap) {
              const Spot below = {at.x, at.y + cell + gap};
              cross(canvas, at, dots, kBlack);
              canvas.Fill(below, {cell, cell});
              cross(canvas, below, dots, kWhite);
              canvas.Text({at.x, below.y + cell + job.TextDots()}, std::to_string(dots));
            }
          }};
}

Ink Grey(double coverage) {
  const auto level = static_cast<std::uint8_t>(std::lround(255 * (1 - coverage)));
  return {level, level, level};
}

Block GreySteps(const TestLabelJob& job) {
  const int side = job.Dots(4.5);
  return {"greys, percent", {11 * side, side + job.LineDots()}, [=](Canvas& canvas, Spot at) {
            for (int percent = 0; percent <= 100; percent += 10, at.x += side) {
              canvas.Fill(at, {side, side}, Grey(percent / 100.0));
              canvas.Text({at.x, at.y + side + job.TextDots()}, std::to_string(percent));
            }
          }};
}

// A half tint under coarse stripes of known coverage, whose edges spread little. The stripes that
// look as dark as the tint tell what the tint really covers.
Block DotGain(const TestLabelJob& job) {
  const int unit = std::max(1, static_cast<int>(std::lround(job.dpi / 300.0)));
  const int period = 20 * unit, width = 5 * period, height = job.Dots(4);
  return {"dot gain: equal where?",
          {6 * width, 2 * height + job.LineDots()},
          [=](Canvas& canvas, Spot at) {
            canvas.Fill({at.x, at.y + height}, {6 * width, height}, {128, 128, 128});
            for (int gain = 0; gain <= 25; gain += 5, at.x += width) {
              for (int x = 0; x < width; x += period) {
                canvas.Fill({at.x + x, at.y}, {(10 + gain / 5) * unit, height});
              }
              canvas.Text({at.x, at.y + 2 * height + job.TextDots()}, std::to_string(gain));
            }
          }};
}

// A bar code's text is its module in dots and its angle: 3090.
Block Bars(const TestLabelJob& job, int dots, bool lying) {
  const std::string digits = std::to_string(dots) + (lying ? "090" : "000");
  const std::string row = LinearSymbol(digits).front();
  const int quiet = kQuietModules * dots, height = job.Dots(kCodeHeightMm);
  const int length = static_cast<int>(row.size()) * dots;
  return {lying ? std::to_string(dots) + " across" : "bars " + std::to_string(dots),
          lying ? Extent{height, length + 2 * quiet} : Extent{length + 2 * quiet, height},
          [=](Canvas& canvas, Spot at) {
            for (std::size_t i = 0; i < row.size(); ++i) {
              if (row[i] != '#') continue;
              const int along = quiet + static_cast<int>(i) * dots;
              if (lying) {
                canvas.Fill({at.x, at.y + along}, {height, dots});
              } else {
                canvas.Fill({at.x + along, at.y}, {dots, height});
              }
            }
          }};
}

Block Square(int dots) {
  const std::vector<std::string> rows = SquareSymbol("VLX " + std::to_string(dots) + " DOTS");
  const int quiet = 4 * dots, side = static_cast<int>(rows.size()) * dots + 2 * quiet;
  return {"square " + std::to_string(dots), {side, side}, [=](Canvas& canvas, Spot at) {
            canvas.Symbol({at.x + quiet, at.y + quiet}, rows, dots);
          }};
}

// Verniers along and across: ticks of the second colour are a step farther apart than the black
// ones, so that one pair meets for each step of error.
Block Register(const TestLabelJob& job) {
  constexpr int kTicks = 6;  // on either side of the middle one
  const int step = std::max(1, job.Dots(0.1)), pitch = job.Dots(1.5), length = job.Dots(2);
  const int stroke = std::max(1, job.Dots(0.2));
  const int half = kTicks * (pitch + step) + stroke, gap = job.Dots(3);
  char title[60];
  std::snprintf(title, sizeof title, "register: 1 step = %.2f mm", step * 25.4 / job.dpi);
  return {title,
          {2 * half + gap + 2 * length + job.TextWidth("-6"), 2 * half + job.LineDots()},
          [=](Canvas& canvas, Spot at) {
            const int centre = half - stroke;
            const Spot down = {at.x + 2 * half + gap, at.y};
            for (int k = -kTicks; k <= kTicks; ++k) {
              const int black = centre + k * pitch, red = centre + k * (pitch + step);
              canvas.Fill({at.x + black, at.y}, {stroke, length});
              canvas.Fill({at.x + red, at.y + length}, {stroke, length}, *job.highlight);
              canvas.Fill({down.x, down.y + black}, {length, stroke});
              canvas.Fill({down.x + length, down.y + red}, {length, stroke}, *job.highlight);
              if (k % 3 != 0) continue;
              canvas.Text({at.x + red, at.y + 2 * length + job.TextDots()}, std::to_string(k));
              canvas.Text({down.x + 2 * length + job.TextDots(), down.y + red}, std::to_string(k));
            }
          }};
}

}  // namespace

int TestLabelJob::Dots(double mm) const { return static_cast<int>(std::lround(mm * dpi / 25.4)); }
int TestLabelJob::TextDots() const {
  return std::max(1, static_cast<int>(std::lround(dpi / 120.0)));
}
int TestLabelJob::LineDots() const { return kPixelTextHeight * TextDots(); }
int TestLabelJob::TextWidth(const std::string& text) const {
  return PixelTextWidth(text) * TextDots();
}

std::vector<Block> TestBlocks(const TestLabelJob& job, int widthDots) {
  std::vector<Block> blocks = {SettingLines(job, std::min(widthDots, job.Dots(kTextMm))),
                               Heat(job)};
  for (int dots = 1; dots <= kMostModuleDots; ++dots) blocks.push_back(Bars(job, dots, false));
  for (int dots = kMostModuleDots; dots > 0; --dots) blocks.push_back(Bars(job, dots, true));
  if (job.highlight) blocks.push_back(Register(job));
  blocks.push_back(DotGain(job));
  blocks.push_back(GreySteps(job));
  for (int dots = 1; dots <= kMostModuleDots; ++dots) blocks.push_back(Square(dots));
  return blocks;
}
