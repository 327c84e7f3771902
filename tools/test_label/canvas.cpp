#include "tools/test_label/canvas.h"

#include <algorithm>

#include "common/pixel_text.h"

Canvas::Canvas(PageImage& page, int textDots) : m_page(page), m_textDots(textDots) {
  std::fill(page.pixels.begin(), page.pixels.end(), std::uint8_t{0xFF});
}

void Canvas::Fill(Spot at, Extent size, Ink ink) {
  const int left = std::max(at.x, 0), top = std::max(at.y, 0);
  const int right = std::min(at.x + size.width, static_cast<int>(m_page.widthPx));
  const int bottom = std::min(at.y + size.height, static_cast<int>(m_page.heightPx));
  for (int y = top; y < bottom; ++y) {
    std::uint8_t* pixel = m_page.Row(static_cast<std::uint32_t>(y)) + std::ptrdiff_t{3} * left;
    for (int x = left; x < right; ++x, pixel += 3) {
      pixel[0] = ink.blue;
      pixel[1] = ink.green;
      pixel[2] = ink.red;
    }
  }
}

void Canvas::Text(Spot at, const std::string& text) {
  DrawPixelText(text, [&](int left, int top, int width, int height) {
    Fill({at.x + left * m_textDots, at.y + top * m_textDots},
         {width * m_textDots, height * m_textDots});
  });
}

void Canvas::Symbol(Spot at, const std::vector<std::string>& rows, int moduleDots) {
  for (const std::string& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (row[i] != '#') continue;
      Fill({at.x + static_cast<int>(i) * moduleDots, at.y}, {moduleDots, moduleDots});
    }
    at.y += moduleDots;
  }
}
