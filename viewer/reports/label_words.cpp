#include "viewer/reports/label_words.h"

#include "viewer/language/text.h"

namespace viewer {

UprightSize SizeOf(const DrawnLabel& drawn) {
  UprightSize size = {drawn.label.WidthMm(), drawn.label.size ? drawn.label.size->lengthMm : 0};
  if (drawn.turn == 90 || drawn.turn == 270) std::swap(size.widthMm, size.heightMm);
  return size;
}

std::string UprightSize::Text() const { return Tenths(widthMm) + " × " + Tenths(heightMm) + " mm"; }

std::string LabelWords(const DrawnLabel& drawn, double& dotsToSearch) {
  std::string words = SizeOf(drawn).Text();
  if (!drawn.picture) return words;
  const bool black = !FindDots(drawn.picture->black).Empty();
  const bool highlight = !FindDots(drawn.picture->highlight).Empty();
  words += black && highlight ? ", black and a second colour"
           : black            ? ", black"
           : highlight        ? ", in the second colour"
                              : ", blank";
  std::uint64_t bars = 0, squares = 0;
  for (const BitImage* plane : {&drawn.picture->black, &drawn.picture->highlight}) {
    const double dots = static_cast<double>(plane->width) * plane->height;
    if (dots > dotsToSearch || !(plane == &drawn.picture->black ? black : highlight)) continue;
    dotsToSearch -= dots;
    const Codes codes = FindCodes(*plane, drawn.dpi);
    bars += codes.bars.size();
    squares += codes.squares.size();
  }
  if (bars > 0) words += ", " + Counted(bars, "bar code");
  if (squares > 0) words += ", " + Counted(squares, "square code");
  return words;
}

}  // namespace viewer
