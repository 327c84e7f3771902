// A job through the plug-in as a driver runs it: the loaded module, its binary interface, bands cut
// beforehand, a spooler that keeps the last image of each page.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "bench/page.h"
#include "config/oemdev.h"
#include "platform/print_oem.h"

struct JobSettings {
  bool landscape = true;  // the page is turned on its way
  bool twoColors = false;
  WORD ditherer = 1;
  int bands = 0;               // of a page; 0: bands of 64 rows or columns
  bool flagBlankBands = true;  // as a driver does that knows what it has drawn
};

class Job {
 public:
  // Opens the plug-in and a document on the default printer. The pages are sent in turn. Throws
  // std::runtime_error when the plug-in refuses.
  Job(const JobSettings& settings, const std::vector<Raster>& pages);
  ~Job();
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  // All bands of the next page.
  void SendBands();
  // The start of the page after it, which emits the page.
  void EmitPage();
  // Sends the bands of the next page and forgets the page, as an aborted document does.
  void CaptureAndAbort();

  // The PNG files of the page that was emitted last.
  std::span<const std::string> Images() const { return {m_images.data(), m_imageCount}; }

 private:
  struct Band {
    std::vector<BYTE> pixels;
    BITMAPINFOHEADER header;
    IPPARAMS parameters;
  };
  static std::vector<Band> Cut(const Raster& page, const JobSettings& settings);
  void StartDocument();
  template <typename Function>
  Function Hook(ULONG index) const;
  DWORD Write(const char* bytes, DWORD size);

  void* m_module = nullptr;
  IPrintOemUni2* m_plugin = nullptr;
  HANDLE m_printer = nullptr;
  DEVMODEW m_publicDevmode = {};
  OEMDEV m_devmode = {};
  DRVPROCS m_procedures = {};
  DEVOBJ m_device = {};
  DRVENABLEDATA m_hooks = {};
  DEVINFO m_devInfo = {};
  SURFOBJ m_surface = {};
  std::vector<std::vector<Band>> m_pages;
  std::size_t m_nextPage = 0;
  std::vector<std::string> m_images;
  std::size_t m_imageCount = 0;
};
