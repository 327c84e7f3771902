// Draws on a page dot by dot: rectangles, strokes of text, symbols of modules. Nothing is smoothed.
#pragma once

#include <string>
#include <vector>

#include "host/pages/page_image.h"

struct Ink {
  std::uint8_t red = 0, green = 0, blue = 0;
};
inline constexpr Ink kBlack = {0, 0, 0};
inline constexpr Ink kWhite = {255, 255, 255};

// Dots from the page's top left corner.
struct Spot {
  int x = 0, y = 0;
};

struct Extent {
  int width = 0, height = 0;
};

class Canvas {
 public:
  // page: has its size; it is cleared to white and must outlive the canvas. textDots: the stroke of
  // the text.
  Canvas(PageImage& page, int textDots);

  // What lies beyond the page is cut off.
  void Fill(Spot at, Extent size, Ink ink = kBlack);
  void Text(Spot at, const std::string& text);
  // Rows of modules: '#' is black, anything else stays as it is.
  void Symbol(Spot at, const std::vector<std::string>& rows, int moduleDots);

 private:
  PageImage& m_page;
  const int m_textDots;
};
