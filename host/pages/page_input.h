// The file or stream that pages are read from. It may be a pipe, so nothing is read twice.
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
  // Takes ownership of the stream. name: for messages.
  PageInput(FilePtr file, std::string name);
  PageInput(PageInput&&) = default;

  // Opens a file; "-" is standard input, which stays open afterwards. Throws HostError (input) that
  // names the file and the reason.
  static PageInput Open(const std::string& path);

  const std::string& Name() const { return m_name; }

  // The next size bytes, or fewer at the end, without consuming them. Valid until the next call.
  std::string_view Peek(std::size_t size);

  // The next byte, or EOF.
  int Get() {
    if (m_peekedAt < m_peeked.size()) return static_cast<unsigned char>(m_peeked[m_peekedAt++]);
    const int byte = getc_unlocked(m_file.get());
    if (byte == EOF) CheckRead();
    return byte;
  }

  // Reads size bytes, or fewer at the end. Returns how many.
  std::size_t Read(void* bytes, std::size_t size);

  // All remaining bytes. Throws HostError (input) if there are more than most.
  std::string ReadAll(std::size_t most = SIZE_MAX);

  // Whether a read has reached the end. Never waits.
  bool EndSeen() const { return std::feof(m_file.get()) != 0; }

  // The stream itself, for programs that read a file by its descriptor. Remains owned by this
  // object.
  std::FILE* File() const { return m_file.get(); }

 private:
  void CheckRead() const;

  std::unique_ptr<char[]> m_buffer;  // of m_file, so declared before it: the file is closed first
  FilePtr m_file;
  std::string m_name;
  std::string m_peeked;
  std::size_t m_peekedAt = 0;
};
