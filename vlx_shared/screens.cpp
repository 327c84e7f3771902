#include "vlx_shared/screens.h"

#include <algorithm>
#include <compare>
#include <cstdlib>

#include "platform/extensions.h"

namespace {

// The threshold of the place with this rank among count places. A level then prints white on its
// share of them, as nearly as possible.
BYTE ThresholdOf(INT rank, INT count) {
  return static_cast<BYTE>(1 + (2 * rank + 1) * 255 / (2 * count));
}

// B. Bayer: "An optimum method for two-level rendition of continuous-tone pictures", ICC 1973.
INT BayerRank(INT x, INT y, INT bits) {
  INT rank = 0;
  for (INT i = 0; i < bits; ++i) rank = rank << 2 | ((x ^ y) >> i & 1) << 1 | (y >> i & 1);
  return rank;
}

// The tile with each place enlarged to size x size places.
Tile Enlarge(const Tile& tile, INT size) {
  Tile large{tile.side * size, {}};
  for (INT y = 0; y < large.side; ++y) {
    for (INT x = 0; x < large.side; ++x) {
      large.thresholds.push_back(tile.thresholds[y / size * tile.side + x / size]);
    }
  }
  return large;
}

Tile Ordered() {
  Tile tile{8, {}};
  for (INT y = 0; y < 8; ++y) {
    for (INT x = 0; x < 8; ++x) tile.thresholds.push_back(ThresholdOf(BayerRank(x, y, 3), 64));
  }
  return tile;
}

Tile BlueNoise() {
  static constexpr char kTable[] =
#include "vlx_shared/blue_noise_table.inc"
      ;
  const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
  Tile tile{64, {}};
  for (INT i = 0; i < 64 * 64; ++i) {
    tile.thresholds.push_back(
        ThresholdOf(digit(kTable[2 * i]) * 16 + digit(kTable[2 * i + 1]), 256));
  }
  return tile;
}

// The order in which the places of a clustered-dot tile turn black.
struct ClusterPlace {
  bool isGap;    // nearer to the middle of a gap than of a dot
  INT distance;  // grows from the middle of a dot, falls towards that of a gap
  INT corner;    // of the dot: opposite corners follow each other
  INT spot;      // of the dot in the tile: distant dots follow each other
  INT index;
  auto operator<=>(const ClusterPlace&) const = default;
};

// A screen of 45 degrees. Cells of cell x cell pixels have dots and gaps at their corners, in turn
// like the fields of a chessboard. A tile of 4 x 4 cells has eight dots.
ClusterPlace PlaceOf(INT x, INT y, INT cell) {
  const INT unit = 2 * cell;  // in half pixels, so that the middle of a pixel is a whole number
  INT nearestDot = 0;
  INT nearestGap = 0;
  ClusterPlace place{false, 0, 0, 0, y * 4 * cell + x};
  for (INT row = 0; row <= 4; ++row) {
    for (INT column = 0; column <= 4; ++column) {
      const INT dx = 2 * x + 1 - column * unit;
      const INT dy = 2 * y + 1 - row * unit;
      const INT distance = dx * dx + dy * dy;
      INT& nearest = (row + column) % 2 == 0 ? nearestDot : nearestGap;
      if (nearest != 0 && distance >= nearest) continue;
      nearest = distance;
      if ((row + column) % 2 != 0) continue;
      const INT sides = dx > 0 ? (dy > 0 ? 0 : 2) : (dy > 0 ? 3 : 1);
      place.corner = 2 * sides + (std::abs(dx) < std::abs(dy) ? 1 : 0);
      place.spot = BayerRank(column % 4, row % 4, 2);
    }
  }
  place.isGap = nearestGap < nearestDot;
  place.distance = place.isGap ? -nearestGap : nearestDot;
  return place;
}

Tile ClusteredDot(INT cell) {
  Tile tile{4 * cell, {}};
  std::vector<ClusterPlace> order;
  for (INT y = 0; y < tile.side; ++y) {
    for (INT x = 0; x < tile.side; ++x) order.push_back(PlaceOf(x, y, cell));
  }
  std::sort(order.begin(), order.end());
  const INT count = tile.side * tile.side;
  tile.thresholds.resize(count);
  for (INT i = 0; i < count; ++i) {
    tile.thresholds[order[i].index] = ThresholdOf(count - 1 - i, count);
  }
  return tile;
}

INT Clamped(INT parameter, INT standard, INT least, INT most) {
  return parameter == 0 ? standard : std::clamp(parameter, least, most);
}

}  // namespace

Tile ThresholdTile(INT parameter) {
  return {1, {static_cast<BYTE>(Clamped(parameter, kMiddle, 1, 255))}};
}

Tile OrderedTile(INT parameter) { return Enlarge(Ordered(), Clamped(parameter, 1, 1, 8)); }

Tile ClusteredDotTile(INT parameter) { return ClusteredDot(Clamped(parameter, 4, 2, 16)); }

Tile BlueNoiseTile(INT parameter) { return Enlarge(BlueNoise(), Clamped(parameter, 1, 1, 4)); }

Screen::Screen(const Tile& tile) {
  if (PlatformShouldFail("Screen")) throw std::bad_alloc();
  m_side = tile.side;
  m_strideBytes = static_cast<std::size_t>(m_side) + kStripMargin;
  m_rows.resize(m_side * m_strideBytes);
  for (INT y = 0; y < m_side; ++y) {
    for (std::size_t x = 0; x < m_strideBytes; ++x) {
      m_rows[y * m_strideBytes + x] = tile.thresholds[y * m_side + x % m_side];
    }
  }
}
