#include "viewer/reports/diff_sheet.h"

#include "viewer/language/text.h"
#include "viewer/reports/contact_sheet.h"

namespace viewer {

void DiffSheet::Add(const LabelDiff& diff) {
  const std::string number = Grouped(diff.number);
  m_labels += "<section class=\"job\"><h2>Label " + number + "</h2><ul class=\"notes\">";
  for (const std::string& text : diff.texts) m_labels += "<li>" + Escaped(text) + "</li>";
  m_labels += "</ul>";
  if (!diff.png.empty()) {
    m_labels += "<img class=\"diff\" alt=\"The differences of label " + number + ": " +
                Escaped(diff.texts.back()) + "\" src=\"data:image/png;base64," + Base64(diff.png) +
                "\">";
  }
  m_labels += "</section>\n";
}

std::string DiffSheet::Html(const JobDiff& result) const {
  std::string html = PageStart(m_first + " and " + m_second, "") + "<h1>" + Escaped(m_first) +
                     " and " + Escaped(m_second) + "</h1><p class=\"notes\">" +
                     Grouped(result.different) + " of " + Counted(result.labels, "label") +
                     (result.different == 1 ? " differs at " : " differ at ") + Plain(result.dpi) +
                     " dpi. The first job is " + Escaped(m_first) + ", the second " +
                     Escaped(m_second) + ".</p>\n<ul class=\"legend\">";
  for (const DiffMark& mark : kDiffMarks) {
    html += std::string("<li><span style=\"background:") + mark.colour + "\"></span>" + mark.words +
            "</li>";
  }
  html += "</ul>\n";
  if (m_labels.empty()) html += "<p class=\"rest\">Both jobs print the same.</p>\n";
  return html + m_labels + "</main></body></html>\n";
}

}  // namespace viewer
