#include "host/pages/page_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/error.h"

namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 18;

}  // namespace

// The C library ignores the size unless it is given a buffer.
PageInput::PageInput(FilePtr file, std::string name)
    : m_buffer(std::make_unique_for_overwrite<char[]>(kBufferBytes)),
      m_file(std::move(file)),
      m_name(std::move(name)) {
  std::setvbuf(m_file.get(), m_buffer.get(), _IOFBF, kBufferBytes);
}

PageInput PageInput::Open(const std::string& path) {
  const bool isStandardInput = path == "-";
  const std::string name = isStandardInput ? "standard input" : path;
  std::error_code error;
  if (!isStandardInput && std::filesystem::is_directory(path, error)) {
    throw HostError(kExitInput, name + ": is a folder", "name its files, as " + path + "/*.png");
  }
  FilePtr file(isStandardInput ? fdopen(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0), "rb")
                               : std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) {
    throw HostError(kExitInput, name + ": cannot be opened: " + std::strerror(errno));
  }
  return {std::move(file), name};
}

void PageInput::CheckRead() const {
  if (!std::ferror(m_file.get())) return;
  throw HostError(kExitInput, m_name + ": cannot be read: " + std::strerror(errno));
}

std::string_view PageInput::Peek(std::size_t size) {
  m_peeked.erase(0, m_peekedAt);
  m_peekedAt = 0;
  const std::size_t known = m_peeked.size();
  if (known < size) {
    m_peeked.resize(size);
    m_peeked.resize(known + std::fread(m_peeked.data() + known, 1, size - known, m_file.get()));
    CheckRead();
  }
  return std::string_view(m_peeked).substr(0, size);
}

std::size_t PageInput::Read(void* bytes, std::size_t size) {
  const std::size_t peeked = std::min(size, m_peeked.size() - m_peekedAt);
  std::memcpy(bytes, m_peeked.data() + m_peekedAt, peeked);
  m_peekedAt += peeked;
  if (peeked == size) return size;
  const std::size_t read =
      fread_unlocked(static_cast<char*>(bytes) + peeked, 1, size - peeked, m_file.get());
  if (peeked + read < size) CheckRead();
  return peeked + read;
}

std::string PageInput::ReadAll(std::size_t most) {
  std::string content;
  char buffer[1 << 14];
  while (const std::size_t size = Read(buffer, sizeof buffer)) {
    content.append(buffer, size);
    if (content.size() > most) {
      throw HostError(kExitInput, m_name + ": has more than " + std::to_string(most) + " bytes",
                      "export it smaller");
    }
  }
  return content;
}
