// A device context as a printer driver keeps it: devmodes and procedures of its own, documents,
// pages and bands.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "platform/print_oem.h"
#include "tests/windows/files.h"

class Device {
 public:
  // What the plug-in writes goes to job, which outlives the device as the plug-in does.
  Device(IPrintOemUni2* plugin, HANDLE printer, const DEVMODEW& publicDevmode,
         const std::vector<BYTE>& record, std::ostream& job);
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  ~Device();

  HRESULT Enable();  // EnablePDEV
  HRESULT Disable();

  // The hooks that EnableDriver gave. Each result is what the hook returned.
  BOOL StartDocument(const DRVENABLEDATA& hooks, const std::string& name);
  BOOL EndDocument(const DRVENABLEDATA& hooks, FLONG flags);
  // bandPx: rows of a portrait band, columns of a landscape one. Returns one digit a call.
  std::string PrintPage(const DRVENABLEDATA& hooks, const Picture& page, LONG bandPx);

  // Size, resolution, physical size and offset of the page.
  std::string Geometry() const;

  DEVMODEW publicDevmode;
  std::vector<BYTE> record;
  DEVOBJ object = {};

 private:
  bool SendBand(const POINTL& at);
  bool SendRows(const BYTE* rows, LONG widthPx, LONG heightPx, const POINTL& at);
  bool IsLandscape() const { return publicDevmode.dmOrientation == DMORIENT_LANDSCAPE; }

  static Device& Of(const SURFOBJ* pso);
  static BOOL APIENTRY DrvStartDoc(SURFOBJ*, LPWSTR, DWORD) { return TRUE; }
  static BOOL APIENTRY DrvEndDoc(SURFOBJ*, FLONG) { return TRUE; }
  static BOOL APIENTRY DrvPage(SURFOBJ*) { return TRUE; }
  static BOOL APIENTRY DrvStartBanding(SURFOBJ* pso, POINTL* pptl);
  static BOOL APIENTRY DrvNextBand(SURFOBJ* pso, POINTL* pptl);
  static DWORD APIENTRY DrvWriteSpoolBuf(PDEVOBJ pdevobj, PVOID bytes, DWORD size);

  IPrintOemUni2* const m_plugin;
  std::ostream& m_job;
  DRVPROCS m_procedures = {};
  GDIINFO m_gdiInfo = {};
  DEVINFO m_devInfo = {};
  SURFOBJ m_surface = {};
  const Picture* m_page = nullptr;  // while it is printed
  LONG m_bandPx = 0;
};
