// The file or stream that pages are read from. It may be a pipe: nothing is read twice.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "common/file.h"

// Not thread-safe. Every read throws HostError (input) that names the input if the system reports
// an error.
class PageInput {
 public:
  // Takes the stream over. name: for messages.
  PageInput(FilePtr file, std::string name);
  PageInput(PageInput&&) = default;

  // Opens a file; "-" is standard input, which stays open afterwards. Throws HostError (input) that
  // names the file and the reason.
  static PageInput Open(const std::string& path);

  const std::string& Name() const { return m_name; }

  // The next bytes, up to size of them, without consuming them; fewer only at the end.
  std::string_view Peek(std::size_t size);

  // The next byte, or EOF.
  int Get() {
    if (m_peekedAt < m_peeked.size()) return static_cast<unsigned char>(m_peeked[m_peekedAt++]);
    const int byte = getc_unlocked(m_file.get());
    if (byte == EOF) CheckRead();
    return byte;
  }

  // Reads size bytes and returns how many there were; fewer only at the end.
  std::size_t Read(void* bytes, std::size_t size);

  // All bytes that are left. Throws HostError (input) if they are more than most.
  std::string ReadAll(std::size_t most = SIZE_MAX);

  // Whether a read has met the end. Never waits.
  bool EndSeen() const { return std::feof(m_file.get()) != 0; }

  // The stream itself, for programs that read a file by its descriptor.
  std::FILE* File() const { return m_file.get(); }

 private:
  void CheckRead() const;

  std::unique_ptr<char[]> m_buffer;  // of the file, which is closed first
  FilePtr m_file;
  std::string m_name;
  std::string m_peeked;
  std::size_t m_peekedAt = 0;
};
