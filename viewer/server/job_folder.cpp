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
#include "viewer/server/printer_page.h"

namespace viewer {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostJobsOnPage = 100;
constexpr std::chrono::seconds kLongestDrawing{60};

// Returns 7 for "job-0007.job"; 0 for names that the folder does not give, "job-7.job" included.
std::uint64_t JobNumber(const std::string& name) {
  if (!name.starts_with("job-") || !name.ends_with(".job")) return 0;
  const char* end = name.data() + name.size() - 4;
  std::uint64_t number = 0;
  const auto result = std::from_chars(name.data() + 4, end, number);
  return result.ptr == end && JobName(number) + ".job" == name ? number : 0;
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
    Draw(*number, "");
  }
  WritePage();
}

std::string JobFolder::NewIncomingPath() {
  const std::lock_guard lock(m_mutex);
  return m_folder + "/incoming-" + std::to_string(getpid()) + "-" + std::to_string(++m_incoming) +
         ".part";
}

std::string JobFolder::Add(const std::string& incomingPath, const std::string& note) {
  const std::lock_guard lock(m_mutex);
  const std::string name = JobName(++m_last);
  std::error_code error;
  fs::rename(incomingPath, m_folder + "/" + name + ".job", error);
  if (error) {
    throw CommandError(
        kExitTarget, "The job " + name + " cannot be kept in " + m_folder + ": " + error.message());
  }
  std::string line = Draw(m_last, note);
  WritePage();
  return line;
}

std::string JobFolder::Draw(std::uint64_t number, const std::string& note) {
  const std::string name = JobName(number);
  const std::string job = ReadJobFile(m_folder + "/" + name + ".job");
  const auto latest = std::chrono::steady_clock::now() + kLongestDrawing;
  JobView view(job, m_dpi);
  JobTotals totals;
  LabelStrip strip;
  std::string more = note;
  while (const std::optional<DrawnLabel> drawn = view.Next()) {
    totals.Add(drawn->label);
    std::string picture;
    if (drawn->picture) {
      char end[32];
      std::snprintf(end, sizeof end, "-%04llu.png",
                    static_cast<unsigned long long>(drawn->label.number));
      picture = name + end;
      WriteWholeFile(m_folder + "/" + picture,
                     PicturePng(Turn(*drawn->picture, drawn->turn), view.Dpi(), m_highlight));
    }
    strip.AddLinked(*drawn, picture);
    if (totals.labels == kMostLabelsOnSheet || std::chrono::steady_clock::now() > latest) {
      more += (more.empty() ? "" : " ") + std::string("Drawing stopped after ") +
              Counted(totals.labels, "label") + ": vlx view draws all of them.";
      break;
    }
  }
  WriteWholeFile(m_folder + "/" + name + ".html",
                 ContactSheet(name, job.size(), view, totals, strip));
  m_sections.push_front(JobSection(name, more, job.size(), view, totals, strip));
  WriteWholeFile(m_folder + "/" + name + ".js", JobScript(number, m_sections.front()));
  if (m_sections.size() > kMostJobsOnPage) m_sections.pop_back();
  std::string line = name + ": " + totals.Text() + ", " + Counted(job.size(), "byte");
  if (view.Reader().FaultCount() > 0) line += ", " + Counted(view.Reader().FaultCount(), "fault");
  return more.empty() ? line : line + "; " + more;
}

void JobFolder::WritePage() {
  WriteWholeFile(m_folder + "/" + kPageName, PrinterPage(m_sections, m_last));
  WriteWholeFile(m_folder + "/" + kNewestName, NewestScript(m_last));
}

}  // namespace viewer
