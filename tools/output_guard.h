// Keeps an output from overwriting a file by mistake.
#pragma once

#include <string>
#include <vector>

// A file of the command line, and what names it: "-o", "--settings", "FILE".
struct NamedFile {
  std::string option;
  std::string path;  // "-" is standard input or output
};

// What a command writes, and how a file of that kind begins.
struct OutputKind {
  const char* what;  // as "job"
  std::size_t offset;
  const char* bytes;  // from the offset on
};
inline constexpr OutputKind kJobOutput = {"job", 0, ";Created: "};
inline constexpr OutputKind kRecordOutput = {"settings record", 4, "1XLV"};  // its signature
inline constexpr OutputKind kPictureOutput = {"PNG picture", 0, "\x89PNG"};

class OutputGuard {
 public:
  // inputs: what the command reads. force: files of another kind may be overwritten, inputs not.
  OutputGuard(std::vector<NamedFile> inputs, bool force)
      : m_taken(std::move(inputs)), m_force(force) {}

  // Call before anything is opened for writing. Throws CommandError (usage) if the output is one of
  // the inputs or an earlier output, under whatever path or link, or a regular file that is neither
  // empty nor of this kind. An empty path, of an option that was not given, is ignored.
  void Add(const NamedFile& output, const OutputKind& kind);

 private:
  std::vector<NamedFile> m_taken;
  bool m_force;
};
