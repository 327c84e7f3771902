#include "host/label_job.h"

#include <cmath>

#include "common/file.h"
#include "host/driver/module.h"
#include "host/driver/printer.h"
#include "host/settings/printer_profiles.h"
#include "platform/file.h"

namespace {

std::string ScaleText(const PageScale& scale, const std::string& page, int dpi) {
  const std::string x = FormatMm(scale.x * 100), y = FormatMm(scale.y * 100);
  const bool isInProportion = std::abs(scale.x / scale.y - 1) < 0.01;  // to whole dots
  std::string text = page;
  if (scale.statedDpi > 0) {
    text += " states " + FormatMm(scale.statedDpi) + " dpi, the printer has " +
            std::to_string(dpi) + ": it";
  }
  text += " is scaled to " + x + (isInProportion ? "" : " x " + y) + " %";
  return scale.isWhole ? text : text + "; bar codes on it may no longer scan";
}

// The plug-in sends nothing for a file that it cannot read, so such a job is refused here.
void CheckBlockFiles(const OEMDEV& devmode) {
  for (int i = 0; i < kCustomBlockCount; ++i) {
    const CustomBlock block = GetCustomBlock(devmode, i);
    if (block.kind != kBlockFile || FilePtr(_fsopen(block.text.c_str(), "r", _SH_DENYNO))) continue;
    throw HostError(kExitInput,
                    "The file of command block " + std::to_string(i) + ", \"" + block.text +
                        "\", cannot be read",
                    "check its name and who may read it; write the whole path");
  }
}

}  // namespace

LabelJob::LabelJob(const JobRequest& request, Spool& spool, JobObserver& observer)
    : m_spool(spool),
      m_observer(observer),
      m_name(request.name),
      m_id(request.id),
      m_fit(request.fit),
      m_place(request.place),
      m_bandRows(request.bandRows),
      m_driver(FindPlugin(), spool),
      m_devmode(m_driver.MakeDevMode(request.settings, request.record)) {
  CheckBlockFiles(m_devmode);
  if (const std::string warning = SystemFileWarning(); !warning.empty()) observer.Warning(warning);
  m_driver.Open(request.printer, request.settings.Page(), m_devmode,
                ProfileOf(request.printer).dotGainPercent);
  m_device = m_driver.Page();
  CheckPrintable(m_device);
}

LabelJob::~LabelJob() { Abort(); }

void LabelJob::Print(PageImage& page) {
  const std::string name = "Page " + std::to_string(m_pages + 1);
  {
    const StageClock::Scope time(m_spool.Clock(), Stage::Read);
    if (const std::optional<PageScale> scale = FitPage(page, m_device, m_fit, name)) {
      m_observer.Warning(ScaleText(*scale, name, m_device.dpi));
    }
    const POINT at = PlaceOf(page, m_device, m_place);
    if (LosesContent(page, m_device, at)) {
      m_observer.Warning(name + " has content in the margins that the printer does not reach");
    }
    RasterPage(page, m_device, at, m_surface);
  }
  if (!m_open) {
    m_driver.StartDocument(m_name, m_id);
    m_open = true;
  }
  m_driver.PrintPage(m_surface, m_bandRows);
  ++m_pages;
}

void LabelJob::End() {
  if (!m_open) return;
  m_driver.EndDocument();
  m_open = false;
}

void LabelJob::Abort() noexcept {
  if (m_open) m_driver.AbortDocument();
  m_open = false;
}

namespace {

// Reads the next page. Returns false after the last page, or if the job was cancelled before the
// page was read or meanwhile.
bool ReadPage(PageSource& source, LabelJob& job, PageImage& page, bool& cancelled) {
  const StageClock::Scope time(job.Target().Clock(), Stage::Read);
  cancelled = job.Observer().Cancelled();
  if (cancelled) return false;
  try {
    return source.Next(page);
  } catch (const HostError&) {
    cancelled = job.Observer().Cancelled();
    if (cancelled) return false;
    throw;
  }
}

}  // namespace

PrintEnd PrintPages(PageSource& source, LabelJob& job) {
  PageImage page;
  bool cancelled = false;
  try {
    while (ReadPage(source, job, page, cancelled)) {
      job.Print(page);
      job.Observer().Progress(job.PagesPrinted(), source.Count());
    }
    job.End();
  } catch (...) {
    job.Abort();
    throw;
  }
  return cancelled ? PrintEnd::Cancelled : PrintEnd::AllPages;
}
