#include "host/settings/printer_profiles.h"

#include <strings.h>
#include <toml++/toml.h>

#include <filesystem>

#include "host/error.h"
#include "host/settings/length.h"
#include "platform/extensions.h"

namespace {

constexpr int kMostDotGain = 25;

class ProfileReader {
 public:
  ProfileReader(const std::string& path, const toml::table& table) : m_path(path), m_table(table) {}

  PrinterProfile Read() const {
    PrinterProfile profile;
    profile.name = Text("name");
    profile.target = Text("target");
    profile.dpi = Number("dpi", 100, 1200).value_or(0);
    profile.paper = Text("paper");
    profile.dotGainPercent = Number("dot_gain", 0, kMostDotGain);
    if (!profile.paper.empty()) CheckPaper(profile.paper);
    if (const std::string file = Text("settings"); !file.empty()) {
      profile.settingsFile = (std::filesystem::path(m_path).parent_path() / file).string();
    }
    return profile;
  }

 private:
  [[noreturn]] void Refuse(const char* key, const std::string& expected) const {
    throw HostError(kExitSettings,
                    m_path + ", line " + std::to_string(m_table.get(key)->source().begin.line) +
                        ": \"" + key + "\" of a printer is wrong",
                    expected);
  }
  std::string Text(const char* key) const {
    const toml::node* node = m_table.get(key);
    if (node == nullptr) return {};
    if (!node->is_string() || node->as_string()->get().empty()) Refuse(key, "write a text");
    return node->as_string()->get();
  }
  std::optional<int> Number(const char* key, int least, int most) const {
    const toml::node* node = m_table.get(key);
    if (node == nullptr) return std::nullopt;
    const auto value = node->value_exact<std::int64_t>();
    if (!value || *value < least || *value > most) {
      Refuse(key,
             "write a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return static_cast<int>(*value);
  }
  void CheckPaper(const std::string& paper) const {
    try {
      ParsePaperSize(paper, "the paper");
    } catch (const HostError& error) {
      Refuse("paper", error.what());
    }
  }

  const std::string& m_path;
  const toml::table& m_table;
};

}  // namespace

std::vector<PrinterProfile> PrinterProfiles() {
  const std::string path = PlatformStatePath("system.toml");
  toml::table file;
  try {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) file = toml::parse_file(path);
  } catch (const toml::parse_error&) {
    return {};  // SystemFileWarning reports it
  }
  std::vector<PrinterProfile> profiles;
  const toml::array* printers = file["printer"].as_array();
  if (printers == nullptr) return profiles;
  for (const toml::node& printer : *printers) {
    if (!printer.is_table()) continue;
    profiles.push_back(ProfileReader(path, *printer.as_table()).Read());
  }
  return profiles;
}

PrinterProfile ProfileOf(const std::string& name) {
  for (PrinterProfile& profile : PrinterProfiles()) {
    if (name.empty() || strcasecmp(profile.name.c_str(), name.c_str()) == 0) return profile;
  }
  return {};
}
