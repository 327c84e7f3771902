// Finds the bar codes on a drawn label and those among them that may not scan. Codes are found by
// their structure, not by reading them. Some may be missed, but nothing else is taken for a code.
#pragma once

#include <string>
#include <vector>

#include "viewer/image/bit_image.h"

namespace viewer {

struct CodeFault {
  enum class Kind {
    Greys,   // the bars are dithered: no scan line is free of dither noise
    OneDot,  // bars, spaces or modules of a single dot
  };

  Kind kind;
  bool matrix = false;    // a square code of modules; otherwise bars side by side
  double moduleDots = 0;  // size of a module of a square code
  DotBox box;             // around the code, in dots
};

// The codes in one colour of a label, good and bad, as boxes in dots.
struct Codes {
  std::vector<DotBox> bars;
  std::vector<DotBox> squares;
  std::vector<CodeFault> faults;
};
// Finds square codes, and bar codes in both directions.
Codes FindCodes(const BitImage& image, double dpi);

// A job's dots that are searched for codes: about a thousand labels.
inline constexpr double kMostDotsSearched = 2e9;

// "The bar code at 10, 12 mm (35 x 8 mm) ...": what is wrong and what to do.
std::string CodeFaultText(const CodeFault& fault, double dpi);

// The parts of FindCodes; they add to what is found. Linear codes are found upright only.
void FindMatrixCodes(const BitImage& image, double dpi, Codes& found);
void FindLinearCodes(const BitImage& image, double dpi, Codes& found);

}  // namespace viewer
