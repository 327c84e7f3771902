// A state file that is read when it is first asked for and again when it has changed.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "platform/system_file.h"

// The whole content of a regular file; false, errno set, when it cannot be opened or read.
bool ReadWholeFile(const std::string& path, std::string& content);

// One line in the event log about a state file that cannot be used.
void ReportUnusableFile(const std::string& path, const std::string& why);

// Keeps what Parse made of the file of that name in the home folder. Thread-safe. Get throws
// std::bad_alloc and nothing else.
template <typename Content>
class WatchedFile {
 public:
  // parse gives the content for a file's path and text; missing stands for no file and for a
  // malformed one, which parse reports by throwing std::exception.
  using Parse = std::function<Content(const std::string& text)>;
  WatchedFile(std::string name, Content missing, Parse parse)
      : m_name(std::move(name)),
        m_missing(std::make_shared<const Content>(std::move(missing))),
        m_parse(std::move(parse)) {}

  std::shared_ptr<const Content> Get() {
    const std::string path = PlatformHomeFolder() + "/" + m_name;
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
      if (errno == ENOMEM) throw std::bad_alloc();  // no fault of the file's either
      return Without(path, std::strerror(errno));
    }
    m_content = Parsed(path, text);
    m_path = path;
    m_status = status;
    return m_content;
  }

  // What is wrong with the file, "PATH: why"; empty when it is used or there is none. Throws as
  // Get.
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
  // The content when there is no file that can be read; why is empty when there is none at all. A
  // file is complained about once, and looked at again at the next call.
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
      throw;  // no fault of the file's: it is read again at the next call
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
  std::string m_complaint;  // about the file as the last call found it
  std::shared_ptr<const Content> m_content;
};
