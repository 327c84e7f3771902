// A job's labels as one HTML page: the strip as it leaves the printer, with what each label is.
// The page needs nothing else; it fits a phone and prints.
#pragma once

#include <string>
#include <string_view>

#include "viewer/drawing/job_view.h"

namespace viewer {

// Text for HTML.
std::string Escaped(std::string_view text);
// "12,345".
std::string Grouped(std::uint64_t number);
// "1 label", "2 labels".
std::string Counted(std::uint64_t number, const char* noun);
// A page up to its content: the head with title, the style that all pages share, and more.
std::string PageStart(const std::string& title, const std::string& head);
extern const char* const kPageStyle;

// Labels of a job in their order, as items of a page.
class LabelStrip {
 public:
  // png: the label's picture as a file, to be put into the page; empty when there is none.
  void Add(const DrawnLabel& drawn, std::string_view png);
  // path: of the picture, seen from the page.
  void AddLinked(const DrawnLabel& drawn, const std::string& path);
  // The strip so far.
  std::string Html() const;
  std::uint64_t Count() const { return m_count; }

 private:
  void AddItem(const DrawnLabel& drawn, const std::string& source);

  std::string m_items;
  std::uint64_t m_count = 0;
};

// Labels beyond these are counted but not shown: a page of more is of no use.
constexpr std::uint64_t kMostLabelsOnSheet = 1000;

// The numbers over the strip: labels, copies, cuts, bytes, images, resolution.
std::string FactsHtml(const JobView& view, const JobTotals& totals, std::uint64_t jobBytes);
// What a printer would stumble over, empty when nothing.
std::string FaultsHtml(const JobReader& reader);

// The whole contact sheet. The view has given its last label.
std::string ContactSheet(const std::string& jobName, std::uint64_t jobBytes, const JobView& view,
                         const JobTotals& totals, const LabelStrip& strip);

}  // namespace viewer
