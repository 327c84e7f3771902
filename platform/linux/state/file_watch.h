// A state file that is read at first use and again after it has changed.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "platform/extensions.h"

// Reads a whole regular file. Returns false and sets errno if it cannot be opened or read.
bool ReadWholeFile(const std::string& path, std::string& content);

// Writes one line to the event log about a state file that is not used.
void ReportUnusableFile(const std::string& path, const std::string& why);

// The parsed content of a file in the state folder. Thread-safe. Get throws std::bad_alloc and
// nothing else.
template <typename Content>
class WatchedFile {
 public:
  // parse turns the file's text into content; it throws std::exception for a malformed text.
  // missing is the content without a file and of a malformed one.
  using Parse = std::function<Content(const std::string& text)>;
  WatchedFile(std::string name, Content missing, Parse parse)
      : m_name(std::move(name)),
        m_missing(std::make_shared<const Content>(std::move(missing))),
        m_parse(std::move(parse)) {}

  std::shared_ptr<const Content> Get() {
    const std::string path = PlatformStatePath(m_name);
    const std::lock_guard locked(m_mutex);
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
      const bool missing = errno == ENOENT || errno == ENOTDIR;
      return Without(path, missing ? "" : std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) return Without(path, "it is no regular file");
    if (path == m_path && SameFile(status)) return m_content;
    std::string text;
    if (!ReadWholeFile(path, text)) {
      if (errno == ENOMEM) throw std::bad_alloc();  // not the file's fault
      return Without(path, std::strerror(errno));
    }
    m_content = Parsed(path, text);
    m_path = path;
    m_status = status;
    return m_content;
  }

  // What is wrong with the file, "PATH: why"; empty if it is used or missing. Throws like Get.
  std::string Complaint() {
    Get();
    const std::lock_guard locked(m_mutex);
    return m_complaint;
  }

 private:
  bool SameFile(const struct stat& status) const {
    return status.st_ino == m_status.st_ino && status.st_size == m_status.st_size &&
           status.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
           status.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
  }
  // The content without a readable file; why is empty if there is no file at all. A file is
  // reported once and tried again at the next call.
  std::shared_ptr<const Content> Without(const std::string& path, const std::string& why) {
    m_path.clear();
    const std::string complaint = why.empty() ? "" : path + ": " + why;
    if (!why.empty() && complaint != m_complaint) ReportUnusableFile(path, why);
    m_complaint = complaint;
    m_content = m_missing;
    return m_missing;
  }
  std::shared_ptr<const Content> Parsed(const std::string& path, const std::string& text) {
    try {
      auto content = std::make_shared<const Content>(m_parse(text));
      m_complaint.clear();
      return content;
    } catch (const std::bad_alloc&) {
      throw;  // not the file's fault: it is read again at the next call
    } catch (const std::exception& error) {
      m_complaint = path + ": " + error.what();
      ReportUnusableFile(path, error.what());
      return m_missing;
    }
  }

  const std::string m_name;
  const std::shared_ptr<const Content> m_missing;
  const Parse m_parse;
  std::mutex m_mutex;
  std::string m_path;
  struct stat m_status = {};
  std::string m_complaint;  // about the file as of the last call
  std::shared_ptr<const Content> m_content;
};
