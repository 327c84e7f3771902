// The parts of the test label that can stand anywhere on it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/test_label/canvas.h"

// The label in dots, and what is to be tested on it.
struct TestLabelJob {
  int dpi = 300;
  std::optional<Ink> highlight;       // in two colours
  std::vector<std::string> settings;  // "speed 100"

  int Dots(double mm) const;
  // The stroke of the text, which makes it readable at any resolution.
  int TextDots() const;
  int LineDots() const;
  int TextWidth(const std::string& text) const;
};

struct Block {
  std::string title;
  Extent size;  // without the title
  std::function<void(Canvas&, Spot)> draw;
};

// All blocks, the most important first. widthDots: the width that they may take.
std::vector<Block> TestBlocks(const TestLabelJob& job, int widthDots);

// A symbol as rows of modules, for Canvas::Symbol. Throws CommandError (internal).
std::vector<std::string> LinearSymbol(const std::string& digits);  // one row
std::vector<std::string> SquareSymbol(const std::string& text);
