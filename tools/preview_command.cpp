#include "tools/preview_command.h"

#include <cstdio>
#include <filesystem>

#include "common/error.h"
#include "tools/job_options.h"
#include "tools/job_report.h"
#include "tools/label_pictures.h"
#include "viewer/files.h"

namespace {

constexpr const char* kPreviewExamples = R"(Examples:
  vlx preview label.png -o seen.png --paper 100x150mm --dpi 300
  vlx preview labels.pdf -o pictures --settings two-colour.toml
  vlx preview photo.png -o seen.png --set colour.ditherer=threshold

The real plug-in renders the pages; the virtual printer then draws its job.
Exit codes: 0 done, 2 usage, 3 input unreadable, 4 settings conflict,
5 picture cannot be written, 70 internal)";

struct PreviewOptions {
  JobOptions job;
  std::string output;
};

void RefuseOtherPictures(const std::string& output) {
  if (!viewer::NamesFile(output)) return;
  throw CommandError(
      kExitUsage, "\"" + output + "\" names a file that preview does not write",
      "name a picture, " + std::filesystem::path(output).stem().string() + ".png, or a folder");
}

// Writes one picture file, or a folder with a picture for each label.
class Pictures {
 public:
  Pictures(const PreviewOptions& options, const PrinterProfile& profile, const JobRequest& request)
      : m_output(options.output),
        m_plain(!options.job.quiet && !options.job.json),
        m_single(options.output == "-" || options.output.ends_with(".png")),
        m_stem(options.job.files.front() == "-" ? "page"
                                                : viewer::JobStem(options.job.files.front())),
        m_guard(GuardOutputs(options.job, profile, request)) {
    if (m_single) {
      m_guard.Add({"-o", m_output}, kPictureOutput);
    } else {
      RefuseOtherPictures(m_output);
      viewer::MakeFolder(m_output);
    }
  }

  void Add(const std::string& png) {
    ++m_count;
    if (m_single) {
      if (m_count > 1) {
        throw CommandError(kExitUsage, "There are several labels for one picture, " + m_output,
                           "name a folder with -o");
      }
      m_first = png;
      return;
    }
    char number[32];
    std::snprintf(number, sizeof number, "-%04zu.png", m_count);
    const std::string path = (std::filesystem::path(m_output) / (m_stem + number)).string();
    m_guard.Add({"picture", path}, kPictureOutput);
    viewer::WriteWholeFile(path, png);
    m_paths.push_back(path);
    if (!m_plain) return;
    std::printf("%s\n", path.c_str());
  }

  void Finish() {
    if (!m_single || m_count != 1) return;
    viewer::WriteWholeFile(m_output, m_first);
    m_paths.push_back(m_output);
  }
  const std::vector<std::string>& Paths() const { return m_paths; }

 private:
  const std::string m_output;
  const bool m_plain;  // paths are printed as they come
  const bool m_single;
  const std::string m_stem;
  OutputGuard m_guard;
  std::string m_first;
  std::vector<std::string> m_paths;
  std::size_t m_count = 0;
};

int RunPreview(const PreviewOptions& options) {
  const PrinterProfile profile = ProfileOf(options.job.printer);
  const JobRequest request = MakeRequest(options.job, ReadSettings(options.job, profile));
  Pictures pictures(options, profile, request);
  std::string job;
  Spool spool(std::make_unique<MemoryTarget>(job));
  const PrintedFiles printed = PrintFiles(options.job, request, spool);

  DrawLabels(job, request.settings.Page(), printed.devmode,
             [&pictures](const std::string& png) { pictures.Add(png); });
  pictures.Finish();
  PrintReport(options.job, {{options.output}, printed.pages, pictures.Paths()}, spool.Cost(),
              options.output == "-");
  return kExitDone;
}

}  // namespace

Command PreviewCommand(CLI::App& program) {
  const auto options = std::make_shared<PreviewOptions>();
  CLI::App* preview =
      program.add_subcommand("preview", "Draw what the printed labels will look like");
  preview
      ->add_option(
          "-o,--output", options->output,
          "Picture (.png, or - for standard output), or a folder for one picture per label")
      ->option_text("FILE|FOLDER")
      ->group("Where to")
      ->required();
  AddJobOptions(*preview, options->job);
  preview->footer(kPreviewExamples);
  return {preview, [options] { return RunPreview(*options); }};
}
