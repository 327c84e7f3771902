#include "viewer/server/job_folder.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "common/error.h"
#include "viewer/files.h"
#include "viewer/language/text.h"
#include "viewer/reports/contact_sheet.h"

namespace viewer {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostJobsOnPage = 100;
constexpr std::uint64_t kMostLabelsInSection = 12;
constexpr std::chrono::seconds kLongestDrawing{60};
constexpr const char* kRefresh = "<meta http-equiv=\"refresh\" content=\"3\">";
constexpr const char* kPageName = "/index.html";

std::string Numbered(const char* before, std::uint64_t number, const char* after) {
  char text[64];
  std::snprintf(text, sizeof text, "%s%04llu%s", before, static_cast<unsigned long long>(number),
                after);
  return text;
}

// Returns 7 for "job-0007.job", 0 for other names.
std::uint64_t JobNumber(const std::string& name) {
  if (!name.starts_with("job-") || !name.ends_with(".job")) return 0;
  const char* end = name.data() + name.size() - 4;
  std::uint64_t number = 0;
  const auto result = std::from_chars(name.data() + 4, end, number);
  return result.ec == std::errc() && result.ptr == end ? number : 0;
}

std::string Section(const std::string& name, const std::string& note, std::uint64_t bytes,
                    const JobView& view, const JobTotals& totals, const LabelStrip& strip) {
  const JobNotes& notes = view.Reader().Notes();
  std::string html = "<section class=\"job\"><h2><a href=\"" + name + ".html\">" +
                     Escaped(notes.name.empty() ? name : notes.name) +
                     "</a></h2><p class=\"notes\">" + name + " · " + totals.Text() + " · " +
                     Counted(bytes, "byte");
  if (!notes.created.empty()) html += " · " + Escaped(notes.created);
  html += "</p>";
  if (!note.empty()) html += "<p class=\"faults\">" + Escaped(note) + "</p>";
  if (view.Reader().FaultCount() > 0) {
    html += "<p class=\"faults\">" + Counted(view.Reader().FaultCount(), "mistake") +
            " found: <a href=\"" + name + ".html\">see the sheet</a></p>";
  }
  html += strip.Html();
  if (totals.labels > kMostLabelsInSection) {
    html += "<p class=\"rest\"><a href=\"" + name + ".html\">and " +
            Counted(totals.labels - kMostLabelsInSection, "more label") + "</a></p>";
  }
  return html + "</section>\n";
}

}  // namespace

JobFolder::JobFolder(std::string folder, double dpi, Colour highlight)
    : m_folder(std::move(folder)), m_dpi(dpi), m_highlight(highlight) {
  MakeFolder(m_folder);
  std::vector<std::uint64_t> numbers;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(m_folder, error)) {
    if (const std::uint64_t number = JobNumber(entry.path().filename().string()); number > 0) {
      numbers.push_back(number);
    }
  }
  std::sort(numbers.begin(), numbers.end());
  if (!numbers.empty()) m_last = numbers.back();
  const std::size_t shown = std::min(numbers.size(), kMostJobsOnPage);
  for (auto number = numbers.end() - static_cast<std::ptrdiff_t>(shown); number != numbers.end();
       ++number) {
    Draw(Numbered("job-", *number, ""), "");
  }
  WritePage();
}

std::string JobFolder::PathOfComing() {
  const std::lock_guard lock(m_mutex);
  return m_folder + "/coming-" + std::to_string(getpid()) + "-" + std::to_string(++m_coming) +
         ".part";
}

std::string JobFolder::Add(const std::string& comingPath, const std::string& note) {
  const std::lock_guard lock(m_mutex);
  const std::string name = Numbered("job-", ++m_last, "");
  std::error_code error;
  fs::rename(comingPath, m_folder + "/" + name + ".job", error);
  if (error) {
    throw CommandError(
        kExitTarget, "The job " + name + " cannot be kept in " + m_folder + ": " + error.message());
  }
  std::string line = Draw(name, note);
  WritePage();
  return line;
}

std::string JobFolder::Draw(const std::string& name, const std::string& note) {
  const std::string job = ReadJobFile(m_folder + "/" + name + ".job");
  const auto end = std::chrono::steady_clock::now() + kLongestDrawing;
  JobView view(job, m_dpi);
  JobTotals totals;
  LabelStrip onSheet, inSection;
  std::string more = note;
  while (const std::optional<DrawnLabel> drawn = view.Next()) {
    totals.Add(drawn->label);
    std::string picture;
    if (drawn->picture) {
      picture = name + Numbered("-", drawn->label.number, ".png");
      WriteWholeFile(m_folder + "/" + picture,
                     PicturePng(Turn(*drawn->picture, drawn->turn), view.Dpi(), m_highlight));
    }
    onSheet.AddLinked(*drawn, picture);
    if (totals.labels <= kMostLabelsInSection) inSection.AddLinked(*drawn, picture);
    if (totals.labels == kMostLabelsOnSheet || std::chrono::steady_clock::now() > end) {
      more += (more.empty() ? "" : " ") + std::string("Drawing stopped after ") +
              Counted(totals.labels, "label") + ": vlx view draws all of them.";
      break;
    }
  }
  WriteWholeFile(m_folder + "/" + name + ".html",
                 ContactSheet(name, job.size(), view, totals, onSheet));
  m_sections.push_front(Section(name, more, job.size(), view, totals, inSection));
  if (m_sections.size() > kMostJobsOnPage) m_sections.pop_back();
  std::string line = name + ": " + totals.Text() + ", " + Counted(job.size(), "byte");
  if (view.Reader().FaultCount() > 0) line += ", " + Counted(view.Reader().FaultCount(), "fault");
  return more.empty() ? line : line + "; " + more;
}

void JobFolder::WritePage() {
  std::string html = PageStart("Label printer", kRefresh) +
                     "<h1>Label printer</h1><p class=\"notes\">" + Counted(m_last, "job") +
                     " so far, the last one first. The page reloads itself.</p>\n";
  if (m_sections.empty()) html += "<p class=\"rest\">Waiting for the first job.</p>\n";
  for (const std::string& section : m_sections) html += section;
  if (m_last > m_sections.size()) {
    html += "<p class=\"rest\">and " + Counted(m_last - m_sections.size(), "older job") +
            " in this folder</p>\n";
  }
  WriteWholeFile(m_folder + kPageName, html + "</main></body></html>\n");
}

}  // namespace viewer
