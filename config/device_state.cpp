#include "config/device_state.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "config/vlx_shared.h"
#include "platform/memory.h"

namespace {

void FreeBlock(void* block) { LocalFree(block); }
void FreeBitmap(void* bitmap) { BitmapHelper::DeleteBitmap(static_cast<Gdiplus::Bitmap*>(bitmap)); }

// Makes owner own the resource. Without memory for its control block, the smart pointer frees the
// resource itself.
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

struct COemPDEV::PageBlock {
  explicit PageBlock(BYTE* block) : bytes(block) {}
  PageBlock(const PageBlock&) = delete;
  PageBlock& operator=(const PageBlock&) = delete;
  ~PageBlock() { LocalFree(bytes); }
  BYTE* bytes;
};

bool COemPDEV::SetPageBuffer(BYTE* buffer, DWORD size) {
  try {
    m_pageBufferOwner = buffer == nullptr ? nullptr : std::make_shared<PageBlock>(buffer);
  } catch (const std::bad_alloc&) {
    LocalFree(buffer);
    return false;
  }
  pBitmapBuffer = buffer;
  dwBitmapBufferSize = size;
  return true;
}

bool COemPDEV::GrowPageBuffer(DWORD size) {
  // A buffer that another state shares is copied.
  if (m_pageBufferOwner == nullptr || m_pageBufferOwner.use_count() != 1) {
    auto* buffer = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, size));
    if (buffer == nullptr) return false;
    if (pBitmapBuffer != nullptr) {
      std::memcpy(buffer, pBitmapBuffer, std::min(size, dwBitmapBufferSize));
    }
    return SetPageBuffer(buffer, size);
  }
  auto* buffer = static_cast<BYTE*>(LocalReAlloc(m_pageBufferOwner->bytes, size, LMEM_MOVEABLE));
  if (buffer == nullptr) return false;
  m_pageBufferOwner->bytes = buffer;
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

std::shared_ptr<const void> COemPDEV::TakePage() {
  std::shared_ptr<const void> buffer = std::move(m_pageBufferOwner);
  ResetPage();
  return buffer;
}

void COemPDEV::ResetPage() {
  m_pageBufferOwner.reset();
  pBitmapBuffer = nullptr;
  dwBitmapBufferSize = 0;
  bPageStarted = FALSE;
  bmiPage = {};
}
