// Bar codes on a drawn label that cannot be relied on to scan. Codes are found by their structure,
// not by reading them. A code that is missed is not reported; nothing else is taken for a code.
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

// Looks for codes in one colour of an upright label, with bars in either direction.
std::vector<CodeFault> FindCodeFaults(const BitImage& image, double dpi);

// "The bar code at 10, 12 mm (35 x 8 mm) ...": what is wrong and what to do.
std::string CodeFaultText(const CodeFault& fault, double dpi);

// The parts of FindCodeFaults. The first returns the boxes around all square codes, good ones
// included.
std::vector<DotBox> FindMatrixCodes(const BitImage& image, double dpi,
                                    std::vector<CodeFault>& faults);
void FindLinearCodeFaults(const BitImage& image, double dpi, std::vector<CodeFault>& faults);

}  // namespace viewer
