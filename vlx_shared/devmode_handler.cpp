// The driver's devmode operations on the private devmode.

#include <algorithm>
#include <cstring>

#include "config/vlx_shared.h"
#include "vlx_shared/devmode.h"

namespace {

HRESULT Refuse(DWORD error) {
  SetLastError(error);
  return E_FAIL;
}

// How many bytes of the incoming record may be read: the size in its header, limited by the size in
// the public devmode if there is one.
std::size_t ReadableSize(const OEMDMPARAM& parameters) {
  if (parameters.pOEMDMIn == nullptr) return 0;
  std::size_t room = sizeof(OEMDEV);
  if (const DEVMODEW* publicDevmode = parameters.pPublicDMIn;
      publicDevmode != nullptr && publicDevmode->dmDriverExtra != 0) {
    room = std::min<std::size_t>(room, publicDevmode->dmDriverExtra);
  }
  OEM_DMEXTRAHEADER header;
  if (room < sizeof header) return 0;
  std::memcpy(&header, parameters.pOEMDMIn, sizeof header);
  return std::min<std::size_t>(room, header.dwSize);
}

HRESULT Give(const OEMDEV& devmode, const OEMDMPARAM& parameters) {
  std::memmove(parameters.pOEMDMOut, &devmode, sizeof devmode);
  return S_OK;
}

}  // namespace

HRESULT hrOEMDevMode(CLoggerClient&, ConfigsCache*, LPCWSTR, DWORD dwMode,
                     POEMDMPARAM pOemDMParam) {
  if (pOemDMParam == nullptr || dwMode < OEMDM_SIZE || dwMode > OEMDM_MERGE) {
    return Refuse(ERROR_INVALID_PARAMETER);
  }
  if (dwMode == OEMDM_SIZE) {
    pOemDMParam->cbBufSize = sizeof(OEMDEV);
    return S_OK;
  }
  if (pOemDMParam->pOEMDMOut == nullptr) return Refuse(ERROR_INVALID_PARAMETER);
  if (pOemDMParam->cbBufSize < sizeof(OEMDEV)) return Refuse(ERROR_INSUFFICIENT_BUFFER);
  if (dwMode == OEMDM_DEFAULT) return Give(DefaultDevMode(), *pOemDMParam);

  OEMDEV devmode;
  if (!AdoptDevMode(pOemDMParam->pOEMDMIn, ReadableSize(*pOemDMParam), &devmode)) {
    return Refuse(ERROR_INVALID_PARAMETER);
  }
  // The flag belongs to the job that sent the cuts; a merged record starts a new one.
  if (dwMode == OEMDM_MERGE) devmode.dwInitialCutSent = 0;
  return Give(devmode, *pOemDMParam);
}
