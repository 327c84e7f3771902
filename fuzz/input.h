// Takes values from the bytes of a fuzz case; after the last byte all are zero.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

  template <typename Number>
  Number Take() {
    Number number = 0;
    const std::size_t count = std::min(sizeof number, m_left);
    if (count != 0) std::memcpy(&number, m_data, count);
    Skip(count);
    return number;
  }
  std::string Text(std::size_t most) {
    const std::size_t count = std::min(most, m_left);
    std::string text(reinterpret_cast<const char*>(m_data), count);
    Skip(count);
    return text;
  }
  bool Ended() const { return m_left == 0; }

 private:
  void Skip(std::size_t count) {
    m_data += count;
    m_left -= count;
  }

  const std::uint8_t* m_data;
  std::size_t m_left;
};
