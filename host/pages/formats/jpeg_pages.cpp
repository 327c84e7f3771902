// JPEG files: one page each, read by libjpeg-turbo.

#include <cstdio>
// jpeglib.h needs what cstdio declares
#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>
#include <exception>
#include <utility>

#include "host/error.h"
#include "host/pages/formats/exif.h"
#include "host/pages/page_formats.h"
#include "host/pages/pixel_rows.h"

namespace {

constexpr long kMostMemory = 1L << 30;  // of a progressive file's coefficients
constexpr int kMostScans = 200;         // programs write about ten

// What libjpeg's callbacks share with the reader. Exceptions must not pass through libjpeg.
struct JpegState {
  jpeg_error_mgr errors;  // must be first: StateOf casts its address
  jpeg_progress_mgr progress;
  jpeg_source_mgr source;
  std::jmp_buf jump;
  PageInput* input;
  std::exception_ptr inputError;
  char reason[JMSG_LENGTH_MAX];
  JOCTET buffer[1 << 14];
};

JpegState& StateOf(j_common_ptr jpeg) { return *reinterpret_cast<JpegState*>(jpeg->err); }

void OnError(j_common_ptr jpeg) {
  JpegState& state = StateOf(jpeg);
  state.errors.format_message(jpeg, state.reason);
  std::longjmp(state.jump, 1);
}

// A warning is fatal if the picture may not be what the file's author saw.
void OnMessage(j_common_ptr jpeg, int level) {
  const int code = jpeg->err->msg_code;
  const bool isHarmless = code == JWRN_EXTRANEOUS_DATA || code == JWRN_ADOBE_XFORM ||
                          code == JWRN_BOGUS_PROGRESSION || code == JWRN_JFIF_MAJOR;
  if (level < 0 && !isHarmless) OnError(jpeg);
}

void OnProgress(j_common_ptr jpeg) {
  if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number <= kMostScans) return;
  JpegState& state = StateOf(jpeg);
  std::snprintf(state.reason, sizeof state.reason, "it has more than %d scans", kMostScans);
  std::longjmp(state.jump, 1);
}

std::size_t ReadInput(JpegState& state) {
  try {
    return state.input->Read(state.buffer, sizeof state.buffer);
  } catch (...) {
    state.inputError = std::current_exception();
    return 0;
  }
}

boolean FillBuffer(j_decompress_ptr jpeg) {
  JpegState& state = StateOf(reinterpret_cast<j_common_ptr>(jpeg));
  state.source.bytes_in_buffer = ReadInput(state);
  state.source.next_input_byte = state.buffer;
  if (state.source.bytes_in_buffer > 0) return TRUE;
  std::snprintf(state.reason, sizeof state.reason, "it ends early");
  std::longjmp(state.jump, 1);
}

void SkipBytes(j_decompress_ptr jpeg, long count) {
  jpeg_source_mgr& source = *jpeg->src;
  while (count > static_cast<long>(source.bytes_in_buffer)) {
    count -= static_cast<long>(source.bytes_in_buffer);
    FillBuffer(jpeg);
  }
  if (count <= 0) return;
  source.next_input_byte += count;
  source.bytes_in_buffer -= static_cast<std::size_t>(count);
}

void DoNothing(j_decompress_ptr) {}

struct JpegReader {
  explicit JpegReader(PageInput& input) {
    jpeg.err = jpeg_std_error(&state.errors);
    state.errors.error_exit = OnError;
    state.errors.emit_message = OnMessage;
    state.progress.progress_monitor = OnProgress;
    state.source = {state.buffer,           0,        DoNothing, FillBuffer, SkipBytes,
                    jpeg_resync_to_restart, DoNothing};
    state.input = &input;
    state.reason[0] = '\0';
  }
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  JpegState state = {};
  jpeg_decompress_struct jpeg = {};
};

// On an error libjpeg jumps out of these two functions: no object in them has a destructor.
bool ReadHeader(jpeg_decompress_struct* jpeg, JpegState* state) {
  if (setjmp(state->jump) != 0) return false;
  jpeg_create_decompress(jpeg);
  jpeg->mem->max_memory_to_use = kMostMemory;
  jpeg->src = &state->source;
  jpeg->progress = &state->progress;
  jpeg_save_markers(jpeg, JPEG_APP0 + 1, 0xFFFF);
  jpeg_read_header(jpeg, TRUE);
  switch (jpeg->jpeg_color_space) {
    case JCS_GRAYSCALE:
      jpeg->out_color_space = JCS_GRAYSCALE;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      jpeg->out_color_space = JCS_CMYK;
      break;
    default:
      jpeg->out_color_space = JCS_EXT_BGR;
  }
  jpeg_calc_output_dimensions(jpeg);
  return true;
}

// inks: 4 bytes per pixel. row: 3 x widthPx bytes. Files of the common writers store paper as 255.
void MixInks(const JSAMPLE* inks, std::uint32_t widthPx, bool paperIs255, std::uint8_t* row) {
  const unsigned flip = paperIs255 ? 0 : 0xFF;
  for (; widthPx > 0; --widthPx, inks += 4, row += 3) {
    const unsigned black = inks[3] ^ flip;
    for (int i = 0; i < 3; ++i) {
      row[i] = static_cast<std::uint8_t>(((inks[2 - i] ^ flip) * black + 127) / 255);
    }
  }
}

bool ReadRows(jpeg_decompress_struct* jpeg, JpegState* state, PageImage* page, JSAMPLE* line) {
  if (setjmp(state->jump) != 0) return false;
  jpeg_start_decompress(jpeg);
  while (jpeg->output_scanline < page->heightPx) {
    std::uint8_t* row = page->Row(jpeg->output_scanline);
    JSAMPROW into = jpeg->out_color_space == JCS_EXT_BGR ? row : line;
    jpeg_read_scanlines(jpeg, &into, 1);
    if (jpeg->out_color_space == JCS_GRAYSCALE) SpreadGrey(line, page->widthPx, row);
    if (jpeg->out_color_space == JCS_CMYK) {
      MixInks(line, page->widthPx, jpeg->saw_Adobe_marker, row);
    }
  }
  jpeg_finish_decompress(jpeg);
  return true;
}

ExifData ExifOf(const jpeg_decompress_struct& jpeg) {
  for (const jpeg_marker_struct* marker = jpeg.marker_list; marker; marker = marker->next) {
    const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
    if (data.starts_with(kExifName)) return ReadExif(data.substr(kExifName.size()));
  }
  return {};
}

class JpegPage final : public PageSource {
 public:
  explicit JpegPage(PageInput input) : m_input(std::move(input)) {}

  bool Next(PageImage& page) override {
    if (m_done) return false;
    m_done = true;
    const auto reader = std::make_unique<JpegReader>(m_input);
    if (!ReadHeader(&reader->jpeg, &reader->state)) Fail(reader->state);
    const jpeg_decompress_struct& jpeg = reader->jpeg;
    ShapePage(page, jpeg.output_width, jpeg.output_height, m_input.Name());
    const ExifData exif = ExifOf(jpeg);  // ReadRows frees the markers in the end
    std::vector<JSAMPLE> line(std::size_t{4} * page.widthPx);
    if (!ReadRows(&reader->jpeg, &reader->state, &page, line.data())) Fail(reader->state);
    if (jpeg.saw_JFIF_marker && (jpeg.density_unit == 1 || jpeg.density_unit == 2)) {
      const double unit = jpeg.density_unit == 1 ? 1 : 2.54;
      StateResolution(page, jpeg.X_density * unit, jpeg.Y_density * unit);
    } else {
      StateResolution(page, exif.xDpi, exif.yDpi);
    }
    TurnPage(page, exif.orientation, m_input.Name());
    return true;
  }
  bool Skip(PageImage&) override { return !std::exchange(m_done, true); }
  std::optional<std::size_t> Count() const override { return 1; }

 private:
  [[noreturn]] void Fail(const JpegState& state) const {
    if (state.inputError) std::rethrow_exception(state.inputError);
    throw HostError(kExitInput,
                    m_input.Name() + ": is not a whole JPEG file (" + state.reason + ")",
                    "export it again");
  }

  PageInput m_input;
  bool m_done = false;
};

}  // namespace

std::unique_ptr<PageSource> OpenJpeg(PageInput input, int) {
  return std::make_unique<JpegPage>(std::move(input));
}
