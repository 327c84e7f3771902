#include "viewer/reports/contact_sheet.h"

#include <algorithm>

#include "viewer/language/text.h"
#include "viewer/reports/label_words.h"

namespace viewer {

namespace {

constexpr std::size_t kMostFaultsShown = 20;
constexpr std::uint64_t kFewLabels = 2;  // shown larger

std::string ImageItem(const Label& label, const Placement& placement, double dpi) {
  std::string html = "<li";
  const bool highlight = placement.image && label.size && Land(label, placement, dpi).highlight;
  if (highlight) html += " class=\"highlight\"";
  html += ">image " + Escaped(Printable(placement.name)) + " · ";
  if (label.twoColours) html += highlight ? "second colour · " : "black · ";
  if (placement.downloadBytes == 0) {
    html += "<span class=\"kept\">re-used</span>";
  } else {
    html += Counted(placement.downloadBytes, "byte");
  }
  if (placement.bothSides) html += " · both sides";
  return html + "</li>";
}

std::string Fact(const std::string& name, const std::string& value, const std::string& more = "") {
  return "<div><dt>" + name + "</dt><dd>" + value +
         (more.empty() ? "" : " <small>" + more + "</small>") + "</dd></div>";
}

std::string NotesHtml(const JobNotes& notes) {
  std::string text;
  for (const std::string& note : {notes.model, notes.created}) {
    if (!note.empty()) text += (text.empty() ? "" : " · ") + Escaped(note);
  }
  return text.empty() ? "" : "<p class=\"notes\">" + text + "</p>";
}

}  // namespace

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    std::uint32_t three = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      three = three << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text += at + i <= bytes.size() ? kDigits[three >> (18 - 6 * i) & 63] : '=';
    }
  }
  return text;
}

std::string Escaped(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

void LabelStrip::Add(const DrawnLabel& drawn, std::string_view png) {
  AddItem(drawn, png.empty() ? "" : "data:image/png;base64," + Base64(png));
}

void LabelStrip::AddLinked(const DrawnLabel& drawn, const std::string& path) {
  AddItem(drawn, Escaped(path));
}

void LabelStrip::AddItem(const DrawnLabel& drawn, const std::string& source) {
  if (++m_count > kMostLabelsOnSheet) return;
  const Label& label = drawn.label;
  const std::string number = Grouped(label.number);
  const UprightSize size = SizeOf(drawn);
  std::string html = label.cutAtEnd ? "<li class=\"cut\">" : "<li>";
  html += "<div class=\"web\" style=\"--w:" + Plain(std::clamp(size.widthMm, 1.0, 10000.0)) +
          ";--h:" + Plain(std::clamp(size.heightMm, 1.0, 10000.0)) + "\"><figure" +
          (label.copies > 1 ? " class=\"more\">" : ">");
  if (source.empty()) {
    html += "<div class=\"none\">not drawn: " + Escaped(drawn.why) + "</div>";
  } else {
    html += "<img loading=\"lazy\" alt=\"Label " + number + ": " +
            LabelWords(drawn, m_dotsToSearch) + "\" src=\"" + source + "\">";
  }
  html += "<div class=\"wide\">" + size.Text() + "</div></figure>";
  if (label.copies != 1) {
    html +=
        "<span class=\"copies\">× " + Grouped(static_cast<std::uint64_t>(label.copies)) + "</span>";
  }
  html += "</div><div class=\"what\"><b>Label " + number + "</b> · " +
          Grouped(static_cast<std::uint64_t>(label.copies)) +
          (label.copies == 1 ? " copy · " : " copies · ") + Counted(label.bytes, "byte");
  if (label.cuts > 0) html += " · " + Counted(static_cast<std::uint64_t>(label.cuts), "cut");
  html += "<ul>";
  for (const Placement& placement : label.placements) {
    html += ImageItem(label, placement, drawn.dpi);
  }
  html += "</ul></div>";
  if (label.cutAtEnd) html += "<span class=\"cutmark\" aria-hidden=\"true\">✂</span>";
  m_items.push_back(html + "</li>\n");
}

std::string LabelStrip::Html(std::size_t most) const {
  std::string html =
      m_count <= kFewLabels ? "<ol class=\"strip few\">\n" : "<ol class=\"strip\">\n";
  for (std::size_t i = 0; i < std::min(most, m_items.size()); ++i) html += m_items[i];
  html += "</ol>\n";
  if (most >= kMostLabelsOnSheet && m_count > kMostLabelsOnSheet) {
    html += "<p class=\"rest\">and " + Counted(m_count - kMostLabelsOnSheet, "more label") +
            "; <code>vlx view -o FOLDER</code> draws all of them</p>\n";
  }
  return html;
}

std::string FactsHtml(const JobView& view, const JobTotals& totals, std::uint64_t jobBytes) {
  return "<dl class=\"facts\">" + Fact("Labels", Grouped(totals.labels)) +
         Fact("With copies", Grouped(static_cast<std::uint64_t>(totals.copies))) +
         Fact("Cuts", Grouped(static_cast<std::uint64_t>(totals.cuts))) +
         Fact("Job", Grouped(jobBytes), jobBytes == 1 ? "byte" : "bytes") +
         Fact("Downloaded", Grouped(view.Reader().Downloads()), "images") +
         Fact("Re-used", Grouped(view.Reader().Reused()), "images") +
         Fact("Resolution", Plain(view.Dpi()), view.DpiIsGuessed() ? "dpi guessed" : "dpi") +
         "</dl>\n";
}

std::string FaultsHtml(const JobReader& reader) {
  if (reader.FaultCount() == 0) return "";
  std::string html =
      "<section class=\"faults\"><b>" + Counted(reader.FaultCount(), "mistake") + " found</b><ul>";
  const std::size_t shown = std::min(reader.Faults().size(), kMostFaultsShown);
  for (std::size_t i = 0; i < shown; ++i) {
    const Fault& fault = reader.Faults()[i];
    html += "<li>Line " + Grouped(fault.place.line) + ", byte " + Grouped(fault.place.offset) +
            ": " + Escaped(fault.text) + "</li>";
  }
  if (reader.FaultCount() > shown) {
    html += "<li>and " + Grouped(reader.FaultCount() - shown) + " more</li>";
  }
  return html + "</ul></section>\n";
}

std::string PageStart(const std::string& title, const std::string& head) {
  return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">" +
         head + "<title>" + Escaped(title) + "</title><style>" + kPageStyle +
         "</style></head>\n<body><main>\n";
}

std::string ContactSheet(const std::string& jobName, std::uint64_t jobBytes, const JobView& view,
                         const JobTotals& totals, const LabelStrip& strip) {
  const JobNotes& notes = view.Reader().Notes();
  const std::string title = notes.name.empty() ? jobName : notes.name;
  return PageStart(title, "") + "<h1>" + Escaped(title) + "</h1>" + NotesHtml(notes) +
         FactsHtml(view, totals, jobBytes) + FaultsHtml(view.Reader()) + strip.Html() +
         "<footer>Drawn from the job stream by the virtual printer of vlx; " +
         "each label as it is read, upright.</footer>\n</main></body></html>\n";
}

}  // namespace viewer
