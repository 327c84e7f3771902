// Handles as numbers in a table: a stale or invented handle is an error, never a crash.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/types.h"

template <typename Content>
class HandleTable {
 public:
  // firstId keeps the handles of one table apart from those of another.
  explicit HandleTable(ULONG_PTR firstId) : m_nextId(firstId) {}

  HANDLE Add(Content content) {
    auto shared = std::make_shared<const Content>(std::move(content));
    const std::lock_guard locked(m_mutex);
    const ULONG_PTR id = m_nextId;
    m_contents.emplace(id, std::move(shared));
    m_nextId += 4;
    return reinterpret_cast<HANDLE>(id);
  }
  // Null for a handle that is not in the table.
  std::shared_ptr<const Content> Find(HANDLE handle) const {
    const std::lock_guard locked(m_mutex);
    const auto found = m_contents.find(reinterpret_cast<ULONG_PTR>(handle));
    return found == m_contents.end() ? nullptr : found->second;
  }
  bool Remove(HANDLE handle) {
    const std::lock_guard locked(m_mutex);
    return m_contents.erase(reinterpret_cast<ULONG_PTR>(handle)) != 0;
  }

 private:
  mutable std::mutex m_mutex;
  std::unordered_map<ULONG_PTR, std::shared_ptr<const Content>> m_contents;
  ULONG_PTR m_nextId;
};
