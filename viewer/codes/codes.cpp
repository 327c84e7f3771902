#include "viewer/codes/codes.h"

#include <algorithm>

#include "viewer/language/text.h"

namespace viewer {

namespace {

bool Meet(const DotBox& a, const DotBox& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

}  // namespace

std::vector<CodeFault> FindCodeFaults(const BitImage& image, double dpi) {
  std::vector<CodeFault> linear, faults;
  FindLinearCodeFaults(image, dpi, linear);
  const std::size_t across = linear.size();
  FindLinearCodeFaults(Turn(image, 90), dpi, linear);
  for (std::size_t i = across; i < linear.size(); ++i) {  // back to the image as it is
    const DotBox turned = linear[i].box;
    linear[i].box = {image.width - turned.bottom, turned.left, image.width - turned.top,
                     turned.right};
  }
  const std::vector<DotBox> squares = FindMatrixCodes(image, dpi, faults);
  // A few rows of a square code can look like bars.
  for (const CodeFault& fault : linear) {
    const auto meets = [&fault](const DotBox& square) { return Meet(square, fault.box); };
    if (std::none_of(squares.begin(), squares.end(), meets)) faults.push_back(fault);
  }
  return faults;
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
