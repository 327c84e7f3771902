// PDF files, drawn by the program pdftoppm (poppler-utils) and read from its output page by page,
// so that a file of any length needs the memory of one page.

#include "host/pages/formats/pdf_pages.h"

#include <cstdlib>

#include "host/error.h"
#include "host/pages/formats/pnm_pages.h"
#include "host/pages/helper_program.h"
#include "host/pages/page_formats.h"

namespace {

// What a message of the program means and what to do about it. The last row matches every message.
struct Diagnosis {
  const char* message;
  const char* fact;
  const char* remedy;
};
constexpr Diagnosis kDiagnoses[] = {
    {"ncorrect password", "is encrypted", "save it without a password, then print that file"},
    {"", "is damaged", "export it again"},
};

class PdfPages final : public PageSource {
 public:
  PdfPages(RereadableFile file, std::string name, int dpi)
      : m_file(std::move(file)), m_name(std::move(name)), m_dpi(dpi) {}

  bool Next(PageImage& page) override {
    if (m_ended) return false;
    if (!m_program) Start();
    try {
      if (ReadPnm(m_program->Output(), page)) {
        // For a page of 2 GiB or more the program draws a single dot and reports success.
        if (page.widthPx == 1 && page.heightPx == 1) {
          throw HostError(
              kExitInput,
              m_name + ": a page is too large for pdftoppm at " + std::to_string(m_dpi) + " dpi",
              "make the page smaller");
        }
        page.roundedUp = true;
        return true;
      }
    } catch (const HostError&) {
      if (m_program->Output().EndSeen()) CheckEnd();  // the program's own reason is better
      throw;
    }
    CheckEnd();
    return false;
  }

  // Before the first page is drawn, the program can be told to begin later.
  bool Skip(PageImage& scratch) override {
    if (m_program || !Count()) return Next(scratch);
    if (m_first > *Count()) return false;
    m_ended = ++m_first > *Count();
    return true;
  }

  std::optional<std::size_t> Count() const override {
    if (!m_counted) m_count = ReadCount();
    m_counted = true;
    return m_count;
  }

 private:
  HelperTask Task(std::vector<std::string> arguments) const {
    return {m_name, "a PDF file", "poppler-utils", std::move(arguments)};
  }

  // No smoothing: a printer has no grey dots, and a smoothed edge would be dithered.
  void Start() {
    std::vector<std::string> arguments = {"pdftoppm",  "-r",  std::to_string(m_dpi),
                                          "-cropbox",  "-aa", "no",
                                          "-aaVector", "no",  "/dev/stdin"};
    if (m_first > 1) arguments.insert(arguments.end() - 1, {"-f", std::to_string(m_first)});
    m_program.emplace(Task(std::move(arguments)), m_file.Descriptor());
  }

  // nullopt if the program fails; drawing the pages will then say why.
  std::optional<std::size_t> ReadCount() const {
    HelperProgram program(Task({"pdfinfo", "/dev/stdin"}), m_file.Descriptor());
    const std::string text = "\n" + program.Output().ReadAll();
    const std::size_t at = text.find("\nPages:");
    if (program.AwaitFault() || at == text.npos) return std::nullopt;
    return std::strtoull(text.c_str() + at + 7, nullptr, 10);
  }

  // Called when the program has closed its output.
  void CheckEnd() {
    m_ended = true;
    const std::optional<std::string> message = m_program->AwaitFault();
    if (!message) return;
    for (const Diagnosis& diagnosis : kDiagnoses) {
      if (message->find(diagnosis.message) == message->npos) continue;
      throw HostError(
          kExitInput,
          m_name + ": pdftoppm cannot read this PDF file (" + *message + "), it " + diagnosis.fact,
          diagnosis.remedy);
    }
  }

  const RereadableFile m_file;  // the programs read a PDF file more than once
  const std::string m_name;
  const int m_dpi;
  std::optional<HelperProgram> m_program;
  std::size_t m_first = 1;  // page to begin with
  bool m_ended = false;
  mutable bool m_counted = false;
  mutable std::optional<std::size_t> m_count;
};

}  // namespace

std::unique_ptr<PageSource> PagesOfPdf(RereadableFile file, std::string name, int dpi) {
  return std::make_unique<PdfPages>(std::move(file), std::move(name), dpi);
}

std::unique_ptr<PageSource> OpenPdf(PageInput input, int dpi) {
  std::string name = input.Name();
  return PagesOfPdf(RereadableFile(std::move(input)), std::move(name), dpi);
}
