// The filter of CUPS: rastertovlx JOB USER TITLE COPIES OPTIONS [FILE] reads a document, or
// standard input, and writes the printer's job to standard output. The variable PPD has the path of
// the queue's description. Messages to cupsd are lines on standard error that begin with PAGE,
// INFO, WARNING, ERROR or DEBUG.

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "printing/cups/queue_job.h"
#include "printing/cups/queue_output.h"
#include "viewer/codes/codes.h"
#include "viewer/drawing/drawing.h"

namespace {

volatile std::sig_atomic_t g_cancelled = 0;

void Cancel(int) { g_cancelled = 1; }

void SetSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);  // pdftoppm's exit status is needed
  // Without SA_RESTART: a page that is still being read is not waited for.
  struct sigaction action = {};
  action.sa_handler = Cancel;
  sigaction(SIGTERM, &action, nullptr);
}

void Tell(const char* level, std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::fprintf(stderr, "%s: %s\n", level, text.c_str());
}

// Warns of bar codes on the job's first label that will not scan. job: the bytes up to the label's
// print command, or more.
void WarnOfCodes(std::string_view job, double dpi) try {
  viewer::JobReader reader(job);
  std::optional<viewer::Label> label = reader.Next();
  while (label && !label->size) label = reader.Next();
  if (!label) return;
  std::string why;
  const std::optional<viewer::LabelPicture> drawn = viewer::DrawLabel(*label, dpi, why);
  if (!drawn) return;
  const int turn = viewer::UprightTurn(*label, 0);
  for (const viewer::BitImage* plane : {&drawn->black, &drawn->highlight}) {
    for (const viewer::CodeFault& fault : viewer::FindCodes(Turn(*plane, turn), dpi).faults) {
      Tell("WARNING", viewer::CodeFaultText(fault, dpi));
    }
  }
} catch (const std::bad_alloc&) {
  // A missing warning is no reason not to print.
}

class QueueObserver final : public JobObserver {
 public:
  QueueObserver(QueueOutput& output, int copies, int dpi)
      : m_output(output), m_copies(copies), m_dpi(dpi) {}
  void Warning(const std::string& text) override { Tell("WARNING", text); }
  void Progress(std::size_t printed, std::optional<std::size_t>) override {
    std::fprintf(stderr, "PAGE: %zu %d\n", printed, m_copies);
    if (printed < 2 || !m_output.IsHolding()) return;
    WarnOfCodes(m_output.HeldBytes(), m_dpi);
    m_output.StopHolding();
  }
  bool Cancelled() override { return g_cancelled != 0; }

 private:
  QueueOutput& m_output;
  const int m_copies;
  const int m_dpi;
};

int CopiesOf(const char* text) {
  int copies = 1;
  std::from_chars(text, text + std::strlen(text), copies);
  return std::clamp(copies, 1, 32767);
}

void Print(char** arguments) {
  const char* ppd = std::getenv("PPD");
  const QueueJob queue(ppd == nullptr ? "" : ppd, arguments[5]);
  const std::string title = *arguments[3] == '\0' ? "label" : arguments[3];
  const int copies = CopiesOf(arguments[4]);
  JobRequest request;
  request.name = title;
  request.settings = queue.JobSettings();
  if (!queue.Collated()) request.settings.Set("print.copies", std::to_string(copies));
  PageRequest pageRequest = queue.Pages();
  if (queue.Collated()) pageRequest.repeats = copies;
  LabelPages pages(pageRequest, arguments[6] == nullptr ? "-" : arguments[6], title);

  auto target = std::make_unique<QueueOutput>();
  QueueOutput& output = *target;
  QueueObserver observer(output, queue.Collated() ? 1 : copies, pageRequest.dpi);
  Spool spool(std::move(target));
  const std::size_t printed = PrintLabels(pages, request, spool, observer);
  // People see the last message, which must be the backend's report on its printer: the cost may be
  // an INFO only while the backend has received nothing.
  if (printed > 0) Tell(output.IsHolding() ? "INFO" : "DEBUG", spool.Cost().Line());
  if (output.IsHolding()) WarnOfCodes(output.HeldBytes(), pageRequest.dpi);
  spool.Finish();
  pages.RethrowFailure();
}

int Run(int count, char** arguments) {
  if (count < 6 || count > 7) {
    Tell("ERROR", "rastertovlx is run by cupsd: rastertovlx JOB USER TITLE COPIES OPTIONS [FILE]");
    return EXIT_FAILURE;
  }
  try {
    Print(arguments);
    return EXIT_SUCCESS;
  } catch (const BackendGoneError& error) {
    Tell("DEBUG", error.what());
  } catch (const std::bad_alloc&) {
    Tell("ERROR", "There is not enough memory for this page");
  } catch (const std::exception& error) {
    if (g_cancelled) return EXIT_SUCCESS;  // cancelled before the first label
    Tell("ERROR", error.what());
  }
  return EXIT_FAILURE;
}

}  // namespace

int main(int count, char** arguments) {
  setenv("VLX_HOME", VLX_SYSTEM_HOME, 0);
  SetSignals();
  return Run(count, arguments);
}
