#include "Renderer/hooks.h"

#include "Renderer/exception_guard.h"
#include "commands/job_stream.h"
#include "commands/print_commands.h"
#include "config/device_state.h"
#include "config/log.h"
#include "imaging/page_pipeline.h"

namespace {

// The device state behind a surface. Without one the hook has nothing to work on: returns null,
// with the last error set.
COemPDEV* StateOf(const SURFOBJ* pso) {
  COemPDEV* state = DeviceState(DeviceOf(pso));
  if (state != nullptr) return state;
  LogError(kRendering, "A document hook was called without a device state");
  SetLastError(ERROR_INVALID_PARAMETER);
  return nullptr;
}

// Calls the driver's own function. FALSE if the driver did not give one.
template <typename Function, typename... Arguments>
BOOL CallDriver(Function function, Arguments... arguments) {
  return function == nullptr ? FALSE : function(arguments...);
}

// The hook's result, TRUE or FALSE, from its own and the driver's.
BOOL Both(INT ok, BOOL driverResult) { return ok != 0 && driverResult != 0 ? TRUE : FALSE; }

// Emits the captured page and prepares the next one. Never throws.
INT ProcessPage(SURFOBJ* pso) {
  return Guarded(INT{0}, [&] { return ProcessImageData(pso); });
}

// Runs a writer. Returns 1, or 0 if it ran out of memory.
template <typename Writer>
INT Write(Writer&& writer) {
  return Guarded(INT{0}, [&] {
    writer();
    return INT{1};
  });
}

using BandingFunction = BOOL(APIENTRY*)(SURFOBJ*, POINTL*);

// hook and function: their names for the log.
BOOL PassBand(const char* hook, const char* function, BandingFunction COemPDEV::*saved,
              SURFOBJ* pso, POINTL* pptl) {
  COemPDEV* state = StateOf(pso);
  if (state == nullptr) return FALSE;
  const POINTL origin = pptl == nullptr ? POINTL{0, 0} : *pptl;
  LogTrace(kRendering, "%s BEGIN (OemPDEV=%p, pptl.x=%d, pptl.y=%d)", hook,
           static_cast<void*>(state), origin.x, origin.y);
  LogTrace(kNoCategory, "%s calling %s...", hook, function);
  const BOOL result = CallDriver(state->*saved, pso, pptl);
  LogTrace(kRendering, "%s END (%d)", hook, result);
  return result;
}

}  // namespace

BOOL APIENTRY OEMStartDoc(SURFOBJ* pso, LPWSTR pwszDocName, DWORD dwJobId) {
  COemPDEV* state = StateOf(pso);
  if (state == nullptr) return FALSE;
  const bool reset = pwszDocName == nullptr && dwJobId == 0;  // ResetPDEV has copied the state
  INT ok = 1;
  if (reset) {
    LogTrace(kRendering, "OEMStartDoc BEGIN (ResetDC, dwJobId=%d, OemPDEV=%p, pBitmapBuffer=%p)", 0,
             static_cast<void*>(state), static_cast<void*>(state->pBitmapBuffer));
  } else {
    LogTrace(kRendering, "OEMStartDoc BEGIN (dwJobId=%d, OemPDEV=%p)", static_cast<LONG>(dwJobId),
             static_cast<void*>(state));
    state->dwPageCount = 0;
    if (!state->bJobHeaderSent) {
      ok = Write([&] { WriteJobHeader(DeviceOf(pso), pwszDocName); });
      state->bJobHeaderSent = ok != 0;
    }
    state->dwJobId = dwJobId;
  }
  LogTrace(kNoCategory, "OEMStartDoc calling DrvStartDoc...");
  const BOOL driverResult = CallDriver(state->pfnDrvStartDoc, pso, pwszDocName, dwJobId);
  const BOOL result = ok ? driverResult : FALSE;
  LogTrace(kRendering, "OEMStartDoc END%s (%d)", reset ? " (ResetDC)" : "", result);
  return result;
}

BOOL APIENTRY OEMStartPage(SURFOBJ* pso) {
  COemPDEV* state = StateOf(pso);
  if (state == nullptr) return FALSE;
  LogTrace(kRendering, "OEMStartPage BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  INT ok = ProcessPage(pso);
  ++state->dwPageCount;
  if (ok && state->dwPageCount >= 2) ok = Write([&] { SendPrintCommand(DeviceOf(pso)); });
  LogTrace(kNoCategory, "OEMStartPage calling DrvStartPage...");
  const BOOL driverResult = CallDriver(state->pfnDrvStartPage, pso);
  const BOOL result = Both(ok, driverResult);
  LogTrace(kRendering, "OEMStartPage END (%d = %d && %d)", result, ok, driverResult);
  return result;
}

BOOL APIENTRY OEMSendPage(SURFOBJ* pso) {
  COemPDEV* state = StateOf(pso);
  if (state == nullptr) return FALSE;
  LogTrace(kRendering, "OEMSendPage BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  LogTrace(kNoCategory, "OEMSendPage calling DrvSendPage...");
  const BOOL result = CallDriver(state->pfnDrvSendPage, pso);
  LogTrace(kRendering, "OEMSendPage END (%d)", result);
  return result;
}

BOOL APIENTRY OEMStartBanding(SURFOBJ* pso, POINTL* pptl) {
  return PassBand("OEMStartBanding", "DrvStartBanding", &COemPDEV::pfnDrvStartBanding, pso, pptl);
}

BOOL APIENTRY OEMNextBand(SURFOBJ* pso, POINTL* pptl) {
  return PassBand("OEMNextBand", "DrvNextBand", &COemPDEV::pfnDrvNextBand, pso, pptl);
}

BOOL APIENTRY OEMEndDoc(SURFOBJ* pso, FLONG fl) {
  COemPDEV* state = StateOf(pso);
  if (state == nullptr) return FALSE;
  LogTrace(kRendering, "OEMEndDoc BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  INT ok = 1;
  if (fl != ED_ABORTDOC) {
    ok = ProcessPage(pso);
    if (ok) ok = Write([&] { WriteJobEnd(DeviceOf(pso)); });
  }
  state->dwPageCount = 0;
  state->bJobHeaderSent = FALSE;
  state->KeepBackground(nullptr);
  state->KeepHighlight(nullptr);
  state->ResetPage();
  LogTrace(kNoCategory, "OEMEndDoc calling DrvEndDoc...");
  const BOOL driverResult = CallDriver(state->pfnDrvEndDoc, pso, fl);
  const BOOL result = Both(ok, driverResult);
  LogTrace(kRendering, "OEMEndDoc END (%d = %d && %d)", result, ok, driverResult);
  return result;
}
