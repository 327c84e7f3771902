// The shared library's entry of system.toml, and complaints about the whole file.

#include "platform/extensions.h"
#include "platform/linux/gdiplus/link.h"
#include "platform/linux/spooler/printers.h"
#include "platform/linux/state/system_toml.h"
#include "platform/linux/text/code_page.h"

namespace {

SystemPart<INT>& DotGain() {
  static SystemPart<INT> part(0, [](const toml::table& file) {
    return static_cast<INT>(
        ReadNumber(file, "dot_gain", 0, 25, "must be a percentage from 0 to 25").value_or(0));
  });
  return part;
}

}  // namespace

// Of the printer that the thread prints on; negative: the one of all printers.
thread_local INT t_printerDotGain = -1;

INT PlatformDotGainPercent() { return t_printerDotGain >= 0 ? t_printerDotGain : *DotGain().Get(); }

void PlatformSetPrinterDotGain(INT percent) { t_printerDotGain = percent; }

std::string PlatformSystemFileComplaint() {
  for (const std::string& complaint :
       {SystemTomlComplaint(), Printers().Complaint(), AnsiCodePage().Complaint(),
        Gdiplus::PrinterLink().Complaint(), DotGain().Complaint()}) {
    if (!complaint.empty()) return complaint;
  }
  return {};
}
