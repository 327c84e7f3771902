// The printer driver's side of the plug-in: loads it as a module and makes the driver's calls in
// the driver's order, through the plug-in's binary interface only.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/oemdev.h"
#include "host/driver/module.h"
#include "host/driver/printer.h"
#include "host/pages/page_raster.h"
#include "host/settings/settings.h"
#include "host/targets/spool.h"
#include "platform/print_oem.h"

// A raw settings record, not checked yet.
struct DevModeRecord {
  std::vector<BYTE> bytes;
  std::string source;  // where it comes from, for messages: the file's path
};

// Used by one thread at a time; several drivers may work at once. Every function throws HostError
// (internal) if the plug-in refuses a call, and passes on what the spool threw.
class LabelDriver {
 public:
  // Loads the plug-in, creates its object and gives it the helper interface. spool takes the job
  // and must outlive the driver.
  LabelDriver(const std::string& pluginPath, Spool& spool);
  ~LabelDriver();
  LabelDriver(const LabelDriver&) = delete;
  LabelDriver& operator=(const LabelDriver&) = delete;

  // The plug-in's version number, and its default private devmode.
  DWORD PluginVersion() const { return m_pluginVersion; }
  OEMDEV DefaultDevMode();
  // Lets the plug-in check a record, convert an old one and repair what is out of range. Throws
  // HostError (settings) that names its source if the plug-in refuses it.
  OEMDEV MergeDevMode(const DevModeRecord& record);
  // The settings applied to the given record, or to the default one, and checked by the plug-in.
  // Throws HostError (settings) if the plug-in does not accept a setting.
  OEMDEV MakeDevMode(const Settings& settings, const std::optional<DevModeRecord>& record);

  // Opens the printer and creates the device context. An empty name is the default printer.
  // dotGain: the printer's own in percent; nullopt: that of all printers. Throws HostError
  // (settings) if no such printer exists.
  void Open(const std::string& printerName, const PageSettings& page, const OEMDEV& devmode,
            std::optional<int> dotGain = std::nullopt);

  // The page of the device context, which the plug-in has fitted to the stock.
  DevicePage Page() const;

  // A device context prints one document at a time. surface: must have the size of the device's
  // surface. bandPx: rows of a portrait band, columns of a landscape one. After an error, abort the
  // document.
  void StartDocument(const std::string& name, DWORD jobId);
  void PrintPage(const PageImage& surface, LONG bandPx);
  void EndDocument();
  void AbortDocument() noexcept;

 private:
  class Helper;
  struct Band {
    LONG startPx;  // rows from the top, columns from the left
    LONG lengthPx;
  };

  // While it lives, the plug-in uses the dot gain of this driver's printer on this thread.
  class DotGainScope {
   public:
    explicit DotGainScope(const LabelDriver& driver);
    ~DotGainScope();
    DotGainScope(const DotGainScope&) = delete;
    DotGainScope& operator=(const DotGainScope&) = delete;
  };

  void Check(HRESULT hr, const char* call);
  void CheckDone(BOOL result, const char* call);
  void RethrowSpoolError();
  OEMDMPARAM DevModeBlock(const void* in, OEMDEV* out);
  GDIINFO InitialGdiInfo(const PageSettings& page) const;
  bool SendBand(const Band& band);
  bool SendToPlugin(const BYTE* bytes, std::size_t strideBytes, LONG widthPx, LONG heightPx,
                    POINT at);

  DWORD WriteSpool(const void* bytes, DWORD size) noexcept;
  static LabelDriver& Of(const SURFOBJ* pso);
  static DWORD APIENTRY WriteSpoolBuf(PDEVOBJ device, PVOID bytes, DWORD size);
  static BOOL APIENTRY StartDoc(SURFOBJ* pso, LPWSTR name, DWORD jobId);
  static BOOL APIENTRY EndDoc(SURFOBJ* pso, FLONG fl);
  static BOOL APIENTRY StartPage(SURFOBJ* pso);
  static BOOL APIENTRY SendPage(SURFOBJ* pso);
  static BOOL APIENTRY StartBanding(SURFOBJ* pso, POINTL* pptl);
  static BOOL APIENTRY NextBand(SURFOBJ* pso, POINTL* pptl);

  POINTL OriginOf(const Band& band) const;

  template <typename Function>
  Function Hook(ULONG index) const {
    return reinterpret_cast<Function>(FindHook(index));
  }
  PFN FindHook(ULONG index) const;

  Spool& m_spool;
  std::exception_ptr m_spoolError;
  PluginModule m_module;
  std::unique_ptr<Helper> m_helper;
  ComPtr<IPrintOemUni2> m_plugin;
  DWORD m_pluginVersion = 0;
  bool m_enabled = false;

  std::optional<Printer> m_printer;  // while a device context is open
  DEVMODEW m_publicDevmode = {};
  OEMDEV m_devmode = {};
  std::optional<int> m_dotGain;
  DRVPROCS m_procedures = {};
  DEVOBJ m_device = {};
  DRVENABLEDATA m_hooks = {};
  GDIINFO m_gdiInfo = {};
  DEVINFO m_devInfo = {};
  SURFOBJ m_surfaceObject = {};

  const PageImage* m_surface = nullptr;  // the page that is being printed; not owned
  std::vector<BYTE> m_strip;             // a landscape band
  std::vector<Band> m_bands;
  std::size_t m_nextBand = 0;  // index in m_bands
};
