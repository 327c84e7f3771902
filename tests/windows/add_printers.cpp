// add_printers DRIVER PRINTER...
// Adds a printer driver of that name and the printers that use it. The driver is one in name only:
// Wine asks a driver's configuration file for its settings unless it is no module.

#include <cstdio>
#include <string>

#include "platform/spooler.h"
#include "tests/windows/files.h"

namespace {

int Fail(const char* call, const std::string& name) {
  std::fprintf(stderr, "%s fails for %s: error %lu\n", call, name.c_str(), GetLastError());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::wstring driver = Wide(argv[1]);
  std::wstring module = L"C:\\windows\\system32\\gdi32.dll";
  std::wstring noModule = L"C:\\windows\\win.ini";
  DRIVER_INFO_3W driverInfo = {};
  driverInfo.cVersion = 3;
  driverInfo.pName = driver.data();
  driverInfo.pDriverPath = module.data();
  driverInfo.pDataFile = driverInfo.pConfigFile = noModule.data();
  if (!AddPrinterDriverExW(nullptr, 3, reinterpret_cast<BYTE*>(&driverInfo),
                           APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY)) {
    return Fail("AddPrinterDriverExW", argv[1]);
  }
  std::wstring port = L"FILE:";
  std::wstring processor = L"winprint";
  std::wstring type = L"RAW";
  for (int i = 2; i < argc; ++i) {
    std::wstring name = Wide(argv[i]);
    PRINTER_INFO_2W printer = {};
    printer.pPrinterName = name.data();
    printer.pPortName = port.data();
    printer.pDriverName = driver.data();
    printer.pPrintProcessor = processor.data();
    printer.pDatatype = type.data();
    const HANDLE handle = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&printer));
    if (handle == nullptr) return Fail("AddPrinterW", argv[i]);
    ClosePrinter(handle);
  }
}
