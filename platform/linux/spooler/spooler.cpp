#include "platform/spooler.h"

#include <cstring>
#include <new>

#include "platform/extensions.h"
#include "platform/linux/spooler/printers.h"
#include "platform/linux/system/handle_table.h"
#include "platform/linux/text/unicode.h"

namespace {

// The names of open printers. Each call looks the name up in system.toml.
HandleTable<std::u16string>& OpenPrinters() {
  static HandleTable<std::u16string> table(0x200000);
  return table;
}

std::optional<PlatformPrinter> FindPrinter(const std::u16string& name) {
  for (const PlatformPrinter& printer : *Printers().Get()) {
    if (FoldedCase(printer.name) == FoldedCase(name)) return printer;
  }
  return std::nullopt;
}

// The server part of a name like \\host\printer, with its backslashes; empty for a local printer.
std::u16string ServerName(const std::u16string& printerName) {
  if (!printerName.starts_with(u"\\\\")) return {};
  return printerName.substr(0, printerName.find(u'\\', 2));
}

// The texts behind the record in the caller's block.
class InfoBlock {
 public:
  // Adds a text and returns its offset in the block.
  std::size_t Add(const std::u16string& text) {
    const std::size_t offset = sizeof(PRINTER_INFO_2W) + m_texts.size() * sizeof(WCHAR);
    m_texts += text;
    m_texts += u'\0';
    return offset;
  }
  std::size_t Size() const { return sizeof(PRINTER_INFO_2W) + m_texts.size() * sizeof(WCHAR); }
  void CopyTexts(LPBYTE block) const {
    std::memcpy(block + sizeof(PRINTER_INFO_2W), m_texts.data(), m_texts.size() * sizeof(WCHAR));
  }

 private:
  std::u16string m_texts;
};

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

}  // namespace

std::optional<PlatformPrinter> PlatformPrinterFromHandle(HANDLE hPrinter) {
  const auto name = OpenPrinters().Find(hPrinter);
  return name == nullptr ? std::nullopt : FindPrinter(*name);
}

BOOL OpenPrinterW(LPWSTR pPrinterName, HANDLE* phPrinter, LPVOID) try {
  if (phPrinter == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *phPrinter = nullptr;
  if (pPrinterName == nullptr) return Fail(ERROR_INVALID_PRINTER_NAME);
  if (PlatformShouldFail("OpenPrinterW")) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const std::optional<PlatformPrinter> printer = FindPrinter(pPrinterName);
  if (!printer) return Fail(ERROR_INVALID_PRINTER_NAME);
  *phPrinter = OpenPrinters().Add(printer->name);
  return TRUE;
} catch (const std::bad_alloc&) {
  return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL ClosePrinter(HANDLE hPrinter) {
  return OpenPrinters().Remove(hPrinter) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL GetDefaultPrinterW(LPWSTR pszBuffer, LPDWORD pcchBuffer) try {
  if (pcchBuffer == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const auto printers = Printers().Get();
  if (printers->empty()) return Fail(ERROR_FILE_NOT_FOUND);
  const std::u16string& name = printers->front().name;
  const DWORD room = *pcchBuffer;
  *pcchBuffer = static_cast<DWORD>(name.size() + 1);
  if (pszBuffer == nullptr || room < *pcchBuffer) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(pszBuffer, name.c_str(), *pcchBuffer * sizeof(WCHAR));
  return TRUE;
} catch (const std::bad_alloc&) {
  return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL GetPrinterW(HANDLE hPrinter, DWORD Level, LPBYTE pPrinter, DWORD cbBuf,
                 LPDWORD pcbNeeded) try {
  if (pcbNeeded == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *pcbNeeded = 0;
  if (Level != 2) return Fail(ERROR_INVALID_LEVEL);
  if (PlatformShouldFail("GetPrinterW")) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const auto printer = PlatformPrinterFromHandle(hPrinter);
  if (!printer) return Fail(ERROR_INVALID_HANDLE);

  const std::u16string server = ServerName(printer->name);
  InfoBlock texts;
  const std::size_t serverAt = texts.Add(server);
  const std::size_t nameAt = texts.Add(printer->name);
  const std::size_t driverAt = texts.Add(printer->driver);
  const std::size_t emptyAt = texts.Add(u"");
  *pcbNeeded = static_cast<DWORD>(texts.Size());
  if (cbBuf < *pcbNeeded || pPrinter == nullptr) return Fail(ERROR_INSUFFICIENT_BUFFER);

  const auto at = [pPrinter](std::size_t offset) {
    return reinterpret_cast<LPWSTR>(pPrinter + offset);
  };
  PRINTER_INFO_2W info = {};
  info.pServerName = server.empty() ? nullptr : at(serverAt);
  info.pPrinterName = at(nameAt);
  info.pDriverName = at(driverAt);
  for (LPWSTR* text : {&info.pShareName, &info.pPortName, &info.pComment, &info.pLocation,
                       &info.pSepFile, &info.pPrintProcessor, &info.pDatatype, &info.pParameters}) {
    *text = at(emptyAt);
  }
  std::memcpy(pPrinter, &info, sizeof info);
  texts.CopyTexts(pPrinter);
  return TRUE;
} catch (const std::bad_alloc&) {
  return Fail(ERROR_NOT_ENOUGH_MEMORY);
}
