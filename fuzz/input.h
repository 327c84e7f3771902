// Takes values from the bytes of a fuzz case; after the last byte all are zero.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

  template <typename Number>
  Number Take() {
    Number number = 0;
    const std::size_t count = std::min(sizeof number, m_left);
    if (count != 0) std::memcpy(&number, m_data, count);
    m_data += count;
    m_left -= count;
    return number;
  }
  bool Ended() const { return m_left == 0; }

 private:
  const std::uint8_t* m_data;
  std::size_t m_left;
};
