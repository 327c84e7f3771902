#include "viewer/reports/diff.h"

#include <algorithm>
#include <cmath>

#include "common/pixel_text.h"
#include "viewer/language/text.h"

namespace viewer {

namespace {

// What a dot of the difference picture shows.
enum Mark : std::uint8_t { kPaper, kSame, kOnlyA, kOnlyB, kOtherColour, kNoLabel, kText };
const std::vector<Colour> kMarkColours = {{255, 255, 255}, {186, 190, 196}, {11, 98, 214},
                                          {232, 89, 12},   {156, 39, 176},  {226, 228, 232},
                                          {22, 32, 44}};

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

// The picture of a difference, one mark a dot, with its legend underneath.
class MarkPicture {
 public:
  MarkPicture(std::uint32_t width, std::uint32_t height, double dpi)
      : m_unit(std::max(1, static_cast<int>(std::lround(dpi / 100)))), m_width(width) {
    const int margin = kLegendGap * m_unit;
    int x = margin;
    auto y = static_cast<int>(height) + margin;
    for (const DiffMark& mark : kDiffMarks) {
      const int words = (kPixelTextHeight + PixelTextWidth(mark.words)) * m_unit;
      if (x > margin && x + words + margin > static_cast<int>(width)) {
        x = margin;
        y += kPixelTextHeight * m_unit;
      }
      m_places.push_back({x, y});
      x += words;
      m_width = std::max(m_width, static_cast<std::uint32_t>(x + margin));
      x += 2 * margin;
    }
    m_height = static_cast<std::uint32_t>(y + kPixelTextHeight * m_unit + margin);
    m_marks.assign(std::size_t{m_width} * m_height, kPaper);
    for (std::size_t i = 0; i < m_places.size(); ++i) DrawEntry(i);
  }

  std::uint8_t* Row(std::uint32_t y) { return m_marks.data() + std::size_t{y} * m_width; }

  std::string Png(double dpi) {
    return WritePng(m_width, m_height, dpi, kMarkColours,
                    [this](std::uint32_t y, auto* row) { std::copy_n(Row(y), m_width, row); });
  }

 private:
  static constexpr int kLegendGap = 5;  // in units of the text's stroke
  struct Point {
    int x, y;
  };

  void DrawEntry(std::size_t i) {
    const Point at = m_places[i];
    Fill(at, {0, 0, 8, 8}, static_cast<Mark>(kSame + i));
    DrawPixelText(kDiffMarks[i].words, [&](int left, int top, int width, int height) {
      Fill(at, {kPixelTextHeight + left, top, width, height}, kText);
    });
  }
  // In units of the text's stroke, from a point in dots.
  struct Box {
    int left, top, width, height;
  };
  void Fill(Point at, const Box& box, Mark mark) {
    for (int y = at.y + box.top * m_unit; y < at.y + (box.top + box.height) * m_unit; ++y) {
      std::fill_n(Row(static_cast<std::uint32_t>(y)) + at.x + box.left * m_unit, box.width * m_unit,
                  mark);
    }
  }

  const int m_unit;  // dots of a stroke of the text
  std::uint32_t m_width, m_height = 0;
  std::vector<Point> m_places;
  std::vector<std::uint8_t> m_marks;
};

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
  MarkPicture picture(width, height, a.dpi);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* row = picture.Row(y);
    for (std::uint32_t x = 0; x < width; ++x) row[x] = MarkOf(first, second, x, y);
  }
  diff.png = picture.Png(a.dpi);
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
