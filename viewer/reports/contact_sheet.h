// A job's labels as one HTML page: the strip of labels in print order, with notes on each.
// The page is self-contained, fits a phone and prints well.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "viewer/codes/codes.h"
#include "viewer/drawing/job_view.h"

namespace viewer {

// Escapes text for HTML.
std::string Escaped(std::string_view text);
std::string Base64(std::string_view bytes);
// Returns a page up to its content: the title, the shared style and further head elements.
std::string PageStart(const std::string& title, const std::string& head);
extern const char* const kPageStyle;

// Further labels are counted but not shown.
inline constexpr std::uint64_t kMostLabelsOnSheet = 1000;

// The labels of a job as a list of HTML items, in print order.
class LabelStrip {
 public:
  // png: the label's picture, embedded in the page; empty if there is none.
  void Add(const DrawnLabel& drawn, std::string_view png);
  // path: of the picture, relative to the page; empty if there is none.
  void AddLinked(const DrawnLabel& drawn, const std::string& path);
  // Returns the list so far, or only its first labels.
  std::string Html(std::size_t most = kMostLabelsOnSheet) const;
  std::uint64_t Count() const { return m_count; }

 private:
  void AddItem(const DrawnLabel& drawn, const std::string& source);

  std::vector<std::string> m_items;
  std::uint64_t m_count = 0;
  double m_dotsToSearch = kMostDotsSearched;
};

// The figures above the strip: labels, copies, cuts, bytes, images, resolution.
std::string FactsHtml(const JobView& view, const JobTotals& totals, std::uint64_t jobBytes);
// The mistakes found in the job; empty if there are none.
std::string FaultsHtml(const JobReader& reader);

// The whole contact sheet. Call it after the view has returned its last label.
std::string ContactSheet(const std::string& jobName, std::uint64_t jobBytes, const JobView& view,
                         const JobTotals& totals, const LabelStrip& strip);

}  // namespace viewer
