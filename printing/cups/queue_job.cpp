#include "printing/cups/queue_job.h"

#include <cups/cups.h>
#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "host/driver/printer.h"
#include "host/error.h"

namespace {

[[noreturn]] void Refuse(const std::string& fact, const std::string& remedy) {
  throw HostError(kExitSettings, fact, remedy);
}

// Page options of the usual filters that this one refuses. Other standard options that mean nothing
// here (finishings of other printers, job sheets, ...) are ignored.
struct Unprintable {
  const char* option;
  const char* onlyValue;
};
constexpr Unprintable kUnprintable[] = {
    {"number-up", "1"},
    {"page-set", "all"},
    {"outputorder", "normal"},
    {"mirror", "false"},
};

// Anybody may send a job. A command block can name any file, and a raw field bypasses every check.
constexpr std::string_view kAdministratorsOnly[] = {"blocks.", "devmode."};

bool IsSetting(std::string_view name) {
  const std::string_view section = name.substr(0, name.find('.') + 1);
  if (section.empty()) return false;
  const auto known = SettingKeys();
  return section == "devmode." ||
         std::any_of(known.begin(), known.end(),
                     [section](const SettingKey& key) { return key.name.starts_with(section); });
}

// The choices of these options are paper sizes, which PaperOfName reads, not settings.
bool IsPaper(const ppd_option_t& option) {
  return strcasecmp(option.keyword, "PageSize") == 0 ||
         strcasecmp(option.keyword, "PageRegion") == 0;
}

std::string ChoicesOf(const ppd_option_t& option) {
  std::string choices;
  for (int i = 0; i < option.num_choices; ++i) {
    choices += (i == 0 ? "" : ", ") + std::string(option.choices[i].choice);
  }
  return choices;
}

template <typename Visit>
void ForEachOption(ppd_file_t* ppd, const Visit& visit) {
  for (int group = 0; group < ppd->num_groups; ++group) {
    for (int i = 0; i < ppd->groups[group].num_options; ++i) visit(ppd->groups[group].options[i]);
  }
}

}  // namespace

class QueueJob::Options {
 public:
  explicit Options(const std::string& text) : m_count(cupsParseOptions(text.c_str(), 0, &m_list)) {
    // cupsd translates a request for monochrome into the queue's option, but not one for colour.
    const char* mode = Get("print-color-mode");
    if (mode != nullptr && strcmp(mode, "color") == 0 && Get("ColorModel") == nullptr) {
      m_count = cupsAddOption("ColorModel", "RGB", m_count, &m_list);
    }
  }
  ~Options() { cupsFreeOptions(m_count, m_list); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  // Null if the job does not have it.
  const char* Get(const char* name) const { return cupsGetOption(name, m_count, m_list); }
  std::string Get(const char* name, const char* otherwise) const {
    const char* given = Get(name);
    return given == nullptr ? otherwise : given;
  }
  bool Is(const char* name, const char* value) const {
    const char* given = Get(name);
    return given != nullptr && strcasecmp(given, value) == 0;
  }
  void MarkIn(ppd_file_t* ppd) const { cupsMarkOptions(ppd, m_count, m_list); }
  const cups_option_t* begin() const { return m_list; }
  const cups_option_t* end() const { return m_list + m_count; }

 private:
  cups_option_t* m_list = nullptr;
  int m_count;
};

QueueJob::QueueJob(const std::string& ppdPath, const std::string& options)
    : m_ppd(ppdOpenFile(ppdPath.c_str())) {
  if (m_ppd == nullptr) {
    Refuse("The queue's description (PPD) \"" + ppdPath + "\" cannot be read",
           "make the queue again: lpadmin -m drv:///vlx.drv/vlx-300.ppd");
  }
  const Options given(options);
  ppdMarkDefaults(m_ppd.get());
  ApplyMarked(Marked::All);
  ApplyPreset(given);
  ApplyOptions(given);
}

void QueueJob::ApplyMarked(Marked marked) {
  ForEachOption(m_ppd.get(), [&](const ppd_option_t& option) {
    const ppd_choice_t* choice = ppdFindMarkedChoice(m_ppd.get(), option.keyword);
    if (choice == nullptr) return;
    if (marked == Marked::All || strcmp(choice->choice, option.defchoice) != 0) {
      ApplyChoice(option, *choice);
    }
  });
}

// vlx.drv explains where a choice holds its settings.
void QueueJob::ApplyChoice(const ppd_option_t& option, const ppd_choice_t& choice) {
  const std::string code = choice.code == nullptr ? "" : choice.code;
  if (const std::size_t at = code.find('%'); at != code.npos) {
    std::istringstream settings(code.substr(at + 1));
    for (std::string setting; settings >> setting;) m_settings.Set(setting);
  } else if (IsSetting(option.keyword)) {
    m_settings.Set(option.keyword, choice.choice);
  }
}

// Presets are in the state folder, where only the administrator may write.
void QueueJob::ApplyPreset(const Options& options) {
  const char* given = options.Get("preset");
  if (given == nullptr || strcmp(given, "none") == 0) return;
  const std::string name = given;
  const std::filesystem::path path =
      std::filesystem::path(StateFolder()) / "presets" / (name + ".toml");
  std::error_code error;
  const bool isName = name.find('/') == name.npos && !name.starts_with('.');
  if (!isName || !std::filesystem::exists(path, error)) {
    Refuse("There is no preset \"" + name + "\"",
           "choose one that is in " + path.parent_path().string());
  }
  m_settings.ReadFile(path.string());
}

void QueueJob::ApplyOption(const std::string& name, const std::string& value) {
  for (const std::string_view section : kAdministratorsOnly) {
    if (!name.starts_with(section)) continue;
    Refuse("A job may not set \"" + name + "\"",
           "ask the administrator for a preset with it (option preset)");
  }
  ppd_option_t* option = ppdFindOption(m_ppd.get(), name.c_str());
  const bool isCustom = value.starts_with("Custom.");
  if (option == nullptr || IsPaper(*option)) {
    if (option == nullptr && IsSetting(name))
      m_settings.Set(name, isCustom ? value.substr(7) : value);
    return;
  }
  if (const ppd_choice_t* choice = ppdFindChoice(option, value.c_str())) {
    ApplyChoice(*option, *choice);
  } else if (isCustom && IsSetting(name)) {
    m_settings.Set(name, value.substr(7));
  } else {
    Refuse("The option " + name + " is \"" + value + "\", which this queue does not have",
           "choose one of " + ChoicesOf(*option) +
               (IsSetting(name) ? "; another value is written Custom." + value : ""));
  }
}

void QueueJob::ApplyOptions(const Options& options) {
  for (const Unprintable& row : kUnprintable) {
    if (options.Get(row.option) == nullptr || options.Is(row.option, row.onlyValue)) continue;
    Refuse("The option " + std::string(row.option) + " is \"" + options.Get(row.option) +
               "\", labels are printed page by page as they are",
           "leave it out");
  }
  // First the standard options that stand for one of the queue's (finishings for cut), then all
  // options by name.
  options.MarkIn(m_ppd.get());
  ApplyMarked(Marked::Changed);
  for (const cups_option_t& option : options) ApplyOption(option.name, option.value);

  SetOrientation(m_settings, std::atoi(options.Get("orientation-requested", "3").c_str()));
  if (options.Is("landscape", "true")) SetOrientation(m_settings, IPP_ORIENT_LANDSCAPE);
  m_collated = options.Is("collate", "true") ||
               options.Is("multiple-document-handling", "separate-documents-collated-copies");
  m_pages.paper = PaperOf(options);
  m_pages.dpi = m_settings.Page().dpi;
  m_pages.landscape = m_settings.Page().landscape;
  ReadPageRanges(options.Get("page-ranges", ""));
}

// Prefers an exact size to the one that cupsd has rounded from it.
LabelPaper QueueJob::PaperOf(const Options& options) const {
  std::optional<LabelPaper> rounded;
  for (const char* name : {"media", "PageSize"}) {
    std::istringstream words(options.Get(name, ""));
    for (std::string word; std::getline(words, word, ',');) {
      const std::optional<LabelPaper> paper = PaperOfName(word);
      if (paper && !paper->rounded) return *paper;
      if (paper) rounded = paper;
    }
  }
  if (rounded) return *rounded;
  const ppd_size_t* size = ppdPageSize(m_ppd.get(), nullptr);
  if (size == nullptr) Refuse("The queue has no paper size", "choose one in the print dialog");
  if (const std::optional<LabelPaper> paper = PaperOfName(size->name)) return *paper;
  const auto um = [](float points) {
    return static_cast<std::int32_t>(std::lround(points * 25400.0 / 72));
  };
  return {{um(size->width), um(size->length)}, true};
}

// ranges: "1-3,5,8-".
void QueueJob::ReadPageRanges(const std::string& ranges) {
  std::istringstream parts(ranges);
  for (std::string part; std::getline(parts, part, ',');) {
    const std::size_t dash = part.find('-');
    const bool isOpen = dash != part.npos && dash + 1 == part.size();
    const int first = std::max(std::atoi(part.c_str()), 1);
    const int last = dash == part.npos ? first : std::atoi(part.c_str() + dash + 1);
    if (last < first && !isOpen) {
      Refuse("The page range is \"" + ranges + "\"", "write it as 1-3,5");
    }
    m_pages.ranges.push_back({static_cast<std::size_t>(first),
                              isOpen ? PageRange::kOpen : static_cast<std::size_t>(last)});
  }
}
