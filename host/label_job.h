// One print job, one document: pages in, the printer's job stream out. Every front end prints with
// three pieces: a PageSource that reads its pages, a LabelJob that prints them, and a JobObserver
// that receives progress and warnings.
//
//     Spool spool(OpenTarget("tcp://192.0.2.7"));
//     LabelJob job(request, spool, observer);
//     PageFiles pages({"labels.pdf"}, job.Page().dpi);
//     PrintPages(pages, job);  // or job.Print(page) for each page, then job.End()
//     spool.Finish();
//
// A job is used by one thread at a time. Several jobs may run at once on several threads of a
// process, each with a spool and an observer of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "host/driver/driver.h"
#include "host/job_observer.h"
#include "host/pages/page_raster.h"
#include "host/pages/page_source.h"
#include "host/settings/settings.h"
#include "host/targets/spool.h"

struct JobRequest {
  std::string name = "label";  // UTF-8; written into the job
  std::uint32_t id = 1;        // of the job in its queue; appears in the log
  std::string printer;         // its name in system.toml; empty: the default printer
  Settings settings;
  std::optional<DevModeRecord> record;  // under the settings; none: the default record
  Fit fit = Fit::None;
  Place place = Place::TopLeft;
  int bandRows = 256;  // rows per band; does not change the job
};

class LabelJob {
 public:
  // Loads the plug-in and opens the printer; sends nothing. spool and observer must outlive the
  // job. Throws HostError: settings if the plug-in refuses them, if they leave nothing to print on
  // or if no such printer exists; input if the file of a command block cannot be read; internal if
  // the plug-in cannot be loaded.
  LabelJob(const JobRequest& request, Spool& spool, JobObserver& observer);
  // Aborts a document that has not been ended.
  ~LabelJob();
  LabelJob(const LabelJob&) = delete;
  LabelJob& operator=(const LabelJob&) = delete;

  // The paper and the printable area after the plug-in has fitted them to the stock. Page sources
  // draw at its dpi.
  const DevicePage& Page() const { return m_device; }
  // The settings record that the plug-in works with.
  const OEMDEV& DevMode() const { return m_devmode; }
  JobObserver& Observer() const { return m_observer; }
  Spool& Target() const { return m_spool; }

  // Fits the page to the paper, places it and prints it; the observer is warned of scaling. The
  // document starts with the first page that fits, so a job whose first page is refused has sent
  // nothing. The image's content is undefined afterwards; reuse the same image for every page to
  // save its memory. Throws HostError (settings) if the page does not fit, and what the spool
  // throws. Then abort the job, or end it with the pages printed so far.
  void Print(PageImage& page);

  // Ends the document and writes the rest of the job to the spool; the caller finishes the spool.
  // Writes nothing if no page was printed. Throws what the spool throws.
  void End();

  // Ends the document without writing the rest of the job. Does nothing if none is open.
  void Abort() noexcept;

  std::size_t PagesPrinted() const { return m_pages; }

 private:
  Spool& m_spool;
  JobObserver& m_observer;
  const std::string m_name;
  const std::uint32_t m_id;
  const Fit m_fit;
  const Place m_place;
  const int m_bandRows;
  LabelDriver m_driver;
  OEMDEV m_devmode;
  DevicePage m_device = {};
  PageImage m_surface;
  std::size_t m_pages = 0;
  bool m_open = false;  // whether a document has been started
};

enum class PrintEnd { AllPages, Cancelled };

// Prints the source's pages and ends the job, after the last page or when the observer cancels it.
// The labels of a cancelled job form a complete job, which the caller finishes as usual. If the
// source fails after the job was cancelled (a print system may have stopped its helper too), that
// is still a cancelled job. Any other error aborts the job and is passed on.
PrintEnd PrintPages(PageSource& source, LabelJob& job);
