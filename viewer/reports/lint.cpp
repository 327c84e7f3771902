#include "viewer/reports/lint.h"

#include <algorithm>
#include <cmath>

#include "viewer/codes/codes.h"
#include "viewer/drawing/drawing.h"
#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr double kRegisterMm = 0.25;

// The box of an image's dots after the image is turned.
struct TurnedBox {
  std::int64_t left, top, right, bottom;
};
TurnedBox TurnBox(const DotBox& box, const BitImage& image, int angle) {
  const std::int64_t width = image.width, height = image.height;
  const std::int64_t left = box.left, top = box.top, right = box.right, bottom = box.bottom;
  switch (angle) {
    case 90:
      return {top, width - right, bottom, width - left};
    case 180:
      return {width - right, height - bottom, width - left, height - top};
    case 270:
      return {height - bottom, left, height - top, right};
    default:
      return {left, top, right, bottom};
  }
}

class Linter {
 public:
  Linter(std::string_view job, double dpi)
      : m_reader(job),
        m_dpi(dpi > 0 ? dpi : GuessDpi(job).value_or(kDefaultDpi)),
        m_guess(dpi > 0 ? "" : " at " + Plain(m_dpi) + " dpi (guessed; --dpi decides)") {}

  LintResult Run() {
    while (const std::optional<Label> label = m_reader.Next()) {
      if (!label->size) continue;
      for (const Placement& placement : label->placements) {
        if (placement.image) CheckEdges(*label, placement);
      }
      if (label->twoColours) CheckRegister(*label);
      CheckCodes(*label);
    }
    LintResult result = {m_reader.Faults(), m_reader.FaultCount() + m_count};
    result.faults.insert(result.faults.end(), m_faults.begin(), m_faults.end());
    std::stable_sort(
        result.faults.begin(), result.faults.end(),
        [](const Fault& a, const Fault& b) { return a.place.offset < b.place.offset; });
    return result;
  }

 private:
  // White beyond an edge does no harm.
  void CheckEdges(const Label& label, const Placement& placement) {
    const Landing at = Land(label, placement, m_dpi);
    const LabelDots size = SizeInDots(label, m_dpi);
    if (at.Within(size)) return;
    const DotBox& dots = DotsOf(placement.image);
    if (dots.Empty()) return;
    const TurnedBox box = TurnBox(dots, *placement.image, placement.angle);
    const std::pair<const char*, std::int64_t> beyond[] = {
        {"left edge", -(at.left + box.left)},
        {"right edge", at.left + box.right - size.width},
        {"edge printed first", -(at.top + box.top)},
        {"edge printed last", at.top + box.bottom - size.length}};
    for (const auto& [edge, count] : beyond) {
      if (count <= 0) continue;
      Note(placement.place,
           "Image " + Printable(placement.name) + " prints " + std::to_string(count) + " dots (" +
               Plain(static_cast<double>(count) * kMmAnInch / m_dpi) + " mm) beyond the " + edge +
               " of the label of " + Plain(label.WidthMm()) + " x " + Plain(label.size->lengthMm) +
               " mm" + m_guess + ": move it or send a larger label size");
    }
  }

  // A dot of each colour at the same place on the page must print at the same place on the label.
  void CheckRegister(const Label& label) {
    const Placement* black = nullptr;
    const Placement* highlight = nullptr;
    for (const Placement& placement : label.placements) {
      if (!placement.image) continue;
      (Land(label, placement, m_dpi).highlight ? highlight : black) = &placement;
    }
    if (black == nullptr || highlight == nullptr || black->angle != highlight->angle) return;
    const bool sideways = black->angle == 90 || black->angle == 270;
    if (sideways ? black->image->height != highlight->image->height
                 : black->image->width != highlight->image->width) {
      return;
    }
    const double offMm = highlight->xMm - black->xMm - label.WidthMm();
    if (std::abs(offMm) <= kRegisterMm) return;
    Note(highlight->place, "The highlight lies " + Plain(std::abs(offMm)) + " mm " +
                               (offMm > 0 ? "right" : "left") +
                               " of the black: place it half the label's width, " +
                               Plain(label.WidthMm()) + " mm, beyond it");
  }

  // Looks for codes on the upright label, in each colour by itself.
  void CheckCodes(const Label& label) {
    const LabelDots size = SizeInDots(label, m_dpi);
    const double dots = static_cast<double>(size.width) * static_cast<double>(size.length);
    if (label.placements.empty() || dots <= 0 || dots > m_dotsToSearch) return;
    m_dotsToSearch -= dots;
    std::string why;
    const std::optional<LabelPicture> drawn = DrawLabel(label, m_dpi, why);
    if (!drawn) return;
    m_turn = UprightTurn(label, m_turn);
    for (const BitImage* plane : {&drawn->black, &drawn->highlight}) {
      for (const CodeFault& fault : FindCodes(Turn(*plane, m_turn), m_dpi).faults) {
        Note(label.placements.front().place, CodeFaultText(fault, m_dpi) + m_guess);
      }
    }
  }

  // A page image is often placed on many labels, so the last boxes are kept.
  const DotBox& DotsOf(const std::shared_ptr<const BitImage>& image) {
    for (const auto& [known, box] : m_boxes) {
      if (known == image) return box;
    }
    m_next = (m_next + 1) % std::size(m_boxes);
    m_boxes[m_next] = {image, FindDots(*image)};
    return m_boxes[m_next].second;
  }

  void Note(Place place, std::string text) {
    ++m_count;
    if (m_faults.size() < kMostFaults) m_faults.push_back({place, std::move(text)});
  }

  JobReader m_reader;
  const double m_dpi;
  const std::string m_guess;  // added to messages if the resolution is a guess
  std::vector<Fault> m_faults;
  std::uint64_t m_count = 0;
  std::pair<std::shared_ptr<const BitImage>, DotBox> m_boxes[4];
  std::size_t m_next = 0;
  int m_turn = 0;
  double m_dotsToSearch = kMostDotsSearched;
};

}  // namespace

LintResult LintJob(std::string_view job, double dpi) { return Linter(job, dpi).Run(); }

}  // namespace viewer
