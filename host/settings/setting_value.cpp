#include "host/settings/setting_value.h"

#include <cstring>
#include <sstream>

#include "host/error.h"
#include "host/settings/length.h"
#include "host/unicode.h"
#include "platform/com.h"
#include "platform/text.h"

namespace {

// The number in little-endian order, truncated to the field's size.
std::vector<BYTE> BytesOf(std::int64_t number, std::size_t size) {
  std::vector<BYTE> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<BYTE>(number >> (8 * i));
  return bytes;
}

}  // namespace

SettingValue::SettingValue(std::string key, const toml::node& node)
    : m_key(std::move(key)), m_node(node) {
  std::ostringstream shown;
  if (const auto* text = node.as_string()) {
    shown << '"' << text->get() << '"';
  } else {
    node.visit([&shown](const auto& value) { shown << value; });
  }
  m_shown = shown.str();
}

void SettingValue::Refuse(const std::string& expected) const {
  throw HostError(kExitSettings, "\"" + m_key + "\" is " + m_shown + ": " + expected);
}

std::string SettingValue::Text() const {
  const auto* text = m_node.as_string();
  if (text == nullptr) Refuse("a text is expected");
  return text->get();
}

bool SettingValue::Flag() const {
  if (const auto* flag = m_node.as_boolean()) return flag->get();
  Refuse("true or false is expected");
}

std::int64_t SettingValue::Integer(std::int64_t least, std::int64_t most) const {
  const auto* number = m_node.as_integer();
  if (number == nullptr || number->get() < least || number->get() > most) {
    Refuse("a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
           " is expected");
  }
  return number->get();
}

LONG SettingValue::LengthUm() const {
  if (!m_node.is_string()) Refuse("write a length with its unit, as \"1.5mm\" or \"1500um\"");
  return ParseLengthUm(Text(), m_key);
}

LONG SettingValue::Number(const SettingKey& key) const {
  return static_cast<LONG>(Integer(key.least, key.most));
}

LONG SettingValue::Word(const SettingKey& key) const {
  const auto* number = m_node.as_integer();
  const std::string word = number != nullptr ? std::to_string(number->get()) : Text();
  std::istringstream pairs{std::string(key.words)};
  std::string known;
  for (std::string pair; pairs >> pair;) {
    const std::size_t equals = pair.find('=');
    if (pair.substr(0, equals) == word) return std::stoi(pair.substr(equals + 1));
    known += (known.empty() ? "" : ", ") + pair.substr(0, equals);
  }
  Refuse("one of " + known + " is expected");
}

COLORREF SettingValue::Color() const {
  const std::string text = Text();
  DWORD rgb = 0;
  const bool form = text.size() == 7 && text[0] == '#' &&
                    text.find_first_not_of("0123456789abcdefABCDEF", 1) == text.npos;
  if (!form) Refuse("a colour is written as \"#RRGGBB\"");
  rgb = static_cast<DWORD>(std::stoul(text.substr(1), nullptr, 16));
  return (rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16;
}

// Texts of the record are in the ANSI code page.
std::vector<BYTE> SettingValue::FixedText(std::size_t size) const {
  const std::u16string wide = Widened(Text());
  std::vector<BYTE> bytes(size);
  BOOL lost = FALSE;
  const INT written =
      WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, reinterpret_cast<char*>(bytes.data()),
                          static_cast<INT>(size), nullptr, &lost);
  if (written == 0) {
    Refuse("at most " + std::to_string(size - 1) + " characters fit");
  }
  if (lost || wide.find(u'\0') != wide.npos) {
    Refuse("a character is not in the printer's code page");
  }
  return bytes;
}

std::vector<BYTE> SettingValue::Guid() const {
  GUID guid;
  if (FAILED(CLSIDFromString(Widened(Text()).c_str(), &guid))) {
    Refuse("an identifier is written as \"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}\"");
  }
  std::vector<BYTE> bytes(sizeof guid);
  std::memcpy(bytes.data(), &guid, sizeof guid);
  return bytes;
}

std::vector<BYTE> SettingValue::AsKey(const SettingKey& key, const OemDevField& field) const {
  switch (key.kind) {
    case SettingKey::Kind::Text:
      return FixedText(field.size);
    case SettingKey::Kind::Number:
    case SettingKey::Kind::Percent:
      return BytesOf(Number(key), field.size);
    case SettingKey::Kind::Flag:
      return BytesOf(Flag(), field.size);
    case SettingKey::Kind::Words:
      return BytesOf(Word(key), field.size);
    case SettingKey::Kind::Length: {
      const LONG lengthUm = LengthUm();
      if (!key.AllowsLength(lengthUm)) {
        Refuse("a length from " + FormatLength(key.least) + " to " + FormatLength(key.most) +
               " is expected");
      }
      return BytesOf(lengthUm, field.size);
    }
    case SettingKey::Kind::Margin: {
      const LONG lengthUm = LengthUm();
      if (lengthUm < 0) Refuse("a length that is not negative is expected");
      return BytesOf(lengthUm, field.size);
    }
    case SettingKey::Kind::Color:
      return BytesOf(Color(), field.size);
    case SettingKey::Kind::Stock:
      return Guid();
    case SettingKey::Kind::Paper:
      break;
  }
  throw HostError(kExitInternal, "the setting " + m_key + " has no field");
}

std::vector<BYTE> SettingValue::AsField(const OemDevField& field) const {
  const bool isText = m_node.is_string();
  switch (field.kind) {
    case OemDevKind::Text:
      return FixedText(field.size);
    case OemDevKind::Guid:
      return Guid();
    case OemDevKind::Color:
      return BytesOf(isText ? std::int64_t{Color()} : Integer(0, 0xFFFFFFFF), field.size);
    case OemDevKind::Length:
    case OemDevKind::Margin:
      return BytesOf(LengthUm(), field.size);
    case OemDevKind::Flag:
      if (m_node.is_boolean()) return BytesOf(Flag(), field.size);
      return BytesOf(Integer(0, 0xFFFFFFFF), field.size);
    case OemDevKind::Signed:
      return BytesOf(Integer(-2147483648LL, 2147483647), field.size);
    case OemDevKind::Unsigned:
      return BytesOf(Integer(0, 0xFFFFFFFF), field.size);
    case OemDevKind::Word:
      return BytesOf(Integer(0, 0xFFFF), field.size);
    case OemDevKind::Byte:
      return BytesOf(Integer(0, 0xFF), field.size);
  }
  throw HostError(kExitInternal, "the field " + m_key + " has no kind");
}
