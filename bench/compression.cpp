// Compresses the images of the bench's pages with each candidate library and level, and prints two
// tables: time and bytes of each, and the time until a printer has the images over the links that a
// printer may hang on. The choices in platform/linux/gdiplus/deflate.cpp are read off the second.

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/job.h"
#include "bench/page.h"
#include "bench/units.h"
#include "config/vlx_shared.h"

namespace {

constexpr int kWidthPx = 1200;
constexpr int kHeightPx = 1800;
constexpr int kRounds = 7;

using Bytes = std::vector<std::uint8_t>;

struct Codec {
  std::string name;
  // Compresses rows to a zlib stream in out, which has room, and returns its size.
  std::function<std::size_t(const Bytes& rows, Bytes& out)> run;
};

std::size_t RunLibdeflate(int level, const Bytes& rows, Bytes& out) {
  libdeflate_compressor* compressor = libdeflate_alloc_compressor(level);
  const std::size_t size =
      libdeflate_zlib_compress(compressor, rows.data(), rows.size(), out.data(), out.size());
  libdeflate_free_compressor(compressor);
  return size;
}

std::size_t RunIsal(int level, const Bytes& rows, Bytes& out) {
  constexpr std::uint32_t kLevelBytes[] = {ISAL_DEF_LVL0_DEFAULT, ISAL_DEF_LVL1_DEFAULT,
                                           ISAL_DEF_LVL2_DEFAULT, ISAL_DEF_LVL3_DEFAULT};
  const auto memory = std::make_unique_for_overwrite<std::uint8_t[]>(kLevelBytes[level]);
  const auto stream = std::make_unique_for_overwrite<isal_zstream>();
  isal_deflate_stateless_init(stream.get());
  stream->level = level;
  stream->level_buf = memory.get();
  stream->level_buf_size = kLevelBytes[level];
  stream->gzip_flag = IGZIP_ZLIB;
  stream->end_of_stream = 1;
  stream->next_in = const_cast<std::uint8_t*>(rows.data());
  stream->avail_in = static_cast<std::uint32_t>(rows.size());
  stream->next_out = out.data();
  stream->avail_out = static_cast<std::uint32_t>(out.size());
  return isal_deflate_stateless(stream.get()) == COMP_OK ? stream->total_out : 0;
}

std::vector<Codec> Codecs() {
  using std::placeholders::_1, std::placeholders::_2;
  std::vector<Codec> codecs;
  for (int level = 0; level <= ISAL_DEF_MAX_LEVEL; ++level) {
    codecs.push_back({"ISA-L " + std::to_string(level), std::bind(RunIsal, level, _1, _2)});
  }
  for (int level = 1; level <= 12; ++level) {
    codecs.push_back(
        {"libdeflate " + std::to_string(level), std::bind(RunLibdeflate, level, _1, _2)});
  }
  return codecs;
}

struct Link {
  const char* name;
  double bytesPerMs;
};
constexpr Link kLinks[] = {{"100 Mbit/s", 12500}, {"1 MB/s", 1000}, {"115,200 baud", 11.52}};

// The filtered rows of a PNG file with one IDAT chunk, as the plug-in sends it.
Bytes RowsOf(const std::string& png) {
  const std::size_t at = png.find("IDAT");
  const auto* file = reinterpret_cast<const std::uint8_t*>(png.data());
  const std::size_t size =
      std::size_t{file[at - 4]} << 24 | file[at - 3] << 16 | file[at - 2] << 8 | file[at - 1];
  Bytes rows(std::size_t{3} * 2 * (kWidthPx + 1) * kHeightPx);
  std::size_t bytes = 0;
  libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
  const libdeflate_result result = libdeflate_zlib_decompress(decompressor, file + at + 4, size,
                                                              rows.data(), rows.size(), &bytes);
  libdeflate_free_decompressor(decompressor);
  if (result != LIBDEFLATE_SUCCESS) throw std::runtime_error("a PNG file cannot be read back");
  rows.resize(bytes);
  return rows;
}

struct Image {
  std::string name;
  bool inColor;
  Bytes rows;
  double libpngBytes;
};

struct Path {
  const char* name;
  const char* sample;
  bool twoColors;
  WORD ditherer;
  bool bothSides;
};
constexpr Path kPaths[] = {
    {"crisp", "shipping", false, eThreshold, false},
    {"photo, threshold", "photo", false, eThreshold, false},
    {"photo, ordered", "photo", false, eOrdered, false},
    {"photo, Floyd-Steinberg", "photo", false, eFloydSteinberg, false},
    {"two colours", "two-colour", true, eFloydSteinberg, false},
    {"crisp, both sides", "shipping", false, eThreshold, true},
    {"photo, both sides", "photo", false, eFloydSteinberg, true},
};

// The images of a page count as one.
std::vector<Image> Images(const Path& path) {
  JobSettings settings;
  settings.landscape = false;
  settings.twoColors = path.twoColors;
  settings.ditherer = path.ditherer;
  settings.bothSides = path.bothSides;
  Job job(settings, {ReadLabel(path.sample, kWidthPx, kHeightPx)});
  job.SendBands();
  job.EmitPage();
  std::vector<Image> images;
  for (const std::string& png : job.Images()) {
    images.push_back(
        {path.name, path.bothSides, RowsOf(png), static_cast<double>(LibpngLevel9Bytes(png))});
  }
  return images;
}

double CpuMs() { return static_cast<double>(std::clock()) * 1000 / CLOCKS_PER_SEC; }

struct Result {
  double ms = 0;
  double bytes = 0;
};

Result Measure(const Codec& codec, const std::vector<Image>& images) {
  Result result;
  for (const Image& image : images) {
    Bytes out(image.rows.size() + image.rows.size() / 8 + 1024);
    std::vector<double> times;
    std::size_t bytes = 0;
    for (int round = 0; round < kRounds; ++round) {
      const double start = CpuMs();
      bytes = codec.run(image.rows, out);
      times.push_back(CpuMs() - start);
    }
    if (bytes == 0) throw std::runtime_error(codec.name + " found no room");
    std::nth_element(times.begin(), times.begin() + kRounds / 2, times.end());
    result.ms += times[kRounds / 2];
    result.bytes += static_cast<double>(bytes);
  }
  return result;
}

void PrintRow(const std::string& name, const std::vector<std::string>& cells) {
  std::printf("| %s |", name.c_str());
  for (const std::string& cell : cells) std::printf(" %s |", cell.c_str());
  std::printf("\n");
}

std::string Format(const char* format, double a, double b = 0) {
  char text[64];
  std::snprintf(text, sizeof text, format, a, b);
  return text;
}

}  // namespace

int main() {
  const BenchHome home;
  const std::vector<Codec> codecs = Codecs();
  // By kind of image (dots, colour) and link: the time of each codec, all pages together.
  std::vector<double> delivery[2][std::size(kLinks)];
  std::vector<std::vector<std::string>> cells(codecs.size());
  std::vector<std::string> head;
  for (auto& kind : delivery) {
    for (auto& link : kind) link.resize(codecs.size());
  }
  for (const Path& path : kPaths) {
    const std::vector<Image> images = Images(path);
    double libpngBytes = 0;
    for (const Image& image : images) libpngBytes += image.libpngBytes;
    head.push_back(path.name);
    for (std::size_t i = 0; i < codecs.size(); ++i) {
      const Result result = Measure(codecs[i], images);
      cells[i].push_back(Format("%.2f · %.3f", result.ms, result.bytes / libpngBytes));
      for (std::size_t link = 0; link < std::size(kLinks); ++link) {
        delivery[path.bothSides][link][i] += result.ms + result.bytes / kLinks[link].bytesPerMs;
      }
    }
  }
  std::printf("Time in ms and bytes of libpng level 9, %d x %d dots\n\n", kWidthPx, kHeightPx);
  PrintRow("library, level", head);
  PrintRow("---", std::vector<std::string>(head.size(), "---:"));
  for (std::size_t i = 0; i < codecs.size(); ++i) PrintRow(codecs[i].name, cells[i]);

  std::printf("\nTime in ms until the printer has all images, dots · both sides in colour\n\n");
  head.clear();
  for (const Link& link : kLinks) head.push_back(link.name);
  PrintRow("library, level", head);
  PrintRow("---", std::vector<std::string>(head.size(), "---:"));
  for (std::size_t i = 0; i < codecs.size(); ++i) {
    std::vector<std::string> row;
    for (std::size_t link = 0; link < std::size(kLinks); ++link) {
      row.push_back(Format("%.1f · %.1f", delivery[0][link][i], delivery[1][link][i]));
    }
    PrintRow(codecs[i].name, row);
  }
}
