// A driver's device object for tests: a public and a private devmode, a device state, and a spooler
// that keeps every write.
#pragma once

#include <string>
#include <vector>

#include "config/device_state.h"
#include "tests/support/record.h"

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

  // As SetFields and SetBlock do.
  void Set(const std::string& fields) { SetFields(devmode, fields); }
  void SetBlock(int k, WORD kind, const std::string& text) { ::SetBlock(devmode, k, kind, text); }
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
