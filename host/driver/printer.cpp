#include "host/driver/printer.h"

#include <iterator>

#include "host/error.h"
#include "host/unicode.h"
#include "platform/extensions.h"
#include "platform/spooler.h"

namespace {

std::u16string DefaultName() {
  WCHAR name[256];
  DWORD size = std::size(name);
  return GetDefaultPrinterW(name, &size) ? std::u16string(name) : std::u16string();
}

}  // namespace

std::string SystemFileWarning() {
  const std::string fault = PlatformSystemFileComplaint();
  return fault.empty() ? fault : fault + "; the default applies until this is fixed";
}

std::string StateFolder() { return PlatformHomeFolder(); }

std::string SystemFilePath() { return PlatformStatePath("system.toml"); }

std::string RegistryFilePath() { return PlatformStatePath("registry.reg"); }

Printer::Printer(const std::string& name) : m_name(name.empty() ? DefaultName() : Widened(name)) {
  if (OpenPrinterW(m_name.data(), &m_handle, nullptr)) return;
  const std::u16string first = DefaultName();
  throw HostError(kExitSettings,
                  "There is no printer \"" + (name.empty() ? Narrowed(m_name) : name) + "\" in " +
                      PlatformStatePath("system.toml"),
                  first.empty() ? "name one there" : "the first is \"" + Narrowed(first) + "\"");
}

Printer::~Printer() { ClosePrinter(m_handle); }
