#include "platform/linux/registry/registry_file.h"

#include <stdexcept>
#include <string_view>

#include "platform/linux/text/unicode.h"
#include "platform/registry.h"

namespace {

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view kCurrentUser = u"HKEY_CURRENT_USER";
constexpr int kMostLevels = 512;  // the platform's own limit

std::u16string Decode(const std::string& bytes) {
  if (bytes.starts_with("\xFF\xFE")) {
    if (bytes.size() % 2 != 0) throw std::runtime_error("the UTF-16 text ends in half a character");
    std::u16string text;
    for (std::size_t i = 2; i < bytes.size(); i += 2) {
      text +=
          static_cast<char16_t>(static_cast<BYTE>(bytes[i]) | static_cast<BYTE>(bytes[i + 1]) << 8);
    }
    return text;
  }
  return Utf16FromUtf8(bytes.starts_with("\xEF\xBB\xBF") ? std::string_view(bytes).substr(3)
                                                         : std::string_view(bytes));
}

std::u16string_view Trimmed(std::u16string_view text) {
  constexpr std::u16string_view kBlank = u" \t\r";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

class Parser {
 public:
  explicit Parser(std::u16string text) : m_text(std::move(text)) {}

  RegistryKey Run() {
    std::u16string_view line;
    if (!NextLine(line) || Trimmed(line) != kHeader) {
      Fail("the file does not begin with \"Windows Registry Editor Version 5.00\"");
    }
    while (NextLine(line)) {
      line = Trimmed(line);
      if (line.empty() || line.front() == u';') continue;
      if (line.front() == u'[') {
        ReadKey(line);
      } else {
        ReadValue(line);
      }
    }
    return std::move(m_root);
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const {
    throw std::runtime_error("line " + std::to_string(m_line) + ": " + what);
  }

  bool NextLine(std::u16string_view& line) {
    if (m_position >= m_text.size()) return false;
    const std::size_t end = std::min(m_text.find(u'\n', m_position), m_text.size());
    line = std::u16string_view(m_text).substr(m_position, end - m_position);
    m_position = end + 1;
    ++m_line;
    return true;
  }

  // Reads a key line: [path] selects or adds the key, [-path] removes it. Skips other roots.
  void ReadKey(std::u16string_view line) {
    if (line.size() < 2 || line.back() != u']') Fail("a key line has no closing bracket");
    std::u16string_view path = line.substr(1, line.size() - 2);
    const bool remove = path.starts_with(u'-');
    if (remove) path.remove_prefix(1);
    m_key = nullptr;
    m_skipped = true;
    const std::size_t rootEnd = std::min(path.find(u'\\'), path.size());
    if (FoldedCase(path.substr(0, rootEnd)) != FoldedCase(kCurrentUser)) return;
    m_skipped = false;
    RegistryKey* key = &m_root;
    RegistryKey* parent = nullptr;
    std::u16string folded;
    int levels = 0;
    for (std::size_t at = rootEnd; at < path.size();) {
      if (++levels > kMostLevels) Fail("a key lies deeper than 512 levels");
      const std::size_t end = std::min(path.find(u'\\', at + 1), path.size());
      const std::u16string_view name = path.substr(at + 1, end - at - 1);
      folded = FoldedCase(name);
      if (remove && !key->subkeys.contains(folded)) {
        m_skipped = true;
        return;
      }
      parent = key;
      key = &key->subkeys[folded];
      if (key->name.empty()) key->name = name;
      at = end;
    }
    if (!remove) {
      m_key = key;
    } else if (parent != nullptr) {
      parent->subkeys.erase(folded);
    }
  }

  void ReadValue(std::u16string_view line) {
    if (m_key == nullptr && !m_skipped) Fail("a value stands outside a key");
    std::u16string name;
    if (line.front() == u'@') {
      line.remove_prefix(1);
    } else {
      name = ReadQuoted(line);
    }
    line = Trimmed(line);
    if (!line.starts_with(u'=')) Fail("a value has no '='");
    line = Trimmed(line.substr(1));
    if (line == u"-") {
      if (m_key != nullptr) m_key->values.erase(FoldedCase(name));
      return;
    }
    RegistryValue value = ReadData(line);
    if (m_key != nullptr) m_key->values.insert_or_assign(FoldedCase(name), std::move(value));
  }

  // Takes a quoted text from the front of the line.
  std::u16string ReadQuoted(std::u16string_view& line) {
    if (!line.starts_with(u'"')) Fail("a name or text must stand in quotes");
    std::u16string text;
    for (std::size_t i = 1; i < line.size(); ++i) {
      if (line[i] == u'"') {
        line.remove_prefix(i + 1);
        return text;
      }
      if (line[i] == u'\\' && i + 1 < line.size()) ++i;
      text += line[i];
    }
    Fail("a text has no closing quote");
  }

  RegistryValue ReadData(std::u16string_view data) {
    if (data.starts_with(u'"')) {
      std::u16string text = ReadQuoted(data);
      if (!Trimmed(data).empty()) Fail("something follows a text");
      RegistryValue value{REG_SZ, {}};
      text += u'\0';
      for (const char16_t c : text) {
        value.data.push_back(static_cast<BYTE>(c));
        value.data.push_back(static_cast<BYTE>(c >> 8));
      }
      return value;
    }
    if (data.starts_with(u"dword:")) {
      const DWORD number = ReadHex(Trimmed(data.substr(6)), 8);
      return {REG_DWORD,
              {static_cast<BYTE>(number), static_cast<BYTE>(number >> 8),
               static_cast<BYTE>(number >> 16), static_cast<BYTE>(number >> 24)}};
    }
    if (data.starts_with(u"hex:")) return {REG_BINARY, ReadBytes(data.substr(4))};
    if (data.starts_with(u"hex(")) {
      const std::size_t close = data.find(u"):");
      if (close == data.npos) Fail("hex( has no closing bracket");
      const DWORD type = ReadHex(data.substr(4, close - 4), 8);
      return {type, ReadBytes(data.substr(close + 2))};
    }
    Fail("a value is neither a text, dword: nor hex:");
  }

  DWORD ReadHex(std::u16string_view digits, std::size_t most) {
    if (digits.empty() || digits.size() > most) Fail("a hexadecimal number is malformed");
    DWORD number = 0;
    for (const char16_t c : FoldedCase(digits)) {
      const bool letter = c >= u'a' && c <= u'f';
      if (!letter && (c < u'0' || c > u'9')) Fail("a hexadecimal number is malformed");
      number = number << 4 | static_cast<DWORD>(letter ? c - u'a' + 10 : c - u'0');
    }
    return number;
  }

  // Bytes separated by commas; a backslash at the end of a line continues them on the next.
  std::vector<BYTE> ReadBytes(std::u16string_view text) {
    std::u16string all(Trimmed(text));
    while (all.ends_with(u'\\')) {
      all.pop_back();
      std::u16string_view next;
      if (!NextLine(next)) Fail("a value breaks off");
      all += Trimmed(next);
    }
    std::vector<BYTE> bytes;
    for (std::size_t at = 0; at < all.size();) {
      const std::size_t end = std::min(all.find(u',', at), all.size());
      bytes.push_back(
          static_cast<BYTE>(ReadHex(Trimmed(std::u16string_view(all).substr(at, end - at)), 2)));
      at = end + 1;
    }
    return bytes;
  }

  const std::u16string m_text;
  std::size_t m_position = 0;
  int m_line = 0;
  RegistryKey m_root;
  RegistryKey* m_key = nullptr;  // that values belong to
  bool m_skipped = false;        // inside a key of another root
};

}  // namespace

namespace {

void NumberSubkeys(RegistryKey& key) {
  key.numbered.reserve(key.subkeys.size());
  for (auto& [name, subkey] : key.subkeys) {
    key.numbered.push_back(&subkey);
    NumberSubkeys(subkey);
  }
}

}  // namespace

RegistryKey ParseRegistryFile(const std::string& bytes) {
  RegistryKey root = Parser(Decode(bytes)).Run();
  NumberSubkeys(root);
  return root;
}
