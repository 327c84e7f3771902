#include "viewer/codes/codes.h"

#include <algorithm>
#include <iterator>

#include "viewer/language/text.h"

namespace viewer {

namespace {

bool Meet(const DotBox& a, const DotBox& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

}  // namespace

Codes FindCodes(const BitImage& image, double dpi) {
  Codes upright, turned, found;
  FindMatrixCodes(image, dpi, found);
  FindLinearCodes(image, dpi, upright);
  FindLinearCodes(Turn(image, 90), dpi, turned);
  const auto back = [&image](DotBox& box) {  // to the image as it is
    box = {image.width - box.bottom, box.left, image.width - box.top, box.right};
  };
  for (DotBox& box : turned.bars) back(box);
  for (CodeFault& fault : turned.faults) back(fault.box);
  // A few rows of a square code can look like bars.
  const auto isBars = [&squares = found.squares](const DotBox& box) {
    return std::none_of(squares.begin(), squares.end(),
                        [&box](const DotBox& square) { return Meet(square, box); });
  };
  for (const Codes& linear : {upright, turned}) {
    std::copy_if(linear.bars.begin(), linear.bars.end(), std::back_inserter(found.bars), isBars);
    std::copy_if(linear.faults.begin(), linear.faults.end(), std::back_inserter(found.faults),
                 [&isBars](const CodeFault& fault) { return isBars(fault.box); });
  }
  return found;
}

std::string CodeFaultText(const CodeFault& fault, double dpi) {
  const auto mm = [dpi](std::uint32_t dots) { return Plain(dots * 25.4 / dpi); };
  const DotBox& box = fault.box;
  const std::string code = std::string(fault.matrix ? "The square code" : "The bar code") + " at " +
                           mm(box.left) + ", " + mm(box.top) + " mm (" + mm(box.right - box.left) +
                           " x " + mm(box.bottom - box.top) + " mm)";
  if (fault.kind == CodeFault::Kind::Greys) {
    return code +
           " has greys in its bars, which print as loose dots and do not scan: draw it in "
           "pure black, without smoothing, with modules of whole dots";
  }
  const std::string module = Plain(fault.moduleDots);
  return code +
         (fault.matrix ? " has modules of " + module + (module == "1" ? " dot" : " dots")
                       : " has bars or spaces of a single dot") +
         ", too fine to print reliably: draw it with modules of 2 or more whole dots";
}

}  // namespace viewer
