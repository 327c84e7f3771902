// Text of straight strokes for pictures in which every dot counts. It needs no font file, and
// nothing is smoothed.
#pragma once

#include <stb/stb_easy_font.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

// The height of a line in units of the stroke: 7 for a capital, 2 below the line, the rest between
// lines.
inline constexpr int kPixelTextHeight = 12;

// The width of one line of text in units of the stroke. Only ASCII has shapes; anything else is
// drawn as question marks.
inline int PixelTextWidth(std::string text) {
  for (char& c : text) c = c >= ' ' && c <= '~' ? c : '?';
  return stb_easy_font_width(text.data());
}

// Calls fill(left, top, width, height), in units of the stroke, for each stroke of one line of
// text.
template <typename Fill>
void DrawPixelText(std::string text, const Fill& fill) {
  for (char& c : text) c = c >= ' ' && c <= '~' ? c : '?';
  struct Corner {
    float x, y, z;
    unsigned char colour[4];
  };
  using Quad = std::array<Corner, 4>;  // from the top left, clockwise
  std::vector<Quad> quads(text.size() * 16 + 1);
  const int count = stb_easy_font_print(0, 0, text.data(), nullptr, quads.data(),
                                        static_cast<int>(quads.size() * sizeof(Quad)));
  for (int i = 0; i < count; ++i) {
    const Corner &first = quads[static_cast<std::size_t>(i)][0],
                 &last = quads[static_cast<std::size_t>(i)][2];
    fill(static_cast<int>(first.x), static_cast<int>(first.y), static_cast<int>(last.x - first.x),
         static_cast<int>(last.y - first.y));
  }
}
