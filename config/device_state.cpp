#include "config/device_state.h"

#include <new>

#include "config/vlx_shared.h"
#include "platform/memory.h"

namespace {

void FreeBlock(void* block) { LocalFree(block); }
void FreeBitmap(void* bitmap) { BitmapHelper::DeleteBitmap(static_cast<Gdiplus::Bitmap*>(bitmap)); }

// Makes owner hold the resource. The smart pointer frees the resource itself when its bookkeeping
// cannot be allocated.
bool Own(std::shared_ptr<void>& owner, void* resource, void (*release)(void*)) {
  if (resource == nullptr) {
    owner.reset();
    return true;
  }
  try {
    owner.reset(resource, release);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

bool COemPDEV::SetPageBuffer(BYTE* buffer, DWORD size) {
  if (!Own(m_pageBufferOwner, buffer, FreeBlock)) return false;
  pBitmapBuffer = buffer;
  dwBitmapBufferSize = size;
  return true;
}

bool COemPDEV::SetColorTable(RGBQUAD* table, LONG entries) {
  if (!Own(m_colorTableOwner, table, FreeBlock)) return false;
  pColorTable = table;
  cColorTableEntries = entries;
  return true;
}

void COemPDEV::KeepBackground(Gdiplus::Bitmap* bitmap) {
  if (!Own(m_backgroundOwner, bitmap, FreeBitmap)) m_backgroundOwner.reset();
  pPrevPageBitmap1 = static_cast<Gdiplus::Bitmap*>(m_backgroundOwner.get());
}

void COemPDEV::KeepHighlight(Gdiplus::Bitmap* bitmap) {
  if (!Own(m_highlightOwner, bitmap, FreeBitmap)) m_highlightOwner.reset();
  pPrevPageBitmap2 = static_cast<Gdiplus::Bitmap*>(m_highlightOwner.get());
}

void COemPDEV::ResetPage() {
  m_pageBufferOwner.reset();
  pBitmapBuffer = nullptr;
  dwBitmapBufferSize = 0;
  bPageStarted = FALSE;
  bmiPage = {};
}
