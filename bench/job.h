// A job through the plug-in as it is measured: bands cut beforehand, and a spooler that keeps the
// images of the last page only.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bench/page.h"
#include "tests/driver/driver.h"

struct JobSettings {
  bool landscape = true;  // the page is turned on its way
  bool twoColors = false;
  WORD ditherer = 1;
  int bands = 0;               // of a page; 0: bands of 64 rows or columns
  bool bothSides = false;      // the page twice side by side, for a folded label
  bool flagBlankBands = true;  // as a driver does that knows what it has drawn
};

// A state folder of its own for the platform, with the PNG setting that VLX_BENCH_PNG names.
// VLX_HOME names the folder while it exists.
class BenchHome {
 public:
  BenchHome();
  ~BenchHome();
  BenchHome(const BenchHome&) = delete;
  BenchHome& operator=(const BenchHome&) = delete;

 private:
  std::string m_folder;
};

class Job {
 public:
  // Opens the plug-in and a document on the default printer. The pages are sent in turn. Throws
  // std::runtime_error if the plug-in refuses.
  Job(const JobSettings& settings, const std::vector<Raster>& pages);
  ~Job() { m_driver.EndDocument(); }
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
  struct Strip {
    Raster raster;
    POINT offset;
    bool blank;
  };
  static std::vector<Strip> Cut(const Raster& page, const JobSettings& settings);
  void Keep(std::string_view bytes);

  Plugin m_plugin;
  Driver m_driver;
  std::vector<std::vector<Strip>> m_pages;
  std::size_t m_nextPage = 0;
  std::vector<std::string> m_images;
  std::size_t m_imageCount = 0;
};
