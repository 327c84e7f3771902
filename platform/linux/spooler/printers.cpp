#include "platform/linux/spooler/printers.h"

#include "platform/linux/text/unicode.h"

namespace {

using PrinterList = std::vector<PlatformPrinter>;

const PrinterList& DefaultPrinters() {
  static const PrinterList printers = {{u"Label Printer", u"VLX Label", std::nullopt}};
  return printers;
}

std::u16string ReadText(const toml::table& table, const char* key,
                        const std::u16string& otherwise) {
  const toml::node* node = table.get(key);
  if (node == nullptr) return otherwise;
  const auto text = node->value<std::string>();
  if (!text || text->empty()) FailAt(*node, std::string(key) + " must be a text that is not empty");
  return Utf16FromUtf8(*text);
}

DWORD ReadMicrometres(const toml::table& table, const char* key) {
  const auto value =
      ReadNumber(table, key, 0, 0xFFFFFFFF, "must be whole micrometres from 0 to 4294967295");
  if (!value) FailAt(table, std::string("[printer.label] has no ") + key);
  return static_cast<DWORD>(*value);
}

PlatformPrinter ReadPrinter(const toml::table& table) {
  if (!table.contains("name")) FailAt(table, "a [[printer]] has no name");
  PlatformPrinter printer{ReadText(table, "name", {}), ReadText(table, "driver", u"VLX Label"), {}};
  const toml::node* label = table.get("label");
  if (label == nullptr) return printer;
  if (!label->is_table()) FailAt(*label, "label must be a table");
  const toml::table& bounds = *label->as_table();
  printer.label = PlatformLabelBounds{
      ReadMicrometres(bounds, "min_width_um"), ReadMicrometres(bounds, "max_width_um"),
      ReadMicrometres(bounds, "min_length_um"), ReadMicrometres(bounds, "max_length_um")};
  return printer;
}

PrinterList ReadPrinters(const toml::table& file) {
  const toml::node* node = file.get("printer");
  if (node == nullptr) return DefaultPrinters();
  if (!node->is_array_of_tables()) FailAt(*node, "printers are written as [[printer]]");
  PrinterList printers;
  for (const toml::node& printer : *node->as_array()) {
    printers.push_back(ReadPrinter(*printer.as_table()));
  }
  return printers;
}

}  // namespace

SystemPart<PrinterList>& Printers() {
  static SystemPart<PrinterList> part(DefaultPrinters(), ReadPrinters);
  return part;
}
