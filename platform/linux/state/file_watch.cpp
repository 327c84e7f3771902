#include "platform/linux/state/file_watch.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/extensions.h"
#include "platform/linux/text/unicode.h"

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& content) {
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) return false;
  content.clear();
  char buffer[4096];
  while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, file.get())) {
    content.append(buffer, size);
  }
  return std::ferror(file.get()) == 0;
}

void ReportUnusableFile(const std::string& path, const std::string& why) {
  const std::u16string text = Utf16FromUtf8("The file " + path + " is ignored: " + why);
  // The log may not be open yet.
  PlatformOpenEventLog();
  PlatformWriteEvent(EventLevel::Error, text.c_str(), WTEXT("Platform"));
  PlatformCloseEventLog();
}

std::string PlatformHomeFolder() {
  if (const char* home = std::getenv("VLX_HOME"); home != nullptr && *home != '\0') return home;
  if (const char* base = std::getenv("XDG_CONFIG_HOME"); base != nullptr && *base != '\0') {
    return std::string(base) + "/vlx";
  }
  const char* user = std::getenv("HOME");
  return std::string(user == nullptr ? "" : user) + "/.config/vlx";
}

std::string PlatformStatePath(const std::string& name) {
  const std::string own = PlatformHomeFolder() + "/" + name, machine = "/etc/vlx/" + name;
  const char* home = std::getenv("VLX_HOME");
  const bool ownOnly = (home != nullptr && *home != '\0') || access(own.c_str(), F_OK) == 0;
  return ownOnly || access(machine.c_str(), F_OK) != 0 ? own : machine;
}
