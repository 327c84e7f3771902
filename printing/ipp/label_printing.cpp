#include "printing/ipp/label_printing.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "host/pages/page_input.h"
#include "printing/ipp/label_driver.h"

namespace {

class DeviceTarget final : public JobTarget {
 public:
  explicit DeviceTarget(pappl_device_t* device) : m_device(device) {}
  void Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t sent = papplDeviceWrite(m_device, bytes.data(), bytes.size());
      if (sent <= 0) {
        throw HostError(kExitTarget, "The printer takes no more of the job",
                        "look whether it is on and connected, then print again");
      }
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
  }
  void Finish() override { papplDeviceFlush(m_device); }

 private:
  pappl_device_t* m_device;
};

// One job on its way to the device, and its messages for the client.
class PrinterJob final : public JobObserver {
 public:
  PrinterJob(pappl_job_t* job, const pappl_pr_options_t& options, pappl_device_t* device,
             JobPictures& pictures)
      : m_job(job), m_spool(OpenTargets(job, options, device, pictures)) {
    const char* name = papplJobGetName(job);
    request.name = name == nullptr || *name == '\0' ? "label" : name;
    request.id = static_cast<std::uint32_t>(papplJobGetID(job));
    const std::unique_ptr<ipp_t, void (*)(ipp_t*)> defaults(
        papplPrinterGetDriverAttributes(papplJobGetPrinter(job)), ippDelete);
    request.settings = SettingsOf(options, defaults.get());
  }

  void Warning(const std::string& text) override {
    papplLogJob(m_job, PAPPL_LOGLEVEL_WARN, "%s", text.c_str());
    papplJobSetReasons(m_job, PAPPL_JREASON_WARNINGS_DETECTED, PAPPL_JREASON_NONE);
  }
  void Progress(std::size_t, std::optional<std::size_t>) override {
    papplJobSetImpressionsCompleted(m_job, request.settings.Page().copies);
  }
  bool Cancelled() override { return papplJobIsCanceled(m_job); }

  Spool& Target() { return m_spool; }
  const std::string& Name() const { return request.name; }

  // Sends the rest of the job. showCost: makes the cost the job's message.
  void Finish(bool showCost) {
    m_spool.Finish();
    if (showCost) papplJobSetMessage(m_job, "%s", m_spool.Cost().Line().c_str());
  }

  JobRequest request;

 private:
  static std::vector<std::unique_ptr<JobTarget>> OpenTargets(pappl_job_t* job,
                                                             const pappl_pr_options_t& options,
                                                             pappl_device_t* device,
                                                             JobPictures& pictures) {
    std::vector<std::unique_ptr<JobTarget>> targets;
    // The pictures come first, so that a job that is lost on its way to the printer is not drawn:
    // see Spool::Finish.
    targets.push_back(pictures.OpenTarget(papplPrinterGetID(papplJobGetPrinter(job)),
                                          options.printer_resolution[0]));
    targets.push_back(std::make_unique<DeviceTarget>(device));
    return targets;
  }

  pappl_job_t* m_job;
  Spool m_spool;
};

// Runs a step of a job. Exceptions must not pass through PAPPL: they become the job's message, and
// the step returns false.
template <typename Step>
bool Try(pappl_job_t* job, const Step& step) {
  try {
    step();
    return true;
  } catch (const std::bad_alloc&) {
    papplJobSetMessage(job, "There is not enough memory for this page");
  } catch (const std::exception& error) {
    papplJobSetMessage(job, "%s", error.what());
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s", error.what());
  }
  papplJobSetReasons(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, PAPPL_JREASON_NONE);
  return false;
}

bool WantsCollatedCopies(pappl_job_t* job) {
  const char* handling =
      ippGetString(papplJobGetAttribute(job, "multiple-document-handling"), 0, nullptr);
  return handling != nullptr && std::strcmp(handling, "separate-documents-collated-copies") == 0;
}

// Prints a document from its file.
bool PrintFile(pappl_job_t* job, pappl_device_t* device, void* pictures) {
  pappl_pr_options_t* options = papplJobCreatePrintOptions(job, 0, true);
  const bool done = Try(job, [&] {
    PrinterJob printer(job, *options, device, *static_cast<JobPictures*>(pictures));
    PageRequest pageRequest = PageRequestOf(*options);
    if (WantsCollatedCopies(job)) {
      pageRequest.repeats = std::max(options->copies, 1);
      printer.request.settings.Set("print.copies", "1");
    }
    LabelPages pages(pageRequest, papplJobGetFilename(job), printer.Name());
    if (PrintLabels(pages, printer.request, printer.Target(), printer) > 0) printer.Finish(true);
    pages.RethrowFailure();
  });
  papplJobDeletePrintOptions(options);
  return done;
}

JobPictures& PicturesOf(pappl_job_t* job) {
  pappl_pr_driver_data_t data;
  papplPrinterGetDriverData(papplJobGetPrinter(job), &data);
  return *static_cast<JobPictures*>(data.extension);
}

// A raster job, which comes line by line.
struct RasterJob {
  RasterJob(pappl_job_t* job, const pappl_pr_options_t& options, pappl_device_t* device)
      : printer(job, options, device, PicturesOf(job)) {
    SetPaper(printer.request.settings, PageRequestOf(options).paper.size);
    label.emplace(printer.request, printer.Target(), printer);
  }
  PrinterJob printer;
  std::optional<LabelJob> label;
  PageImage page;
  bool failed = false;
};

RasterJob& RasterOf(pappl_job_t* job) { return *static_cast<RasterJob*>(papplJobGetData(job)); }

bool StartJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device) {
  return Try(job, [&] { papplJobSetData(job, new RasterJob(job, *options, device)); });
}

bool StartPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*, unsigned) {
  RasterJob& raster = RasterOf(job);
  const bool done = Try(job, [&] {
    ShapePage(raster.page, options->header.cupsWidth, options->header.cupsHeight,
              raster.printer.Name());
  });
  raster.failed |= !done;
  return done;
}

bool WriteLine(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*, unsigned y,
               const unsigned char* line) {
  RasterJob& raster = RasterOf(job);
  if (y >= raster.page.heightPx) return true;
  std::uint8_t* row = raster.page.Row(y);
  for (std::uint32_t x = 0; x < raster.page.widthPx; ++x, row += 3) {
    switch (options->header.cupsBitsPerPixel) {
      case 1:
        row[0] = row[1] = row[2] = line[x / 8] >> (7 - x % 8) & 1 ? 0 : 0xFF;
        break;
      case 8:
        row[0] = row[1] = row[2] =
            options->header.cupsColorSpace == CUPS_CSPACE_K ? 0xFF - line[x] : line[x];
        break;
      default:
        row[0] = line[3 * x + 2];
        row[1] = line[3 * x + 1];
        row[2] = line[3 * x];
    }
  }
  return true;
}

bool EndPage(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*, unsigned page) {
  RasterJob& raster = RasterOf(job);
  const bool done = Try(job, [&] {
    CropToLabel(raster.page, raster.label->Page(), "Page " + std::to_string(page), false);
    raster.label->Print(raster.page);
    // PAPPL counts the page once by itself.
    papplJobSetImpressionsCompleted(job, raster.printer.request.settings.Page().copies - 1);
  });
  raster.failed |= !done;
  return done;
}

// Called after a page that failed, too: the labels before it form a complete job.
bool EndJob(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*) {
  const std::unique_ptr<RasterJob> raster(&RasterOf(job));
  papplJobSetData(job, nullptr);
  return Try(job,
             [&] {
               raster->label->End();
               if (raster->label->PagesPrinted() > 0) raster->printer.Finish(!raster->failed);
             }) &&
         !raster->failed;
}

// Sends a finished job as it is.
bool PrintFinished(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device) {
  return Try(job, [&] {
    PrinterJob printer(job, *options, device, PicturesOf(job));
    PageInput input = PageInput::Open(papplJobGetFilename(job));
    char buffer[1 << 14];
    while (const std::size_t size = input.Read(buffer, sizeof buffer)) {
      printer.Target().Write({buffer, size});
    }
    printer.Finish(true);
  });
}

bool UpdateStatus(pappl_printer_t*) { return true; }

}  // namespace

void SetPrintCallbacks(pappl_pr_driver_data_t& data, JobPictures& pictures) {
  data.extension = &pictures;
  data.rstartjob_cb = StartJob;
  data.rstartpage_cb = StartPage;
  data.rwriteline_cb = WriteLine;
  data.rendpage_cb = EndPage;
  data.rendjob_cb = EndJob;
  data.printfile_cb = PrintFinished;
  data.status_cb = UpdateStatus;
}

void AddDocumentFormats(pappl_system_t* system, JobPictures& pictures) {
  for (const char* format : {"application/pdf", "image/png", "image/x-portable-anymap"}) {
    papplSystemAddMIMEFilter(system, format, kJobFormat, PrintFile, &pictures);
  }
}
