#include "viewer/drawing/job_view.h"

#include "viewer/language/text.h"

namespace viewer {

JobView::JobView(std::string_view job, double dpi) : m_reader(job), m_dpi(dpi) {
  if (dpi > 0) return;
  m_guessed = true;
  m_dpi = GuessDpi(job).value_or(kDefaultDpi);
}

std::optional<DrawnLabel> JobView::Next() {
  std::optional<Label> label = m_reader.Next();
  if (!label) return std::nullopt;
  DrawnLabel drawn;
  drawn.label = std::move(*label);
  drawn.dpi = m_dpi;
  drawn.picture = DrawLabel(drawn.label, m_dpi, drawn.why);
  drawn.turn = m_turn = UprightTurn(drawn.label, m_turn);
  return drawn;
}

void JobTotals::Add(const Label& label) {
  ++labels;
  copies += label.copies;
  cuts += label.cuts;
}

std::string JobTotals::Text() const {
  const std::string text = Counted(labels, "label");
  if (copies != static_cast<std::int64_t>(labels)) {
    return text + ", " + Grouped(static_cast<std::uint64_t>(copies)) + " with copies";
  }
  return text + (labels == 1 ? ", printed once" : ", each printed once");
}

}  // namespace viewer
