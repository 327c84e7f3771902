// Runs a program that reads a page format: its standard input is the file, and a pipe takes what it
// writes.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "common/file.h"
#include "host/pages/page_input.h"

// Makes an empty file that has no name and disappears when it is closed. Throws HostError (input).
FilePtr MakeTemporaryFile();

// The input as a regular file that can be read from its start, more than once: its own file, or a
// copy of what comes through a pipe. The constructor throws HostError (input).
class RereadableFile {
 public:
  explicit RereadableFile(PageInput input);
  explicit RereadableFile(FilePtr file) : m_copy(std::move(file)) {}
  // The file's descriptor, moved to its start. Remains owned by this object.
  int Descriptor() const;

 private:
  std::optional<PageInput> m_input;
  FilePtr m_copy;
};

struct HelperTask {
  std::string document;                // the name of what it reads, for messages
  const char* kind;                    // of document: "a PDF file"
  const char* package;                 // that provides the program
  std::vector<std::string> arguments;  // first the program, which is looked up in PATH
};

class HelperProgram {
 public:
  // Starts the program. input: the descriptor of its standard input, not taken over. Throws
  // HostError (input) that names the package if the program is not installed.
  HelperProgram(HelperTask task, int input);
  // Kills the process if it is still running.
  ~HelperProgram();
  HelperProgram(const HelperProgram&) = delete;
  HelperProgram& operator=(const HelperProgram&) = delete;

  // What the program writes.
  PageInput& Output() { return *m_output; }

  // Waits for the process to end; call it once, after reading all output. Returns nullopt if the
  // program succeeded, otherwise the first line of its messages or the signal that ended it. Throws
  // as the constructor does.
  std::optional<std::string> AwaitFault();

 private:
  [[noreturn]] void FailStart(int error) const;
  int AwaitEnd();

  const HelperTask m_task;
  const FilePtr m_messages;
  std::optional<PageInput> m_output;
  pid_t m_process = -1;
};
