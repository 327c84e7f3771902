// The parts of system.toml. Each part of the platform reads its own entries of the file and has its
// own defaults: an entry that is malformed spoils only the part that reads it.
#pragma once

#include <toml++/toml.h>

#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

struct SystemTomlFile {
  toml::table table;
  unsigned revision = 0;  // of every text that was read another; 0: nothing was read
};

// The file as it stands now; empty if it is missing or no TOML. Throws std::bad_alloc.
std::shared_ptr<const SystemTomlFile> SystemToml();

// What is wrong with the file as TOML, "PATH: line 2: why"; empty if nothing is.
std::string SystemTomlComplaint();

// Writes one line to the event log about a part of the file; returns it as a complaint.
std::string ReportSystemToml(const std::string& why);

// Throws std::runtime_error "line N: what".
[[noreturn]] void FailAt(const toml::node& node, const std::string& what);

// The number of that key; nullopt without it. Throws as FailAt, with the text mustBe, if it is no
// whole number from least to most.
std::optional<std::int64_t> ReadNumber(const toml::table& table, const char* key,
                                       std::int64_t least, std::int64_t most,
                                       const std::string& mustBe);

// What one part of the platform reads from the file. Thread-safe. Throws std::bad_alloc and nothing
// else.
template <typename Content>
class SystemPart {
 public:
  // parse throws as FailAt for a malformed entry; the content is then the default.
  using Parse = Content (*)(const toml::table& file);
  SystemPart(Content defaults, Parse parse)
      : m_defaults(std::make_shared<const Content>(std::move(defaults))), m_parse(parse) {}

  std::shared_ptr<const Content> Get() {
    const std::shared_ptr<const SystemTomlFile> file = SystemToml();
    const std::lock_guard locked(m_mutex);
    if (file->revision == m_revision) return m_content;
    try {
      m_content = std::make_shared<const Content>(m_parse(file->table));
      m_complaint.clear();
    } catch (const std::runtime_error& error) {
      m_content = m_defaults;
      m_complaint = ReportSystemToml(error.what());
    }
    m_revision = file->revision;
    return m_content;
  }

  // What is wrong with this part, "PATH: line 2: why"; empty if nothing is.
  std::string Complaint() {
    Get();
    const std::lock_guard locked(m_mutex);
    return m_complaint;
  }

 private:
  const std::shared_ptr<const Content> m_defaults;
  const Parse m_parse;
  std::mutex m_mutex;
  std::optional<unsigned> m_revision;  // of the file that the content is from
  std::shared_ptr<const Content> m_content;
  std::string m_complaint;
};
