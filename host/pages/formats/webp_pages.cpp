// WebP files, read by libwebp: the first picture of an animation is the page, turned as its Exif
// data say.

#include <webp/decode.h>
#include <webp/demux.h>

#include <utility>

#include "host/error.h"
#include "host/pages/formats/exif.h"
#include "host/pages/page_formats.h"
#include "host/pages/pixel_rows.h"

namespace {

struct DecoderDeleter {
  void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

ExifData ExifOf(const WebPDemuxer* file) {
  WebPChunkIterator chunk;
  ExifData exif;
  if (WebPDemuxGetChunk(file, "EXIF", 1, &chunk)) {
    std::string_view data(reinterpret_cast<const char*>(chunk.chunk.bytes), chunk.chunk.size);
    if (data.starts_with(kExifName)) data.remove_prefix(kExifName.size());  // of some programs
    exif = ReadExif(data);
  }
  WebPDemuxReleaseChunkIterator(&chunk);
  return exif;
}

class WebpPage final : public PageSource {
 public:
  explicit WebpPage(PageInput input) : m_input(std::move(input)) {}

  bool Next(PageImage& page) override {
    if (m_done) return false;
    m_done = true;
    const std::string file = m_input.ReadAll(kMostFileBytes);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(file.data());
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(bytes, file.size(), &features) != VP8_STATUS_OK) Fail();
    ShapePage(page, static_cast<std::uint64_t>(features.width),
              static_cast<std::uint64_t>(features.height), m_input.Name());
    WebPAnimDecoderOptions options;
    WebPAnimDecoderOptionsInit(&options);
    options.color_mode = MODE_BGRA;
    const WebPData data = {bytes, file.size()};
    const std::unique_ptr<WebPAnimDecoder, DecoderDeleter> decoder(
        WebPAnimDecoderNew(&data, &options));
    std::uint8_t* pixels = nullptr;
    int milliseconds = 0;
    WebPAnimInfo info;
    if (decoder == nullptr || !WebPAnimDecoderGetInfo(decoder.get(), &info) ||
        info.canvas_width != page.widthPx || info.canvas_height != page.heightPx ||
        !WebPAnimDecoderGetNext(decoder.get(), &pixels, &milliseconds)) {
      Fail();
    }
    for (std::uint32_t y = 0; y < page.heightPx; ++y) {
      LayOnWhite(pixels + std::size_t{4} * page.widthPx * y, page.widthPx, page.Row(y));
    }
    const ExifData exif = ExifOf(WebPAnimDecoderGetDemuxer(decoder.get()));
    StateResolution(page, exif.xDpi, exif.yDpi);
    TurnPage(page, exif.orientation, m_input.Name());
    return true;
  }
  bool Skip(PageImage&) override { return !std::exchange(m_done, true); }
  std::optional<std::size_t> Count() const override { return 1; }

 private:
  [[noreturn]] void Fail() const {
    throw HostError(kExitInput, m_input.Name() + ": is not a whole WebP file", "export it again");
  }

  PageInput m_input;
  bool m_done = false;
};

}  // namespace

std::unique_ptr<PageSource> OpenWebp(PageInput input, int) {
  return std::make_unique<WebpPage>(std::move(input));
}
