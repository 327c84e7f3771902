#include "bench/job.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

constexpr LONG kUsualBandPx = 64;

void Check(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string("The plug-in refused ") + what);
}

}  // namespace

BenchHome::BenchHome() {
  m_folder = (std::filesystem::temp_directory_path() / "vlx_bench_XXXXXX").string();
  if (mkdtemp(m_folder.data()) == nullptr) throw std::runtime_error("no folder for the bench");
  setenv("VLX_HOME", m_folder.c_str(), 1);
  if (const char* png = std::getenv("VLX_BENCH_PNG")) {
    std::ofstream(m_folder + "/system.toml") << "png = \"" << png << "\"\n";
  }
}

BenchHome::~BenchHome() { std::filesystem::remove_all(m_folder); }

std::vector<Job::Strip> Job::Cut(const Raster& page, const JobSettings& settings) {
  const LONG length = settings.landscape ? page.widthPx : page.heightPx;
  LONG step = settings.bands == 0 ? kUsualBandPx : (length + settings.bands - 1) / settings.bands;
  if (settings.landscape) step = (step + 3) / 4 * 4;
  std::vector<Strip> strips;
  for (LONG start = 0; start < length; start += step) {
    const LONG count = std::min(step, length - start);
    const POINT at = settings.landscape ? POINT{start, 0} : POINT{0, start};
    Raster strip =
        settings.landscape ? MakeRaster(count, page.heightPx) : MakeRaster(page.widthPx, count);
    for (LONG y = 0; y < strip.heightPx; ++y) {
      std::memcpy(strip.Row(y), page.Row(at.y + y) + 3 * at.x, 3 * strip.widthPx);
    }
    const bool blank =
        settings.flagBlankBands && std::all_of(strip.pixels.begin(), strip.pixels.end(),
                                               [](std::uint8_t level) { return level == 0xFF; });
    strips.push_back({std::move(strip), at, blank});
  }
  if (settings.landscape) std::reverse(strips.begin(), strips.end());
  return strips;
}

Job::Job(const JobSettings& settings, const std::vector<Raster>& pages) {
  for (const Raster& page : pages) m_pages.push_back(Cut(page, settings));
  OEMDEV& devmode = *m_driver.devmode;
  Check(m_driver.CreateObject(), "its object");
  OEMDMPARAM block = {};
  block.pOEMDMOut = &devmode;
  block.cbBufSize = sizeof devmode;
  Check(m_driver.Object()->DevMode(OEMDM_DEFAULT, &block) == S_OK, "its default settings");
  devmode.dwColorMode = settings.twoColors ? 2 : 1;
  devmode.wDitherer = settings.ditherer;
  devmode.bTopSideSameAsBottom = settings.bothSides ? TRUE : FALSE;
  DEVMODEW& publicDevmode = m_driver.publicDevmode;
  publicDevmode.dmOrientation = settings.landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  publicDevmode.dmPaperWidth = 1000;
  publicDevmode.dmPaperLength = 1500;
  publicDevmode.dmYResolution = 300;
  m_driver.dpi = 300;
  m_driver.documentName = u"bench";
  m_driver.jobId = 1;
  m_driver.spooler = [this](std::string_view bytes) { Keep(bytes); };
  Check(m_driver.Open(), "the device");
  Check(m_driver.StartDocument(), "the document");
  Check(m_driver.StartPage(), "the first page");
}

void Job::SendBands() {
  for (const Strip& strip : m_pages[m_nextPage]) {
    const Raster& raster = strip.raster;
    Check(m_driver.SendBand({raster.widthPx, raster.heightPx,
                             static_cast<DWORD>(raster.pixels.size()), strip.offset,
                             raster.pixels.data(), strip.blank}),
          "a band");
  }
  m_nextPage = (m_nextPage + 1) % m_pages.size();
}

void Job::EmitPage() {
  m_imageCount = 0;
  Check(m_driver.StartPage(), "a page");
}

void Job::CaptureAndAbort() {
  SendBands();
  m_driver.AbortDocument();
}

void Job::Keep(std::string_view bytes) {
  if (!bytes.starts_with("\x89PNG")) return;
  if (m_imageCount == m_images.size()) m_images.emplace_back();
  m_images[m_imageCount++].assign(bytes);
}
