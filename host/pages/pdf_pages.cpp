#include "host/pages/pdf_pages.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/error.h"

extern char** environ;

namespace {

constexpr int kPipeBytes = 1 << 20;  // fewer turns between the two processes

[[noreturn]] void FailErrno(const std::string& what) {
  throw HostError(kExitInput, what + ": " + std::strerror(errno));
}

// What to do about it, by what the program says.
struct PdfRemedy {
  const char* said;
  const char* remedy;
};
constexpr PdfRemedy kPdfRemedies[] = {
    {"ncorrect password", "it is encrypted; save it without a password, then print that file"},
    {"", "it is damaged; export it again"},
};

std::string FirstLine(std::FILE* file) {
  char line[512] = {};
  std::rewind(file);
  if (std::fgets(line, sizeof line, file) == nullptr) return {};
  line[std::strcspn(line, "\r\n")] = '\0';
  return line;
}

class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    // The signal that vlx ignores has to end this process when nobody reads its pages any more.
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  void Redirect(int from, int to) { posix_spawn_file_actions_adddup2(&actions, from, to); }

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

std::FILE* CopyToTemporaryFile(std::FILE* from, const std::string& source) {
  std::FILE* copy = std::tmpfile();
  if (copy == nullptr) FailErrno(source + ": there is no room for a temporary copy");
  std::vector<char> buffer(1 << 16);
  for (std::size_t count; (count = std::fread(buffer.data(), 1, buffer.size(), from)) > 0;) {
    if (std::fwrite(buffer.data(), 1, count, copy) != count) break;
  }
  if (std::ferror(from) || std::fflush(copy) != 0) {
    const int error = errno;
    std::fclose(copy);
    errno = error;
    FailErrno(source + ": cannot be copied to a temporary file");
  }
  return copy;
}

}  // namespace

PdfPages::PdfPages(std::FILE* pdf, const std::string& source, int dpi)
    : m_source(source), m_messages(std::tmpfile()) {
  if (m_messages == nullptr) FailErrno("No temporary file can be made");
  struct stat status = {};
  if (fstat(fileno(pdf), &status) != 0 || !S_ISREG(status.st_mode)) {
    m_copy.reset(CopyToTemporaryFile(pdf, source));
    pdf = m_copy.get();
  }
  Start(fileno(pdf), dpi);
}

void PdfPages::Start(int pdfDescriptor, int dpi) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) FailErrno("No pipe can be made");
  fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);  // less is slower, nothing else
  m_pages.reset(fdopen(ends[0], "rb"));
  SpawnSetup setup;
  setup.Redirect(pdfDescriptor, STDIN_FILENO);
  setup.Redirect(ends[1], STDOUT_FILENO);
  setup.Redirect(fileno(m_messages.get()), STDERR_FILENO);
  // No smoothing: a printer has no grey dots, and a smoothed edge would be dithered.
  const std::string resolution = std::to_string(dpi);
  const char* arguments[] = {"pdftoppm",  "-r", resolution.c_str(), "-cropbox", "-aa", "no",
                             "-aaVector", "no", "/dev/stdin",       nullptr};
  const int error = posix_spawnp(&m_process, arguments[0], &setup.actions, &setup.attributes,
                                 const_cast<char**>(arguments), environ);
  close(ends[1]);
  if (error == 0) return;
  m_process = -1;
  throw HostError(
      kExitInput,
      m_source + ": is a PDF file, and the program pdftoppm that reads it " +
          (error == ENOENT ? "is not there: install poppler-utils"
                           : "cannot be started: " + std::string(std::strerror(error))));
}

PdfPages::~PdfPages() {
  if (m_process < 0) return;
  kill(m_process, SIGKILL);
  while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// The process has closed its output: it is about to end.
void PdfPages::CheckEnd() {
  int status = 0;
  pid_t ended;
  while ((ended = waitpid(m_process, &status, 0)) < 0 && errno == EINTR) {
  }
  m_process = -1;
  if (ended > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  std::string said = FirstLine(m_messages.get());
  if (WIFSIGNALED(status)) said = "ended by signal " + std::to_string(WTERMSIG(status));
  for (const PdfRemedy& remedy : kPdfRemedies) {
    if (said.find(remedy.said) == said.npos) continue;
    throw HostError(kExitInput, m_source + ": pdftoppm cannot read this PDF file (" + said +
                                    "): " + remedy.remedy);
  }
}

bool PdfPages::Next(PageImage& page) {
  if (m_process < 0) return false;
  try {
    if (ReadPnm(m_pages.get(), m_source, page)) {
      page.roundedUp = true;
      return true;
    }
  } catch (const HostError&) {
    if (std::feof(m_pages.get())) CheckEnd();  // its reason is the better one
    throw;
  }
  CheckEnd();
  return false;
}
