// Codes of bars side by side. The label is cut into bands of a millimetre. Bars run through several
// bands, so each column prints the same share of dots in all of them; text, pictures and tints do
// not look like that. A scan line of such a code is clean if it crosses exactly as many edges as
// the bars have on average: every loose dot adds two. The limits come from
// scripts/measure_codes.py.

#include <algorithm>
#include <bit>
#include <cmath>

#include "viewer/codes/codes.h"

namespace viewer {

namespace {

constexpr std::uint32_t kLeastBandRows = 8;
constexpr double kLongestGapMm = 2.2;  // white within a code; a longer one ends it
constexpr double kWidestBarMm = 3;
constexpr std::size_t kFewestBars = 10;
constexpr std::size_t kFewestBands = 5;  // shorter bars could be the strokes of letters
constexpr double kFinestDots = 1.35;     // of a bar or a space; finer ones count as a single dot
constexpr double kFewCleanRows = 0.01;   // share of clean scan lines; with fewer, none is found
constexpr double kMostCleanRows = 0.65;  // with more, the bars can be measured

using Counts = std::vector<std::uint32_t>;  // of dark dots in each column

struct Stretch {
  std::uint32_t left = 0, right = 0;  // right is exclusive
};

struct Region : Stretch {
  std::uint32_t top = 0;
  std::size_t bands = 0;
  Counts counts;  // of its last band
};

std::vector<std::uint32_t> EdgesOf(const Counts& counts, Stretch at, std::uint32_t rows) {
  std::vector<std::uint32_t> edges;
  bool dark = false;
  for (std::uint32_t x = at.left; x < at.right; ++x) {
    if ((2 * counts[x] > rows) == dark) continue;
    edges.push_back(x);
    dark = !dark;
  }
  if (dark) edges.push_back(at.right);
  return edges;
}

void AddRow(const BitImage& image, std::uint32_t y, Counts& counts) {
  const std::uint8_t* row = image.bits.data() + y * image.stride;
  for (std::size_t byte = 0; byte < image.stride; ++byte) {
    for (unsigned bits = row[byte]; bits != 0; bits &= bits - 1) {
      counts[byte * 8 + 7 - static_cast<unsigned>(std::countr_zero(bits))]++;
    }
  }
}

// Cuts a band at its long white gaps.
std::vector<Stretch> Split(const Counts& counts, std::uint32_t gap) {
  std::vector<Stretch> parts;
  std::uint32_t end = 0;  // of the last dark column
  for (std::uint32_t x = 0; x < counts.size(); ++x) {
    if (counts[x] == 0) continue;
    if (parts.empty() || x - end > gap) parts.push_back({x, x});
    parts.back().right = end = x + 1;
  }
  return parts;
}

// Whether the steps from bar to bar differ. In hatching, rulers and tints all are the same.
bool IsIrregular(const std::vector<std::uint32_t>& edges) {
  std::vector<std::uint32_t> steps;
  for (std::size_t i = 0; i + 2 < edges.size(); i += 2) steps.push_back(edges[i + 2] - edges[i]);
  std::sort(steps.begin(), steps.end());
  const std::uint32_t small = steps[steps.size() / 10], large = steps[steps.size() * 9 / 10];
  return 2 * large >= 3 * small && large - small >= 2;
}

// Whether nearly every bar is dark somewhere and nearly every space white. In a picture few are.
bool IsInContrast(const Counts& counts, const std::vector<std::uint32_t>& edges,
                  std::uint32_t rows) {
  std::size_t clear = 0;
  for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
    const auto [least, most] =
        std::minmax_element(counts.begin() + edges[i], counts.begin() + edges[i + 1]);
    clear += i % 2 == 0 ? 10 * *most >= 6 * rows : 10 * *least <= 3 * rows;
  }
  return 10 * clear >= 9 * (edges.size() - 1);
}

// Whether the columns of a band, or of several, are those of bars.
bool LooksLikeBars(const Counts& counts, Stretch at, std::uint32_t rows, double dpi) {
  const std::vector<std::uint32_t> edges = EdgesOf(counts, at, rows);
  if (edges.size() < 2 * kFewestBars) return false;
  for (std::size_t i = 0; i + 1 < edges.size(); i += 2) {
    if ((edges[i + 1] - edges[i]) * 25.4 > kWidestBarMm * dpi) return false;
  }
  return IsIrregular(edges) && IsInContrast(counts, edges, rows);
}

// Whether part of a band shows the same bars as the band above.
bool Continues(const Region& region, const Counts& counts, Stretch at, std::uint32_t rows,
               std::uint32_t slack) {
  const auto near = [slack](std::uint32_t a, std::uint32_t b) {
    return std::max(a, b) - std::min(a, b) <= slack;
  };
  if (!near(region.left, at.left) || !near(region.right, at.right)) return false;
  std::uint32_t differing = 0;
  for (std::uint32_t x = at.left; x < at.right; ++x) {
    differing +=
        3 * (std::max(counts[x], region.counts[x]) - std::min(counts[x], region.counts[x])) > rows;
  }
  return 8 * differing <= at.right - at.left;
}

std::size_t CountEdges(const BitImage& image, std::uint32_t y, Stretch at) {
  std::size_t edges = 0;
  bool dark = false;
  for (std::uint32_t x = at.left; x < at.right; ++x) {
    if (image.At(x, y) == dark) continue;
    ++edges;
    dark = !dark;
  }
  return edges + (dark ? 1 : 0);
}

// The narrowest bar or space in dots. Greys count by their share, as they do to the eye: each
// element reaches from the middle of its left neighbour to the middle of its right one.
double NarrowestDots(const Counts& counts, const std::vector<std::uint32_t>& edges,
                     std::uint32_t rows) {
  double narrowest = rows;
  double full = 0, bars = 0;  // how dark bars are on average: less than all rows if they are grey
  for (std::uint32_t x = edges.front(); x < edges.back(); ++x) {
    if (2 * counts[x] <= rows) continue;
    full += counts[x];
    ++bars;
  }
  full /= bars;
  for (std::size_t i = 1; i + 2 < edges.size(); ++i) {
    const std::uint32_t from = (edges[i - 1] + edges[i]) / 2;
    const std::uint32_t to = (edges[i + 1] + edges[i + 2] + 1) / 2;
    double dark = 0;
    for (std::uint32_t x = from; x < to; ++x) dark += counts[x];
    dark /= full;
    // Half of each neighbour is of the other colour.
    narrowest = std::min(narrowest, i % 2 == 0 ? dark : to - from - dark);
  }
  return narrowest;
}

// Whether all rows are about equally dark. Lines of text have white between them.
bool HasEvenRows(const BitImage& image, const Region& region, std::uint32_t rows) {
  std::vector<std::uint32_t> dark(rows);
  for (std::uint32_t row = 0; row < rows; ++row) {
    for (std::uint32_t x = region.left; x < region.right; ++x) {
      dark[row] += image.At(x, region.top + row);
    }
  }
  std::sort(dark.begin(), dark.end());
  return 3 * dark[rows / 20] >= 2 * dark[rows / 2] &&
         2 * dark[rows - 1 - rows / 20] <= 3 * dark[rows / 2];
}

// Adds a region if its dots are bars, with its fault if it has one.
void Judge(const BitImage& image, Region region, std::uint32_t bandRows, double dpi, Codes& found) {
  // The first and the last band may reach beyond the bars.
  const std::uint32_t bottom = region.top + static_cast<std::uint32_t>(region.bands) * bandRows;
  region.top += bandRows;
  region.bands -= 2;
  const auto rows = static_cast<std::uint32_t>(region.bands * bandRows);
  Counts counts(image.stride * 8);
  for (std::uint32_t y = region.top; y < region.top + rows; ++y) AddRow(image, y, counts);
  if (!LooksLikeBars(counts, region, rows, dpi) || !HasEvenRows(image, region, rows)) return;
  const std::vector<std::uint32_t> edges = EdgesOf(counts, region, rows);
  std::size_t clean = 0;
  for (std::uint32_t y = region.top; y < region.top + rows; ++y) {
    clean += CountEdges(image, y, region) == edges.size();
  }
  const DotBox box = {region.left, region.top - bandRows, region.right, bottom};
  found.bars.push_back(box);
  const double share = static_cast<double>(clean) / rows;
  const bool greys = share < kFewCleanRows;
  const bool oneDot = share > kMostCleanRows && NarrowestDots(counts, edges, rows) < kFinestDots;
  if (!greys && !oneDot) return;
  CodeFault fault;
  fault.kind = greys ? CodeFault::Kind::Greys : CodeFault::Kind::OneDot;
  fault.box = box;
  found.faults.push_back(fault);
}

}  // namespace

void FindLinearCodes(const BitImage& image, double dpi, Codes& found) {
  const auto dots = [dpi](double mm) {
    return static_cast<std::uint32_t>(std::lround(mm * dpi / 25.4));
  };
  const std::uint32_t bandRows = std::max(kLeastBandRows, dots(1));
  std::vector<Region> regions;  // that reach down to the last band
  for (std::uint32_t top = 0; top + bandRows <= image.height; top += bandRows) {
    Counts counts(image.stride * 8);
    for (std::uint32_t y = top; y < top + bandRows; ++y) AddRow(image, y, counts);
    std::vector<Region> reaching;
    for (const Stretch& part : Split(counts, dots(kLongestGapMm))) {
      if (!LooksLikeBars(counts, part, bandRows, dpi)) continue;
      const auto above = std::find_if(regions.begin(), regions.end(), [&](const Region& region) {
        return Continues(region, counts, part, bandRows, dots(1));
      });
      Region region;
      if (above != regions.end()) {
        region = std::move(*above);
        regions.erase(above);
        region.left = std::min(region.left, part.left);
        region.right = std::max(region.right, part.right);
      } else {
        region.left = part.left;
        region.right = part.right;
        region.top = top;
      }
      ++region.bands;
      region.counts = counts;
      reaching.push_back(std::move(region));
    }
    for (const Region& region : regions) {
      if (region.bands >= kFewestBands) Judge(image, region, bandRows, dpi, found);
    }
    regions = std::move(reaching);
  }
  for (const Region& region : regions) {
    if (region.bands >= kFewestBands) Judge(image, region, bandRows, dpi, found);
  }
}

}  // namespace viewer
