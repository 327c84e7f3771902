#include "host/settings/settings_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sstream>

#include "host/settings/setting_pairs.h"
#include "host/unicode.h"

namespace {

using Kind = SettingKey::Kind;

// The units that neither a field's key nor its kind tells.
struct FieldUnit {
  std::string_view field;
  std::string_view unit;
};
constexpr FieldUnit kFieldUnits[] = {
    {"dwSpeed", "mm/s"},
    {"nColorTolerance", "hundredths of the largest distance"},
    {"nOptionSet2A4", "steps of 20 um"},
    {"nOptionSet2A0", "sent multiplied by 20"},
    {"nCut1Count", "labels"},
    {"nCut2Count", "labels"},
};

std::int64_t NumberAt(const OEMDEV& devmode, const OemDevField& field) {
  const bool isSigned = field.kind == OemDevKind::Signed || field.kind == OemDevKind::Length;
  std::uint32_t number = 0;
  std::memcpy(&number, reinterpret_cast<const BYTE*>(&devmode) + field.offset,
              std::min(field.size, sizeof number));
  return isSigned ? std::int64_t{static_cast<LONG>(number)} : std::int64_t{number};
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted.append(1, '\\').append(1, c);
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04X", c);
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

std::string LengthText(std::int64_t um) {
  return "\"" + FormatLength(static_cast<LONG>(um)) + "\"";
}

std::string ColorText(std::int64_t color) {
  char text[16];
  std::snprintf(text, sizeof text, "\"#%02X%02X%02X\"", static_cast<unsigned>(color & 0xFF),
                static_cast<unsigned>(color >> 8 & 0xFF),
                static_cast<unsigned>(color >> 16 & 0xFF));
  return text;
}

std::string GuidText(const OEMDEV& devmode, const OemDevField& field) {
  GUID guid;
  std::memcpy(&guid, reinterpret_cast<const BYTE*>(&devmode) + field.offset, sizeof guid);
  return Quoted(FormatGuid(guid));
}

std::string FixedFieldText(const OEMDEV& devmode, const OemDevField& field) {
  const char* text = reinterpret_cast<const char*>(&devmode) + field.offset;
  return Quoted(AnsiToUtf8(std::string(text, strnlen(text, field.size))));
}

// The value as the friendly key writes it; nullopt if the key does not allow it.
std::optional<std::string> FriendlyValue(const SettingKey& key, const OemDevField& field,
                                         const OEMDEV& devmode) {
  const std::int64_t number = NumberAt(devmode, field);
  switch (key.kind) {
    case Kind::Text:
      return FixedFieldText(devmode, field);
    case Kind::Stock:
      return GuidText(devmode, field);
    case Kind::Number:
    case Kind::Percent:
      if (number < key.least || number > key.most) return std::nullopt;
      return std::to_string(number);
    case Kind::Flag:
      if (number > 1) return std::nullopt;
      return number != 0 ? "true" : "false";
    case Kind::Words:
      return WordOf(key, number);
    case Kind::Margin:
      if (number > 0x7FFFFFFF) return std::nullopt;
      return LengthText(number);
    case Kind::Length:
      if (!key.AllowsLength(number)) return std::nullopt;
      return LengthText(number);
    case Kind::Color:
      if (number > 0xFFFFFF) return std::nullopt;
      return ColorText(number);
    case Kind::Paper:
      break;
  }
  return std::nullopt;
}

std::string FieldValue(const OemDevField& field, const OEMDEV& devmode) {
  const std::int64_t number = NumberAt(devmode, field);
  switch (field.kind) {
    case OemDevKind::Text:
      return FixedFieldText(devmode, field);
    case OemDevKind::Guid:
      return GuidText(devmode, field);
    case OemDevKind::Length:
    case OemDevKind::Margin:
      return LengthText(number);
    case OemDevKind::Flag:
      return number > 1 ? std::to_string(number) : number != 0 ? "true" : "false";
    case OemDevKind::Color:
      return number > 0xFFFFFF ? std::to_string(number) : ColorText(number);
    default:
      return std::to_string(number);
  }
}

std::string PageValue(std::string_view key, const PageSettings& page) {
  if (key == "paper.size") return Quoted(FormatPaperSize(page.paper));
  if (key == "paper.orientation") return page.landscape ? "\"landscape\"" : "\"portrait\"";
  if (key == "paper.dpi") return std::to_string(page.dpi);
  if (key == "print.copies") return std::to_string(page.copies);
  return page.collate ? "true" : "false";
}

std::string FieldComment(const OemDevField& field) {
  char offset[16];
  std::snprintf(offset, sizeof offset, "0x%03zX", field.offset);
  std::string comment = std::string(field.name) + " at " + offset;
  const auto* unit = std::find_if(std::begin(kFieldUnits), std::end(kFieldUnits),
                                  [&](const FieldUnit& row) { return row.field == field.name; });
  if (unit != std::end(kFieldUnits)) comment.append(", ").append(unit->unit);
  return comment;
}

// Lines "key = value  # comment" under the headings of their tables.
class Document {
 public:
  void Add(std::string_view key, const std::string& value, const std::string& comment) {
    const std::size_t dot = key.rfind('.');
    if (key.substr(0, dot) != m_table) {
      m_table = key.substr(0, dot);
      m_text += (m_text.empty() ? "[" : "\n[") + m_table + "]\n";
    }
    std::string line = std::string(key.substr(dot + 1)) + " = " + value;
    if (!comment.empty()) {
      line.resize(std::max<std::size_t>(line.size() + 1, 34), ' ');
      line += "# " + comment;
    }
    m_text += line + "\n";
  }
  const std::string& Text() const { return m_text; }

 private:
  std::string m_table;
  std::string m_text;
};

// True if the field has changed, or if one that has changed needs it.
bool IsWanted(const OemDevField& field, const SettingsView& view) {
  return view.base == nullptr ||
         std::memcmp(reinterpret_cast<const BYTE*>(&view.devmode) + field.offset,
                     reinterpret_cast<const BYTE*>(view.base) + field.offset, field.size) != 0 ||
         IsNeededByOthers(field, view.devmode, *view.base);
}

}  // namespace

std::string SettingsText(const SettingsView& view) {
  Document document;
  std::vector<std::size_t> shown;  // offsets of the fields
  const auto wasShown = [&shown](const OemDevField& field) {
    return std::find(shown.begin(), shown.end(), field.offset) != shown.end();
  };
  for (const SettingKey& key : SettingKeys()) {
    if (key.field.empty()) {
      if (view.page == nullptr) continue;
      const std::string value = PageValue(key.name, *view.page);
      if (view.basePage == nullptr || value != PageValue(key.name, *view.basePage)) {
        document.Add(key.name, value, "");
      }
      continue;
    }
    const OemDevField& field = FieldOfKey(key);
    const std::optional<std::string> value = FriendlyValue(key, field, view.devmode);
    if (!value || wasShown(field)) continue;  // two keys may share a field
    shown.push_back(field.offset);
    if (IsWanted(field, view)) {
      document.Add(key.name, *value, FieldComment(field));
    }
  }
  for (const OemDevField& field : OemDevFields()) {
    if (wasShown(field) || !IsWanted(field, view)) continue;
    document.Add("devmode." + std::string(field.name), FieldValue(field, view.devmode),
                 FieldComment(field).substr(field.name.size() + 1));
  }
  return document.Text();
}

std::string ExpectedValues(const SettingKey& key) {
  switch (key.kind) {
    case Kind::Text:
      return "<text of at most " + std::to_string(FieldOfKey(key).size - 1) + " characters>";
    case Kind::Number:
    case Kind::Percent:
      return key.least == -key.most && key.most > 0
                 ? "<number>"
                 : "<" + std::to_string(key.least) + " to " + std::to_string(key.most) + ">";
    case Kind::Flag:
      return "true false";
    case Kind::Length:
      return "<length, as -2.5mm>";
    case Kind::Margin:
      return "<length, as 2.5mm>";
    case Kind::Color:
      return "<colour, as #FF0000>";
    case Kind::Paper:
      return "<size, as 100x150mm>";
    case Kind::Stock:
      return "<identifier of vlx stocks>";
    case Kind::Words:
      break;
  }
  std::string words;
  std::istringstream pairs{std::string(key.words)};
  for (std::string pair; pairs >> pair;) {
    words += (words.empty() ? "" : " ") + pair.substr(0, pair.find('='));
  }
  return words;
}

std::string ExpectedValues(const OemDevField& field) {
  switch (field.kind) {
    case OemDevKind::Flag:
      return "true false";
    case OemDevKind::Length:
    case OemDevKind::Margin:
      return "<length, as 2.5mm>";
    case OemDevKind::Color:
      return "<colour, as #FF0000>";
    case OemDevKind::Guid:
      return "<identifier>";
    case OemDevKind::Text:
      return "<text of at most " + std::to_string(field.size - 1) + " characters>";
    default:
      return "<number>";
  }
}
