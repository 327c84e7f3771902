#include "viewer/reports/diff.h"

#include <algorithm>

#include "viewer/language/text.h"

namespace viewer {

namespace {

// What a dot of the difference picture shows.
enum Mark : std::uint8_t { kPaper, kSame, kOnlyA, kOnlyB, kOtherColour, kNoLabel };
const std::vector<Colour> kMarkColours = {{255, 255, 255}, {186, 190, 196}, {11, 98, 214},
                                          {232, 89, 12},   {156, 39, 176},  {226, 228, 232}};

enum Ink { kNone, kBlack, kHighlight };
Ink InkAt(const LabelPicture& picture, std::uint32_t x, std::uint32_t y) {
  if (picture.black.At(x, y)) return kBlack;
  return picture.highlight.At(x, y) ? kHighlight : kNone;
}

bool Holds(const LabelPicture& picture, std::uint32_t x, std::uint32_t y) {
  return x < picture.black.width && y < picture.black.height;
}

Mark MarkOf(const LabelPicture& a, const LabelPicture& b, std::uint32_t x, std::uint32_t y) {
  const bool inA = Holds(a, x, y), inB = Holds(b, x, y);
  const Ink inkA = inA ? InkAt(a, x, y) : kNone;
  const Ink inkB = inB ? InkAt(b, x, y) : kNone;
  if (inkA == inkB) return inkA != kNone ? kSame : inA && inB ? kPaper : kNoLabel;
  return inkB == kNone ? kOnlyA : inkA == kNone ? kOnlyB : kOtherColour;
}

// Counts the dots of a row that differ and extends the box around them.
void CountRow(const LabelPicture& a, const LabelPicture& b, std::uint32_t width, std::uint32_t y,
              LabelDiff& diff) {
  for (std::uint32_t x = 0; x < width; ++x) {
    const Mark mark = MarkOf(a, b, x, y);
    if (mark != kOnlyA && mark != kOnlyB && mark != kOtherColour) continue;
    if (diff.dots++ == 0) diff.box = {x, y, x + 1, y + 1};
    diff.box.left = std::min(diff.box.left, x);
    diff.box.right = std::max(diff.box.right, x + 1);
    diff.box.bottom = y + 1;
  }
}

void CompareDots(const DrawnLabel& a, const DrawnLabel& b, LabelDiff& diff) {
  if (*a.picture == *b.picture) return;
  // Both get the turn of the first, so that a turned label shows up as a difference.
  const LabelPicture first = Turn(*a.picture, a.turn);
  const LabelPicture second = Turn(*b.picture, a.turn);
  const std::uint32_t width = std::max(first.black.width, second.black.width);
  const std::uint32_t height = std::max(first.black.height, second.black.height);
  for (std::uint32_t y = 0; y < height; ++y) CountRow(first, second, width, y, diff);
  if (diff.dots == 0) return;
  const auto mm = [&](std::uint32_t dots) { return Plain(dots * kMmAnInch / a.dpi); };
  diff.texts.push_back(std::to_string(diff.dots) + (diff.dots == 1 ? " dot" : " dots") +
                       " differ, from " + mm(diff.box.left) + ", " + mm(diff.box.top) + " to " +
                       mm(diff.box.right) + ", " + mm(diff.box.bottom) +
                       " mm from the top left corner");
  diff.png = WritePng(width, height, a.dpi, kMarkColours, [&](std::uint32_t y, std::uint8_t* row) {
    for (std::uint32_t x = 0; x < width; ++x) row[x] = MarkOf(first, second, x, y);
  });
}

std::string SizeText(const Label& label) {
  if (!label.size) return "no size";
  return Plain(label.WidthMm()) + " x " + Plain(label.size->lengthMm) + " mm, pitch " +
         Plain(label.size->pitchMm) + " mm";
}

void CompareText(const char* what, const std::string& a, const std::string& b, LabelDiff& diff) {
  if (a != b) diff.texts.push_back(std::string(what) + ": " + a + " and " + b);
}

LabelDiff Compare(const std::optional<DrawnLabel>& a, const std::optional<DrawnLabel>& b) {
  LabelDiff diff;
  if (!a || !b) {
    diff.texts.push_back(a ? "only the first job prints it" : "only the second job prints it");
    return diff;
  }
  CompareText("label size", SizeText(a->label), SizeText(b->label), diff);
  CompareText("copies", std::to_string(a->label.copies), std::to_string(b->label.copies), diff);
  CompareText("cuts", std::to_string(a->label.cuts), std::to_string(b->label.cuts), diff);
  if (a->picture && b->picture) {
    CompareDots(*a, *b, diff);
  } else if (a->label.size || b->label.size) {
    diff.texts.push_back("it cannot be compared: " + (a->picture ? b->why : a->why));
  }
  return diff;
}

}  // namespace

JobDiff DiffJobs(std::string_view a, std::string_view b, double dpi,
                 const std::function<void(const LabelDiff&)>& each) {
  JobDiff result;
  result.dpi = dpi;
  if (result.dpi <= 0) result.dpi = GuessDpi(a).value_or(GuessDpi(b).value_or(kDefaultDpi));
  JobView first(a, result.dpi), second(b, result.dpi);
  while (true) {
    const std::optional<DrawnLabel> labelA = first.Next();
    const std::optional<DrawnLabel> labelB = second.Next();
    if (!labelA && !labelB) return result;
    LabelDiff diff = Compare(labelA, labelB);
    diff.number = ++result.labels;
    if (diff.texts.empty()) continue;
    ++result.different;
    each(diff);
  }
}

}  // namespace viewer
