#include "commands/print_commands.h"

#include "commands/custom_blocks.h"
#include "commands/cut_commands.h"
#include "commands/job_stream.h"
#include "config/device_state.h"

namespace {

constexpr DWORD kAvoidedMultiple = 512;  // bytes

const OEMDEV& PrivateDevmode(PDEVOBJ pdevobj) {
  return *static_cast<const OEMDEV*>(pdevobj->pOEMDM);
}

}  // namespace

std::string BuildPrintCommand(const DEVMODEW& publicDevmode, const OEMDEV& devmode) {
  // The application repeats a collated job as a whole, so each label is printed once.
  const int quantity = publicDevmode.dmCollate != 0 ? 1 : publicDevmode.dmCopies;
  std::string text(g_strLineEnd);
  text += WithLineEnd(ExpandCustomBlock(devmode, 7));
  text.append("A").append(std::to_string(quantity)).append(g_strLineEnd);
  if (devmode.wCustomType5 != kBlockInline) text += WithLineEnd(ExpandCustomBlock(devmode, 5));
  return text;
}

void SendPrintCommand(PDEVOBJ pdevobj) {
  SpoolWrite(pdevobj, BuildPrintCommand(*pdevobj->pPublicDM, PrivateDevmode(pdevobj)));
}

void SendClosingBlock(PDEVOBJ pdevobj) {
  const OEMDEV& devmode = PrivateDevmode(pdevobj);
  if (devmode.wCustomType1 == kBlockInline) return;  // sent with every label size command
  std::string block = AfterLineEnd(ExpandCustomBlock(devmode, 1));
  const DWORD jobBytes =
      DeviceState(pdevobj)->job.dwJobBytesWritten + static_cast<DWORD>(block.size());
  if (jobBytes % kAvoidedMultiple == 0) block += g_strLineEnd;
  SpoolWrite(pdevobj, block);
}

void WriteJobEnd(PDEVOBJ pdevobj) {
  const OEMDEV& devmode = PrivateDevmode(pdevobj);
  SpoolWrite(pdevobj, BuildEndCutCommand(devmode));
  SendPrintCommand(pdevobj);
  SpoolWrite(pdevobj, AfterLineEnd(ExpandCustomBlock(devmode, 3)));
  SendClosingBlock(pdevobj);
}
