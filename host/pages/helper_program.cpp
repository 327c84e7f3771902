#include "host/pages/helper_program.h"

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

constexpr int kPipeBytes = 1 << 20;  // saves context switches
// By default the programs write 4 KiB at a time and wake this process each time.
constexpr const char* kWriteBytes = "-o256K";
constexpr int kCommandNotFound = 127;  // exit code of stdbuf for a missing program

[[noreturn]] void FailErrno(const std::string& what) {
  throw HostError(kExitInput, what + ": " + std::strerror(errno));
}

class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    // The helper must end when nobody reads its pages any more, even if this process ignores or
    // blocks SIGPIPE.
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

}  // namespace

FilePtr MakeTemporaryFile() {
  FilePtr file(std::tmpfile());
  if (file == nullptr) FailErrno("A temporary file cannot be made");
  return file;
}

RereadableFile::RereadableFile(PageInput input) {
  struct stat status = {};
  if (fstat(fileno(input.File()), &status) != 0 || !S_ISREG(status.st_mode)) {
    m_copy = CopyToTemporaryFile(input);
  } else {
    m_input.emplace(std::move(input));
  }
}

int RereadableFile::Descriptor() const {
  const int descriptor = fileno(m_copy != nullptr ? m_copy.get() : m_input->File());
  lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

HelperProgram::HelperProgram(HelperTask task, int input)
    : m_task(std::move(task)), m_messages(MakeTemporaryFile()) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) FailErrno("A pipe cannot be made");
  fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);  // may fail; a smaller pipe is only slower
  m_output.emplace(FilePtr(fdopen(ends[0], "rb")), m_task.document);
  SpawnSetup setup;
  setup.Redirect(input, STDIN_FILENO);
  setup.Redirect(ends[1], STDOUT_FILENO);
  setup.Redirect(fileno(m_messages.get()), STDERR_FILENO);
  std::vector<const char*> arguments = {"stdbuf", kWriteBytes};
  for (const std::string& argument : m_task.arguments) arguments.push_back(argument.c_str());
  arguments.push_back(nullptr);
  const auto spawn = [&](const char** command) {
    return posix_spawnp(&m_process, command[0], &setup.actions, &setup.attributes,
                        const_cast<char**>(command), environ);
  };
  int error = spawn(arguments.data());
  if (error == ENOENT) error = spawn(arguments.data() + 2);  // without stdbuf
  close(ends[1]);
  if (error == 0) return;
  m_process = -1;
  FailStart(error);
}

void HelperProgram::FailStart(int error) const {
  const std::string fact = m_task.document + ": is " + m_task.kind + ", and the program " +
                           m_task.arguments[0] + " that reads it ";
  if (error == ENOENT) {
    throw HostError(kExitInput, fact + "is not installed",
                    std::string("install ") + m_task.package);
  }
  throw HostError(kExitInput, fact + "cannot be started: " + std::strerror(error));
}

HelperProgram::~HelperProgram() {
  if (m_process < 0) return;
  kill(m_process, SIGKILL);
  AwaitEnd();
}

// Returns the status as waitpid stores it; 0 if somebody else has collected it.
int HelperProgram::AwaitEnd() {
  int status = 0;
  while (waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
  }
  m_process = -1;
  return status;
}

std::optional<std::string> HelperProgram::AwaitFault() {
  const int status = AwaitEnd();
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::nullopt;
  if (WIFEXITED(status) && WEXITSTATUS(status) == kCommandNotFound) FailStart(ENOENT);
  if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
  return FirstLine(m_messages.get());
}
