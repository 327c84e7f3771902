#include "platform/linux/state/system_state.h"

#include <toml++/toml.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "platform/event_log.h"
#include "platform/linux/state/file_watch.h"
#include "platform/linux/text/code_page.h"
#include "platform/linux/text/unicode.h"

namespace {

const SystemContent& WithoutFile() {
  static const SystemContent content{
      1252, {{u"Label Printer", u"VLX Label", std::nullopt}}, Gdiplus::Link::Network, 0};
  return content;
}

[[noreturn]] void Fail(const std::string& what, const toml::node& node) {
  throw std::runtime_error("line " + std::to_string(node.source().begin.line) + ": " + what);
}

std::u16string ReadText(const toml::table& table, const char* key,
                        const std::u16string& otherwise) {
  const toml::node* node = table.get(key);
  if (node == nullptr) return otherwise;
  const auto text = node->value<std::string>();
  if (!text || text->empty()) Fail(std::string(key) + " must be a text that is not empty", *node);
  return Utf16FromUtf8(*text);
}

DWORD ReadMicrometres(const toml::table& table, const char* key) {
  const toml::node* node = table.get(key);
  if (node == nullptr) Fail(std::string("[printer.label] has no ") + key, table);
  const auto value = node->value_exact<std::int64_t>();
  if (!value || *value < 0 || *value > 0xFFFFFFFF) {
    Fail(std::string(key) + " must be whole micrometres from 0 to 4294967295", *node);
  }
  return static_cast<DWORD>(*value);
}

PlatformPrinter ReadPrinter(const toml::table& table) {
  if (!table.contains("name")) Fail("a [[printer]] has no name", table);
  PlatformPrinter printer{ReadText(table, "name", {}), ReadText(table, "driver", u"VLX Label"), {}};
  const toml::node* label = table.get("label");
  if (label == nullptr) return printer;
  if (!label->is_table()) Fail("label must be a table", *label);
  const toml::table& bounds = *label->as_table();
  printer.label = PlatformLabelBounds{
      ReadMicrometres(bounds, "min_width_um"), ReadMicrometres(bounds, "max_width_um"),
      ReadMicrometres(bounds, "min_length_um"), ReadMicrometres(bounds, "max_length_um")};
  return printer;
}

Gdiplus::Link ReadLink(const toml::node& node) {
  using Gdiplus::Link;
  constexpr std::pair<const char*, Link> kNames[] = {
      {"network", Link::Network}, {"usb", Link::Usb},         {"wifi", Link::Usb},
      {"serial", Link::Serial},   {"default", Link::Network}, {"fast", Link::Network},
      {"small", Link::Serial}};  // the last three are names of older versions
  const auto text = node.value<std::string>();
  for (const auto& [name, link] : kNames) {
    if (text == name) return link;
  }
  Fail("png must be \"network\", \"usb\", \"wifi\" or \"serial\"", node);
}

toml::table ParseToml(const std::string& text) {
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& error) {
    throw std::runtime_error("line " + std::to_string(error.source().begin.line) + ": " +
                             std::string(error.description()));
  }
}

SystemContent Parse(const std::string& text) {
  const toml::table root = ParseToml(text);
  SystemContent content = WithoutFile();
  if (const toml::node* node = root.get("ansi_code_page")) {
    const auto value = node->value_exact<std::int64_t>();
    if (!value || *value < 0 || *value > 65535 || !CodePageExists(static_cast<UINT>(*value))) {
      Fail("ansi_code_page is no known code page", *node);
    }
    content.ansiCodePage = static_cast<UINT>(*value);
  }
  if (const toml::node* node = root.get("dot_gain")) {
    const auto value = node->value_exact<std::int64_t>();
    if (!value || *value < 0 || *value > 25)
      Fail("dot_gain must be a percentage from 0 to 25", *node);
    content.dotGainPercent = static_cast<INT>(*value);
  }
  if (const toml::node* node = root.get("png")) content.link = ReadLink(*node);
  if (const toml::node* node = root.get("printer")) {
    if (!node->is_array_of_tables()) Fail("printers are written as [[printer]]", *node);
    content.printers.clear();
    for (const toml::node& printer : *node->as_array()) {
      content.printers.push_back(ReadPrinter(*printer.as_table()));
    }
  }
  return content;
}

WatchedFile<SystemContent>& SystemFile() {
  static WatchedFile<SystemContent> file("system.toml", WithoutFile(), Parse);
  return file;
}

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
  // The log may be opened by nobody yet; the line is worth a short opening.
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

INT PlatformDotGainPercent() { return SystemState()->dotGainPercent; }

std::string PlatformSystemFileComplaint() { return SystemFile().Complaint(); }

std::shared_ptr<const SystemContent> SystemState() { return SystemFile().Get(); }
