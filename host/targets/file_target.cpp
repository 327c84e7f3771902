#include "host/targets/file_target.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "common/file.h"
#include "common/write_error.h"

namespace {

class FileTarget final : public JobTarget {
 public:
  FileTarget(const std::string& path, TemporaryFiles* temporaries)
      : m_path(LinkedFile(path)), m_temporaries(temporaries), m_file(OpenTemporary()) {
    if (m_temporaries != nullptr) m_temporaries->Made(m_temporary);
  }
  ~FileTarget() override {
    if (m_file == nullptr) return;
    m_file.reset();
    std::remove(m_temporary.c_str());
    ReportGone();
  }
  void Write(std::string_view bytes) override {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size())
      FailToWrite(m_path, errno);
  }
  void Finish() override {
    if (std::fflush(m_file.get()) != 0 || fsync(fileno(m_file.get())) != 0)
      FailToWrite(m_path, errno);
    if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0) FailToWrite(m_path, errno);
    m_file.reset();
    ReportGone();
  }

 private:
  // The file that the path points to if it is a link, even if that does not exist yet; otherwise
  // the path.
  static std::string LinkedFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    if (!error) return file.string();
    const std::filesystem::path pointsTo = std::filesystem::read_symlink(path, error);
    return error ? path.string() : (path.parent_path() / pointsTo).string();
  }

  // The name may be taken: in a container every run may have the same process id, so a killed run
  // may have left a file, and a server has several targets.
  FilePtr OpenTemporary() {
    const std::string own = m_path + "." + std::to_string(getpid());
    m_temporary = own + ".part";
    for (int i = 2;; ++i) {
      FilePtr file(std::fopen(m_temporary.c_str(), "wbxe"));
      if (file != nullptr) return file;
      if (errno != EEXIST) FailToWrite(m_path, errno);
      m_temporary = own + "-" + std::to_string(i) + ".part";
    }
  }

  void ReportGone() {
    if (m_temporaries != nullptr) m_temporaries->Gone(m_temporary);
  }

  const std::string m_path;
  TemporaryFiles* const m_temporaries;
  std::string m_temporary;
  FilePtr m_file;
};

// Standard output, a device or a named pipe, none of which may be replaced by a file.
class StreamTarget final : public JobTarget {
 public:
  StreamTarget(const std::string& name, std::FILE* file) : m_name(name), m_file(file) {
    if (m_file == nullptr) FailToWrite(m_name, errno);
  }
  void Write(std::string_view bytes) override {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size())
      FailToWrite(m_name, errno);
  }
  void Finish() override {
    if (std::fflush(m_file.get()) != 0) FailToWrite(m_name, errno);
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdout) std::fclose(file);
    }
  };
  const std::string m_name;
  std::unique_ptr<std::FILE, Closer> m_file;
};

}  // namespace

std::unique_ptr<JobTarget> OpenFileTarget(const std::string& path, TemporaryFiles* temporaries) {
  if (path == "-") return std::make_unique<StreamTarget>("standard output", stdout);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return std::make_unique<StreamTarget>(path, std::fopen(path.c_str(), "wbe"));
  }
  return std::make_unique<FileTarget>(path, temporaries);
}
