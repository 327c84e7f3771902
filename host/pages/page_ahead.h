// A page source whose first page can be looked at before it is printed.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "host/pages/page_source.h"

class PageAhead final : public PageSource {
 public:
  explicit PageAhead(std::unique_ptr<PageSource> pages) : m_pages(std::move(pages)) {}

  // The first page, which Next will deliver; null if there is none. Call it before the first Next.
  // The page belongs to this object. Throws as Next does.
  const PageImage* First() {
    if (!m_first && !m_pages->Next(m_first.emplace())) m_first.reset();
    return m_first ? &*m_first : nullptr;
  }

  bool Next(PageImage& page) override {
    if (!m_first) return m_pages->Next(page);
    page = std::move(*m_first);
    m_first.reset();
    return true;
  }
  std::optional<std::size_t> Count() const override { return m_pages->Count(); }

 private:
  const std::unique_ptr<PageSource> m_pages;
  std::optional<PageImage> m_first;
};
