// A program that reads a page format for us: it gets the file as its standard input and writes what
// it makes of it into a pipe.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "common/file.h"
#include "host/pages/page_input.h"

// Makes an empty file without a name. Throws HostError (input).
FilePtr MakeTemporaryFile();

// What is left of the input as a regular file that can be read from its start and more than once:
// the input's own, or a copy of what comes through a pipe. Throws HostError (input).
class RereadableFile {
 public:
  explicit RereadableFile(PageInput input);
  explicit RereadableFile(FilePtr file) : m_copy(std::move(file)) {}
  int Descriptor() const;  // at the file's start

 private:
  std::optional<PageInput> m_input;
  FilePtr m_copy;
};

struct HelperTask {
  std::string document;                // name of what it reads, for messages
  const char* kind;                    // of the document: "a PDF file"
  const char* package;                 // that has the program
  std::vector<std::string> arguments;  // the program first, which is looked up in PATH
};

class HelperProgram {
 public:
  // Starts it; input is a descriptor. Throws HostError (input) that names the package if the
  // program is not installed.
  HelperProgram(HelperTask task, int input);
  // Ends the process if it has not ended.
  ~HelperProgram();
  HelperProgram(const HelperProgram&) = delete;
  HelperProgram& operator=(const HelperProgram&) = delete;

  // What it writes.
  PageInput& Output() { return *m_output; }

  // Waits for the process, which has closed its output and is about to end. nullopt if it has done
  // its work, otherwise the first line of its messages or the signal that ended it. Throws as
  // the constructor does. Once only.
  std::optional<std::string> AwaitFault();

 private:
  [[noreturn]] void FailStart(int error) const;
  int AwaitEnd();

  const HelperTask m_task;
  const FilePtr m_messages;
  std::optional<PageInput> m_output;
  pid_t m_process = -1;
};
