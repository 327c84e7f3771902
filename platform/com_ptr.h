// The owner of a COM object.
#pragma once

// Owns one reference to a COM object. Put() gives the address for an out-pointer.
template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() { Reset(); }

  Interface* Get() const { return m_p; }
  Interface* operator->() const { return m_p; }
  explicit operator bool() const { return m_p != nullptr; }
  Interface** Put() {
    Reset();
    return &m_p;
  }
  void Reset() {
    if (m_p != nullptr) m_p->Release();
    m_p = nullptr;
  }

 private:
  Interface* m_p = nullptr;
};
