// vlx view: draws the labels of a job as pictures and as a contact sheet.

#include <chrono>
#include <cstdio>

#include "common/error.h"
#include "viewer/commands/commands.h"
#include "viewer/commands/job_file.h"
#include "viewer/commands/options.h"
#include "viewer/files.h"
#include "viewer/language/text.h"
#include "viewer/reports/contact_sheet.h"
#include "viewer/reports/label_json.h"

namespace {

using namespace viewer;

struct ViewOptions {
  std::string job;
  std::string folder;
  std::string sheet;
  double dpi = 0;
  std::string highlight;
  bool asFed = false;
  bool json = false;
  unsigned limit = 60;
};

constexpr const char* kViewNotes =
    R"(A job does not state its resolution. Without --dpi it is guessed from images that fill the
label; if there are none, it is 300. Pictures are upright; with --as-fed they are turned as the
labels leave the printer, with the row printed first on top.

Without -o, --sheet and --json the pictures go to a folder named after the job.

Examples:
  vlx view label.job
  vlx view label.job -o pictures
  vlx view label.job --sheet label.html
  vlx print label.png -o - | vlx view - --sheet label.html

Exit codes: 0 done, 2 usage, 3 unreadable, no job or without labels, 5 output cannot be written)";

class Viewing {
 public:
  Viewing(const ViewOptions& options, const std::string& job)
      : m_options(options),
        m_job(job),
        m_view(job, options.dpi),
        m_highlight(options.highlight.empty() ? kDefaultHighlight : ReadColour(options.highlight)),
        m_stem(JobStem(options.job)) {
    m_folder = options.folder;
    if (m_folder.empty() && options.sheet.empty() && !options.json) m_folder = m_stem;
    if (!options.folder.empty())
      MakePictureFolder(m_folder);
    else if (!m_folder.empty())
      MakeFolder(m_folder);
  }

  int Run() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(m_options.limit);
    while (std::optional<DrawnLabel> drawn = m_view.Next()) {
      Show(std::move(*drawn));
      m_stopped = std::chrono::steady_clock::now() > end;
      if (m_stopped) break;
    }
    if (m_totals.labels == 0) {
      throw CommandError(kExitInput, "The job " + m_options.job +
                                         " prints no label: run vlx lint to see what is wrong");
    }
    if (!m_options.sheet.empty()) {
      WriteWholeFile(m_options.sheet,
                     ContactSheet(m_stem, m_job.size(), m_view, m_totals, m_strip));
    }
    Report();
    if (!m_stopped) return kExitDone;
    throw CommandError(kExitInput, "Drawing stopped after " + Counted(m_totals.labels, "label") +
                                       ": the limit is " + Counted(m_options.limit, "second") +
                                       "; --limit SECONDS draws for longer");
  }

 private:
  void Show(DrawnLabel drawn) {
    m_totals.Add(drawn.label);
    if (m_options.asFed) drawn.turn = 0;
    std::string png;
    const bool onSheet = !m_options.sheet.empty() && m_totals.labels <= kMostLabelsOnSheet;
    if (drawn.picture && (onSheet || !m_folder.empty())) {
      png = PicturePng(Turn(*drawn.picture, drawn.turn), m_view.Dpi(), m_highlight);
    }
    std::string path;
    if (drawn.picture && !m_folder.empty()) {
      char number[32];
      std::snprintf(number, sizeof number, "-%04llu.png",
                    static_cast<unsigned long long>(drawn.label.number));
      path = m_folder + "/" + m_stem + number;
      WriteWholeFile(path, png);
    }
    if (!drawn.picture) {
      std::fprintf(stderr, "Label %llu is not drawn: %s\n",
                   static_cast<unsigned long long>(drawn.label.number), drawn.why.c_str());
    }
    if (!m_options.sheet.empty()) m_strip.Add(drawn, png);
    if (m_options.json) {
      m_labels.push_back(ToJson(drawn));
      if (!path.empty()) m_labels.back()["file"] = path;
    } else if (!path.empty()) {
      const double length = drawn.label.size->lengthMm;
      std::printf("%s: %s x %s mm, %s\n", path.c_str(), Tenths(drawn.label.WidthMm()).c_str(),
                  Tenths(length).c_str(),
                  drawn.label.copies == 1
                      ? "1 copy"
                      : (std::to_string(drawn.label.copies) + " copies").c_str());
    }
  }

  void Report() {
    const JobReader& reader = m_view.Reader();
    if (reader.FaultCount() > 0) {
      std::fprintf(stderr, "%s in this job; vlx lint lists them\n",
                   Counted(reader.FaultCount(), "mistake").c_str());
    }
    if (m_options.json) {
      nlohmann::ordered_json json = ToJson(reader.Notes());
      json["bytes"] = m_job.size();
      json["dpi"] = m_view.Dpi();
      json["dpi_guessed"] = m_view.DpiIsGuessed();
      json["downloads"] = reader.Downloads();
      json["reused"] = reader.Reused();
      json["copies"] = m_totals.copies;
      json["cuts"] = m_totals.cuts;
      json["labels"] = std::move(m_labels);
      json["faults"] = nlohmann::ordered_json::array();
      for (const Fault& fault : reader.Faults()) json["faults"].push_back(ToJson(fault));
      PrintJson(json);
      return;
    }
    const std::string where = m_folder.empty() ? "" : "; pictures in the folder " + m_folder;
    std::fprintf(m_options.sheet == "-" ? stderr : stdout,
                 "%s: %s, %s dpi%s, %llu downloaded, %llu re-used%s\n",
                 m_options.sheet.empty() ? m_options.job.c_str() : m_options.sheet.c_str(),
                 m_totals.Text().c_str(), Plain(m_view.Dpi()).c_str(),
                 m_view.DpiIsGuessed() ? " (guessed)" : "",
                 static_cast<unsigned long long>(reader.Downloads()),
                 static_cast<unsigned long long>(reader.Reused()), where.c_str());
  }

  const ViewOptions& m_options;
  const std::string& m_job;
  JobView m_view;
  const Colour m_highlight;
  const std::string m_stem;
  std::string m_folder;  // for pictures; empty if none are wanted
  bool m_stopped = false;
  JobTotals m_totals;
  LabelStrip m_strip;
  nlohmann::ordered_json m_labels = nlohmann::ordered_json::array();
};

}  // namespace

Command AddViewCommand(CLI::App& program) {
  const auto options = std::make_shared<ViewOptions>();
  CLI::App* view = program.add_subcommand("view", "Draw what a job prints");
  view->add_option("JOB", options->job, "Job file, - for standard input")->required();
  view->add_option("-o,--output", options->folder, "Folder for the pictures, one PNG per label");
  view->add_option("--sheet", options->sheet, "HTML file for a contact sheet of all labels");
  AddDpiOption(*view, options->dpi);
  view->add_option("--highlight", options->highlight, "Highlight colour as #RRGGBB");
  view->add_flag("--as-fed", options->asFed, "Draw labels as they leave the printer, not upright");
  view->add_option("--limit", options->limit, "Seconds after which drawing stops")
      ->check(CLI::Range(1, 86400));
  view->add_flag("--json", options->json, "Write a description of job and labels as JSON");
  view->footer(kViewNotes);
  return {view, [options] {
            CheckSheet(options->sheet, options->job);
            const std::string job = ReadJob(options->job);
            return Viewing(*options, job).Run();
          }};
}
