#include "platform/linux/state/system_toml.h"

#include <atomic>

#include "platform/extensions.h"
#include "platform/linux/state/file_watch.h"

namespace {

SystemTomlFile Parse(const std::string& text) {
  static std::atomic<unsigned> revisions{0};
  try {
    return {toml::parse(text), ++revisions};
  } catch (const toml::parse_error& error) {
    throw std::runtime_error("line " + std::to_string(error.source().begin.line) + ": " +
                             std::string(error.description()));
  }
}

WatchedFile<SystemTomlFile>& File() {
  static WatchedFile<SystemTomlFile> file("system.toml", {}, Parse);
  return file;
}

}  // namespace

std::shared_ptr<const SystemTomlFile> SystemToml() { return File().Get(); }

std::string SystemTomlComplaint() { return File().Complaint(); }

std::string ReportSystemToml(const std::string& why) {
  const std::string path = PlatformStatePath("system.toml");
  ReportUnusableFile(path, why);
  return path + ": " + why;
}

void FailAt(const toml::node& node, const std::string& what) {
  throw std::runtime_error("line " + std::to_string(node.source().begin.line) + ": " + what);
}

std::optional<std::int64_t> ReadNumber(const toml::table& table, const char* key,
                                       std::int64_t least, std::int64_t most,
                                       const std::string& mustBe) {
  const toml::node* node = table.get(key);
  if (node == nullptr) return std::nullopt;
  const auto value = node->value_exact<std::int64_t>();
  if (!value || *value < least || *value > most) FailAt(*node, std::string(key) + " " + mustBe);
  return value;
}
