// Finds the known name closest to a mistyped one.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

// The number of letters to insert, delete or replace to turn one text into the other.
inline std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// The closest name, the first if several are equally close; empty if more than a third of the
// letters are wrong.
inline std::string Nearest(std::string_view text, const std::vector<std::string>& names) {
  const auto nearest = std::min_element(
      names.begin(), names.end(), [text](const std::string& one, const std::string& other) {
        return EditDistance(text, one) < EditDistance(text, other);
      });
  const bool close =
      nearest != names.end() && EditDistance(text, *nearest) <= (text.size() + 1) / 3;
  return close ? *nearest : std::string();
}
