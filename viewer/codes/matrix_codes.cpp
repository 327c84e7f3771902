// Square codes of modules. A code is a patch of dots with white around it. Its kind shows at its
// edges: three finder squares in the corners, or two solid edges that face two alternating ones.
// Both are matched module by module, so that the number of modules, and with it their size, comes
// out even if dither noise has eaten into them. The limits come from scripts/measure_codes.py.

#include <algorithm>
#include <cmath>
#include <optional>

#include "viewer/codes/codes.h"

namespace viewer {

namespace {

constexpr int kMostWrongOfFinder = 16;  // of 64 modules
constexpr double kQuietMm = 0.75;       // white around a code
constexpr double kLeastMm = 1.3, kMostMm = 50;
constexpr std::uint32_t kMostSide = 2000;  // dots
constexpr double kFinestModule = 1.6;      // dots; finer ones have modules of a single dot
constexpr double kMostSpecks = 0.02;       // loose dots among all dots of the code

std::uint32_t Width(const DotBox& box) { return box.right - box.left; }
std::uint32_t Height(const DotBox& box) { return box.bottom - box.top; }

// The boxes around patches of dots, found on a grid of cells that are as wide as the white around.
std::vector<DotBox> FindPatches(const BitImage& image, std::uint32_t cell) {
  const std::uint32_t columns = (image.width + cell - 1) / cell;
  const std::uint32_t rows = (image.height + cell - 1) / cell;
  std::vector<DotBox> cells(std::size_t{columns} * rows);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) {
      if (image.bits[y * image.stride + x / 8] == 0) {
        x |= 7;
        continue;
      }
      if (!image.At(x, y)) continue;
      DotBox& box = cells[std::size_t{y / cell} * columns + x / cell];
      if (box.Empty()) box = {x, y, x + 1, y + 1};
      box.left = std::min(box.left, x);
      box.right = std::max(box.right, x + 1);
      box.bottom = y + 1;
    }
  }
  std::vector<DotBox> patches;
  std::vector<std::size_t> todo;
  for (std::size_t start = 0; start < cells.size(); ++start) {
    if (cells[start].Empty()) continue;
    DotBox patch = cells[start];
    const auto take = [&](std::size_t at) {
      const DotBox& box = cells[at];
      patch = {std::min(patch.left, box.left), std::min(patch.top, box.top),
               std::max(patch.right, box.right), std::max(patch.bottom, box.bottom)};
      cells[at] = {};
      todo.push_back(at);
    };
    todo.clear();
    take(start);
    while (!todo.empty()) {
      const std::size_t at = todo.back();
      todo.pop_back();
      const std::size_t x = at % columns, y = at / columns;
      for (std::size_t ny = y == 0 ? 0 : y - 1; ny <= std::min<std::size_t>(y + 1, rows - 1);
           ++ny) {
        for (std::size_t nx = x == 0 ? 0 : x - 1; nx <= std::min<std::size_t>(x + 1, columns - 1);
             ++nx) {
          if (!cells[ny * columns + nx].Empty()) take(ny * columns + nx);
        }
      }
    }
    patches.push_back(patch);
  }
  return patches;
}

// Dark dots of a patch, summed up for the share of dark in any rectangle. A dot that lies partly in
// the rectangle counts in part.
class DotCounts {
 public:
  DotCounts(const BitImage& image, const DotBox& box)
      : m_stride(Width(box) + 1), m_sums(m_stride * (Height(box) + 1)) {
    for (std::uint32_t y = 0; y < Height(box); ++y) {
      std::uint32_t row = 0;
      for (std::uint32_t x = 0; x < Width(box); ++x) {
        row += image.At(box.left + x, box.top + y);
        m_sums[(y + 1) * m_stride + x + 1] = m_sums[y * m_stride + x + 1] + row;
      }
    }
  }
  double Share(double left, double top, double right, double bottom) const {
    const double dark = Sum(right, bottom) - Sum(left, bottom) - Sum(right, top) + Sum(left, top);
    return dark / ((right - left) * (bottom - top));
  }
  double Share(const DotBox& box) const { return Share(box.left, box.top, box.right, box.bottom); }

 private:
  double Sum(double x, double y) const {
    const auto column = static_cast<std::size_t>(x), row = static_cast<std::size_t>(y);
    const double right = x - static_cast<double>(column), below = y - static_cast<double>(row);
    const auto at = [&](std::size_t dx, std::size_t dy) {
      const std::size_t cell = (row + dy) * m_stride + column + dx;
      return cell < m_sums.size() ? static_cast<double>(m_sums[cell]) : 0.0;
    };
    return (1 - below) * ((1 - right) * at(0, 0) + right * at(1, 0)) +
           below * ((1 - right) * at(0, 1) + right * at(1, 1));
  }

  std::size_t m_stride;
  std::vector<std::uint32_t> m_sums;
};

// A patch as count x count modules.
class Modules {
 public:
  Modules(const DotCounts& dots, const DotBox& box, int count)
      : m_dots(dots),
        m_left(box.left),
        m_top(box.top),
        m_width(static_cast<double>(Width(box)) / count),
        m_height(static_cast<double>(Height(box)) / count),
        m_count(count) {}

  // Whether a module is dark in its middle, where blur reaches last. turn: quarter turns.
  bool Dark(int x, int y, int turn = 0) const {
    for (; turn > 0; --turn) {
      const int old = x;
      x = m_count - 1 - y;
      y = old;
    }
    const double left = m_left + m_width * (x + 0.25), top = m_top + m_height * (y + 0.25);
    return m_dots.Share(left, top, left + m_width / 2, top + m_height / 2) > 0.5;
  }

 private:
  const DotCounts& m_dots;
  const double m_left, m_top, m_width, m_height;
  const int m_count;
};

// A finder is a square of 3 in a ring of white in a ring of black, with white around. Three corners
// have one. Some modules may be lost in noise.
bool HasFinders(const Modules& modules) {
  int finders = 0;
  for (int turn = 0; turn < 4; ++turn) {
    int wrong = 0;
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 8; ++x) {
        const int ring = std::max(std::abs(x - 3), std::abs(y - 3));
        wrong += modules.Dark(x, y, turn) != (ring != 2 && ring != 4);
      }
    }
    finders += wrong <= kMostWrongOfFinder;
  }
  return finders == 3;
}

// Two edges that meet are solid; modules alternate along the two others.
bool HasSolidAndAlternatingEdges(const Modules& modules, int count) {
  for (int turn = 0; turn < 4; ++turn) {
    int notSolid = 0, notAlternating = 0;
    for (int i = 0; i < count; ++i) {
      notSolid += !modules.Dark(0, i, turn) + !modules.Dark(i, count - 1, turn);
      notAlternating += modules.Dark(i, 0, turn) != (i % 2 == 0);
      notAlternating += modules.Dark(count - 1, i, turn) != (i % 2 == 1);
    }
    if (6 * notSolid <= 2 * count && 5 * notAlternating <= 2 * count) return true;
  }
  return false;
}

// The number of modules on a side; nullopt if the patch is no code.
std::optional<int> CountModules(const DotCounts& dots, const DotBox& box) {
  const int side = static_cast<int>(std::min(Width(box), Height(box)));
  for (int count = 21; count <= 177 && count <= side; count += 4) {
    if (HasFinders(Modules(dots, box, count))) return count;
  }
  for (int count = 10; count <= 144 && count <= side; count += 2) {
    if (HasSolidAndAlternatingEdges(Modules(dots, box, count), count)) return count;
  }
  return std::nullopt;
}

// Leaves out rows and columns at the edges that hold little but noise.
DotBox Trim(const DotCounts& dots, DotBox box) {
  constexpr double kLeast = 0.2;
  while (Height(box) > 2 && dots.Share({box.left, box.top, box.right, box.top + 1}) < kLeast)
    ++box.top;
  while (Height(box) > 2 && dots.Share({box.left, box.bottom - 1, box.right, box.bottom}) < kLeast)
    --box.bottom;
  while (Width(box) > 2 && dots.Share({box.left, box.top, box.left + 1, box.bottom}) < kLeast)
    ++box.left;
  while (Width(box) > 2 && dots.Share({box.right - 1, box.top, box.right, box.bottom}) < kLeast)
    --box.right;
  return box;
}

// The share of loose dots: those whose four neighbours all have the other colour.
double Specks(const BitImage& image, const DotBox& box) {
  std::uint32_t specks = 0;
  for (std::uint32_t y = box.top + 1; y + 1 < box.bottom; ++y) {
    for (std::uint32_t x = box.left + 1; x + 1 < box.right; ++x) {
      const bool dot = image.At(x, y);
      specks += dot != image.At(x - 1, y) && dot != image.At(x + 1, y) &&
                dot != image.At(x, y - 1) && dot != image.At(x, y + 1);
    }
  }
  return static_cast<double>(specks) / (Width(box) * Height(box));
}

}  // namespace

void FindMatrixCodes(const BitImage& image, double dpi, Codes& found) {
  const auto dots = [dpi](double mm) {
    return static_cast<std::uint32_t>(std::lround(mm * dpi / 25.4));
  };
  for (const DotBox& patch : FindPatches(image, std::max(3u, dots(kQuietMm)))) {
    const std::uint32_t shorter = std::min(Width(patch), Height(patch));
    const std::uint32_t longer = std::max(Width(patch), Height(patch));
    if (shorter < dots(kLeastMm) || longer > std::min(dots(kMostMm), kMostSide) ||
        5 * shorter < 4 * longer)
      continue;
    const DotCounts counts(image, patch);
    const DotBox inner = Trim(counts, {0, 0, Width(patch), Height(patch)});
    const double share = counts.Share(inner);
    if (share < 0.25 || share > 0.75) continue;
    const std::optional<int> count = CountModules(counts, inner);
    if (!count) continue;
    found.squares.push_back(patch);
    CodeFault fault;
    fault.matrix = true;
    fault.moduleDots = (Width(inner) + Height(inner)) / 2.0 / *count;
    fault.box = patch;
    // In a code of single dots most of them are loose.
    const bool oneDot = fault.moduleDots < kFinestModule;
    if (!oneDot && Specks(image, patch) <= kMostSpecks) continue;
    fault.kind = oneDot ? CodeFault::Kind::OneDot : CodeFault::Kind::Greys;
    found.faults.push_back(fault);
  }
}

}  // namespace viewer
