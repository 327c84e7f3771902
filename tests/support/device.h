// A driver's device object for tests: a public and a private devmode, a device state, and a spooler
// that keeps every write.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/device_state.h"
#include "config/oemdev_fields.h"

class Device {
 public:
  Device() {
    object.dwSize = sizeof object;
    object.pdevOEM = &state;
    object.hEngine = this;
    object.pPublicDM = &publicDevmode;
    object.pOEMDM = &devmode;
    object.pDrvProcs = &procedures;
    procedures.DrvWriteSpoolBuf = &Device::Write;
    surface.dhpdev = &object;
    publicDevmode.dmOrientation = DMORIENT_PORTRAIT;
    publicDevmode.dmPaperWidth = 1000;
    publicDevmode.dmPaperLength = 500;
    publicDevmode.dmCopies = 1;
    publicDevmode.dmYResolution = 203;
    devmode.dwColorMode = 1;
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Sets fields of the private devmode by their names: "dwOptionE=1 szModelCode=K7".
  void Set(const std::string& fields) {
    std::istringstream words(fields);
    for (std::string name, value; std::getline(words >> std::ws, name, '=') && words >> value;) {
      const auto all = OemDevFields();
      const auto field = std::find_if(all.begin(), all.end(),
                                      [&](const OemDevField& known) { return known.name == name; });
      if (field == all.end()) throw std::invalid_argument(name);
      const auto number = static_cast<DWORD>(std::strtoll(value.c_str(), nullptr, 10));
      const void* bytes =
          field->kind == OemDevKind::Text ? value.c_str() : static_cast<const void*>(&number);
      std::memcpy(reinterpret_cast<BYTE*>(&devmode) + field->offset, bytes,
                  field->kind == OemDevKind::Text ? value.size() + 1 : field->size);
    }
  }
  void SetBlock(int k, WORD kind, const std::string& text) {
    (&devmode.wCustomType0)[k] = kind;
    text.copy(devmode.szCustomText0 + k * kCustomTextSize, kCustomTextSize - 1);
  }
  std::string Stream() const {
    std::string all;
    for (const std::string& write : writes) all += write;
    return all;
  }

  DEVOBJ object = {};
  DEVMODEW publicDevmode = {};
  OEMDEV devmode = {};
  COemPDEV state;
  DRVPROCS procedures = {};
  SURFOBJ surface = {};
  std::vector<std::string> writes;

 private:
  static DWORD APIENTRY Write(PDEVOBJ device, PVOID bytes, DWORD size) {
    static_cast<Device*>(device->hEngine)->writes.emplace_back(static_cast<char*>(bytes), size);
    return 0;  // what the spooler answers is never examined
  }
};
