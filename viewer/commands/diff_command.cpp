// vlx diff: compares what two jobs print.

#include <cstdio>

#include "common/error.h"
#include "viewer/commands/commands.h"
#include "viewer/commands/job_file.h"
#include "viewer/commands/options.h"
#include "viewer/files.h"
#include "viewer/language/text.h"
#include "viewer/reports/contact_sheet.h"
#include "viewer/reports/diff.h"
#include "viewer/reports/diff_sheet.h"
#include "viewer/reports/label_json.h"

namespace {

using namespace viewer;
using Json = nlohmann::ordered_json;

struct DiffOptions {
  std::string a, b, folder, sheet;
  double dpi = 0;
  bool json = false;
};

constexpr const char* kDiffNotes =
    R"(The dots on the labels are compared, not the bytes of the images. In a picture, dots that both
jobs print are grey, dots of the first job only are blue, of the second only orange, and dots in
another colour purple; its legend says so.

Examples:
  vlx diff before.job after.job
  vlx diff before.job after.job -o differences --dpi 300
  vlx diff before.job after.job --sheet differences.html

Exit codes: 0 both print the same, 1 they differ, 2 usage, 3 unreadable or no job,
5 output cannot be written)";

// Writes the picture of a difference. Returns its path, empty if there is none.
std::string SavePicture(const DiffOptions& options, const LabelDiff& diff) {
  if (options.folder.empty() || diff.png.empty()) return "";
  char name[40];
  std::snprintf(name, sizeof name, "/diff-%04llu.png",
                static_cast<unsigned long long>(diff.number));
  WriteWholeFile(options.folder + name, diff.png);
  return options.folder + name;
}

Json ToJson(const LabelDiff& diff, const std::string& path) {
  Json json = {{"label", diff.number}, {"differences", diff.texts}, {"dots", diff.dots}};
  if (diff.dots > 0) {
    json["box_dots"] = {diff.box.left, diff.box.top, diff.box.right, diff.box.bottom};
  }
  if (!path.empty()) json["file"] = path;
  return json;
}

int Diff(const DiffOptions& options) {
  for (const std::string& job : {options.a, options.b}) CheckSheet(options.sheet, job);
  const std::string a = ReadJob(options.a), b = ReadJob(options.b);
  if (!options.folder.empty()) MakePictureFolder(options.folder);
  Json labels = Json::array();
  DiffSheet sheet(options.a, options.b);
  std::FILE* report = options.sheet == "-" ? stderr : stdout;
  const JobDiff result = DiffJobs(a, b, options.dpi, [&](const LabelDiff& diff) {
    const std::string path = SavePicture(options, diff);
    if (!options.sheet.empty()) sheet.Add(diff);
    if (options.json) {
      labels.push_back(ToJson(diff, path));
      return;
    }
    for (const std::string& text : diff.texts) {
      std::fprintf(report, "label %llu: %s\n", static_cast<unsigned long long>(diff.number),
                   text.c_str());
    }
    if (!path.empty()) std::fprintf(report, "  %s\n", path.c_str());
  });
  if (!options.sheet.empty()) WriteWholeFile(options.sheet, sheet.Html(result));
  if (options.json) {
    PrintJson({{"dpi", result.dpi},
               {"labels", result.labels},
               {"different", result.different},
               {"labels_that_differ", std::move(labels)}});
  } else {
    std::fprintf(report, "%s of %s labels differ at %s dpi\n", Grouped(result.different).c_str(),
                 Grouped(result.labels).c_str(), Plain(result.dpi).c_str());
  }
  return result.different == 0 ? kExitDone : kExitFound;
}

}  // namespace

Command AddDiffCommand(CLI::App& program) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* diff = program.add_subcommand("diff", "Compare what two jobs print");
  diff->add_option("A", options->a, "Job file, - for standard input")->required();
  diff->add_option("B", options->b, "Job file")->required();
  diff->add_option("-o,--output", options->folder, "Folder for pictures of the differences");
  diff->add_option("--sheet", options->sheet, "HTML file with all differences");
  AddDpiOption(*diff, options->dpi);
  diff->add_flag("--json", options->json, "Write JSON");
  diff->footer(kDiffNotes);
  return {diff, [options] { return Diff(*options); }};
}
