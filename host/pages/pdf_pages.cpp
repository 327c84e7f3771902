// PDF files, drawn by the program pdftoppm (poppler-utils) and read from its output page by page: a
// file of any length needs the memory of one page.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/file.h"
#include "host/error.h"
#include "host/pages/page_formats.h"
#include "host/pages/pnm_pages.h"

extern char** environ;

namespace {

constexpr int kPipeBytes = 1 << 20;  // fewer context switches
// By itself the program writes 4 KiB at a time and wakes this process each time.
constexpr const char* kWriteBytes = "-o256K";
constexpr int kCommandNotFound = 127;  // exit code of stdbuf

[[noreturn]] void FailErrno(const std::string& what) {
  throw HostError(kExitInput, what + ": " + std::strerror(errno));
}

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

class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    // The helper must end when nobody reads its pages any more, whatever signals this process
    // ignores or blocks.
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
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

FilePtr MakeTemporaryFile() {
  FilePtr file(std::tmpfile());
  if (file == nullptr) FailErrno("A temporary file cannot be made");
  return file;
}

FilePtr CopyToTemporaryFile(PageInput& input) {
  FilePtr copy = MakeTemporaryFile();
  std::vector<char> buffer(1 << 16);
  bool written = true;
  while (const std::size_t size = written ? input.Read(buffer.data(), buffer.size()) : 0) {
    written = std::fwrite(buffer.data(), 1, size, copy.get()) == size;
  }
  if (!written || std::fflush(copy.get()) != 0) {
    FailErrno(input.Name() + ": cannot be copied to a temporary file");
  }
  return copy;
}

std::string FirstLine(std::FILE* file) {
  char line[512] = {};
  std::rewind(file);
  if (std::fgets(line, sizeof line, file) == nullptr) return {};
  line[std::strcspn(line, "\r\n")] = '\0';
  return line;
}

bool IsRegularFile(std::FILE* file) {
  struct stat status = {};
  return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

class PdfPages final : public PageSource {
 public:
  // The program reads a PDF file more than once, so what comes through a pipe is copied first.
  PdfPages(PageInput input, int dpi)
      : m_name(input.Name()),
        m_copy(IsRegularFile(input.File()) ? nullptr : CopyToTemporaryFile(input)),
        m_messages(MakeTemporaryFile()) {
    Start(fileno(m_copy != nullptr ? m_copy.get() : input.File()), dpi);
  }
  // Ends the process if pages are left.
  ~PdfPages() override {
    if (m_process < 0) return;
    kill(m_process, SIGKILL);
    AwaitEnd();
  }

  bool Next(PageImage& page) override {
    if (m_process < 0) return false;
    try {
      if (ReadPnm(*m_pages, page)) {
        page.roundedUp = true;
        return true;
      }
    } catch (const HostError&) {
      if (m_pages->EndSeen()) CheckEnd();  // the program's own reason is the better one
      throw;
    }
    CheckEnd();
    return false;
  }

 private:
  void Start(int pdfDescriptor, int dpi);
  [[noreturn]] void FailStart(int error) const;
  int AwaitEnd();
  void CheckEnd();

  const std::string m_name;
  const FilePtr m_copy;
  const FilePtr m_messages;  // of the program
  std::optional<PageInput> m_pages;
  pid_t m_process = -1;
};

void PdfPages::Start(int pdfDescriptor, int dpi) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) FailErrno("A pipe cannot be made");
  fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);  // may fail; a smaller pipe is only slower
  m_pages.emplace(FilePtr(fdopen(ends[0], "rb")), m_name);
  SpawnSetup setup;
  setup.Redirect(pdfDescriptor, STDIN_FILENO);
  setup.Redirect(ends[1], STDOUT_FILENO);
  setup.Redirect(fileno(m_messages.get()), STDERR_FILENO);
  // No smoothing: a printer has no grey dots, and a smoothed edge would be dithered.
  const std::string resolution = std::to_string(dpi);
  const char* arguments[] = {"stdbuf",           kWriteBytes, "pdftoppm",   "-r",
                             resolution.c_str(), "-cropbox",  "-aa",        "no",
                             "-aaVector",        "no",        "/dev/stdin", nullptr};
  const auto spawn = [&](const char** command) {
    return posix_spawnp(&m_process, command[0], &setup.actions, &setup.attributes,
                        const_cast<char**>(command), environ);
  };
  int error = spawn(arguments);
  if (error == ENOENT) error = spawn(arguments + 2);  // works without stdbuf, too
  close(ends[1]);
  if (error == 0) return;
  m_process = -1;
  FailStart(error);
}

void PdfPages::FailStart(int error) const {
  const std::string fact = m_name + ": is a PDF file, and the program pdftoppm that reads it ";
  if (error == ENOENT) {
    throw HostError(kExitInput, fact + "is not installed", "install poppler-utils");
  }
  throw HostError(kExitInput, fact + "cannot be started: " + std::strerror(error));
}

// Returns the status as waitpid stores it, 0 if somebody else has collected it.
int PdfPages::AwaitEnd() {
  int status = 0;
  while (waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
  }
  m_process = -1;
  return status;
}

// Called when the program has closed its output and is about to end.
void PdfPages::CheckEnd() {
  const int status = AwaitEnd();
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  if (WIFEXITED(status) && WEXITSTATUS(status) == kCommandNotFound) FailStart(ENOENT);
  std::string message = FirstLine(m_messages.get());
  if (WIFSIGNALED(status)) message = "ended by signal " + std::to_string(WTERMSIG(status));
  for (const Diagnosis& diagnosis : kDiagnoses) {
    if (message.find(diagnosis.message) == message.npos) continue;
    throw HostError(
        kExitInput,
        m_name + ": pdftoppm cannot read this PDF file (" + message + "), it " + diagnosis.fact,
        diagnosis.remedy);
  }
}

}  // namespace

std::unique_ptr<PageSource> OpenPdf(PageInput input, int dpi) {
  return std::make_unique<PdfPages>(std::move(input), dpi);
}
