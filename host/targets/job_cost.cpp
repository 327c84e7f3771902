#include "host/targets/job_cost.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kDownload = "dPNG;";
constexpr std::string_view kImageEnd =
    "\x1B"
    "end-of-data";

// The number at the start of the text; 0 if there is none.
template <typename Number>
Number NumberOf(std::string_view text) {
  Number number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string_view AfterComma(std::string_view text, int commas) {
  for (; commas > 0; --commas) text.remove_prefix(std::min(text.find(',') + 1, text.size()));
  return text;
}

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

std::string Counted(std::uint64_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

void JobCost::Count(std::string_view write) {
  m_bytes += write.size();
  if (m_inImage) {
    if (write.starts_with(kImageEnd)) return EndImage();
    m_imageBytes += write.size();
    m_imageDigest = m_imageDigest * 31 + std::hash<std::string_view>()(write);
    return;
  }
  if (write.starts_with(kDownload)) {
    m_inImage = true;
    m_imageName = write.substr(kDownload.size(), write.find('\r') - kDownload.size());
    m_imageDigest = m_imageBytes = 0;
    return;
  }
  while (!write.empty()) {
    const std::size_t end = std::min(write.find(kLineEnd), write.size());
    CountLine(write.substr(0, end));
    write.remove_prefix(std::min(end + kLineEnd.size(), write.size()));
  }
}

void JobCost::CountLine(std::string_view line) {
  if (line.starts_with("I:Image")) return Place(line.substr(7, line.find(';') - 7));
  if (line.starts_with("R Image")) return Place(line.substr(7, line.find(';') - 7));
  if (line.starts_with("Ce,")) {
    m_cutAtEnd = true;
  } else if (line.starts_with('C') && IsNumber(line.substr(1, line.find(',') - 1))) {
    m_cutEvery = NumberOf<std::uint64_t>(line.substr(1));
  } else if (line.starts_with('A') && IsNumber(line.substr(1))) {
    PrintLabels(NumberOf<std::uint64_t>(line.substr(1)));
  } else if (line.starts_with('S') && line.find(';') != line.npos) {
    m_pitchMm = NumberOf<double>(AfterComma(line, 3));
  }
}

void JobCost::PrintLabels(std::uint64_t count) {
  m_labels += count;
  m_prints.push_back({m_bytes, m_labels});
  m_mediaMm += static_cast<double>(count) * m_pitchMm;
  m_uncut += count;
  if (m_cutEvery > 0) {
    m_cuts += m_uncut / m_cutEvery;
    m_uncut %= m_cutEvery;
  }
  if (m_cutAtEnd && m_uncut > 0) {
    ++m_cuts;
    m_uncut = 0;
  }
  m_cutAtEnd = false;
}

void JobCost::EndImage() {
  m_inImage = false;
  m_digests.insert(m_imageDigest);
  m_sentImageBytes += m_imageBytes;
  m_images.insert_or_assign(m_imageName, Image{m_imageBytes, true});
}

void JobCost::Place(std::string_view name) {
  const auto image = m_images.find(name);
  if (image == m_images.end()) return;
  if (!image->second.fresh) m_savedImageBytes += image->second.bytes;
  image->second.fresh = false;
}

JobCost::Printed JobCost::PrintedWithin(std::uint64_t bytes) const {
  Printed printed;
  for (const PrintCommand& print : m_prints) {
    if (print.endBytes > bytes) break;
    ++printed.pages;
    printed.labels = print.labels;
  }
  return printed;
}

int JobCost::SavedPercent() const {
  const double all = static_cast<double>(m_sentImageBytes + m_savedImageBytes);
  return all == 0 ? 0 : static_cast<int>(100 * static_cast<double>(m_savedImageBytes) / all);
}

std::string JobCost::Line() const {
  std::string line = Counted(m_labels, "label") + ", " + Counted(m_cuts, "cut") + ", " +
                     std::to_string(std::llround(m_mediaMm)) + " mm of media, " +
                     Counted(m_bytes, "byte") + ", " + Counted(m_digests.size(), "image");
  if (SavedPercent() > 0) {
    line += ", " + std::to_string(SavedPercent()) + " % of the image bytes saved";
  }
  return line;
}
