// PNG files: one page each.

#include <png.h>

#include <exception>
#include <utility>

#include "host/error.h"
#include "host/pages/page_formats.h"

namespace {

// What libpng's callbacks share with the reader. Exceptions must not pass through libpng.
struct PngState {
  PageInput& input;
  std::string reason;
  std::exception_ptr inputError;
};

void OnError(png_structp png, png_const_charp message) {
  static_cast<PngState*>(png_get_error_ptr(png))->reason = message;
  png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

bool ReadInput(PngState& state, png_bytep bytes, std::size_t size) {
  try {
    return state.input.Read(bytes, size) == size;
  } catch (...) {
    state.inputError = std::current_exception();
    return false;
  }
}
void OnRead(png_structp png, png_bytep bytes, std::size_t size) {
  if (!ReadInput(*static_cast<PngState*>(png_get_io_ptr(png)), bytes, size)) {
    png_error(png, "it ends early");
  }
}

// Asks for 8-bit blue, green, red on white.
void SetTransforms(png_structp png, png_infop info) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_color_16 white = {};
  white.red = white.green = white.blue = white.gray = 255;
  if (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA ||
      png_get_valid(png, info, PNG_INFO_tRNS)) {
    png_set_gamma(png, 1.0, 1.0);  // mixes encoded values, as browsers do
    png_set_background(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
  }
  png_set_bgr(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
}

// On an error libpng jumps out of these two functions: no object in them has a destructor.
bool ReadHeader(png_structp png, png_infop info, PngState* state) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_read_fn(png, state, OnRead);
  png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);  // ShapePage has its own limit
  png_read_info(png, info);
  return true;
}

bool ReadRows(png_structp png, png_infop info, png_bytep* rows, std::size_t rowBytes) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  SetTransforms(png, info);
  if (png_get_rowbytes(png, info) != rowBytes) png_error(png, "its rows have an unexpected length");
  png_read_image(png, rows);
  png_read_end(png, nullptr);
  return true;
}

struct PngReader {
  explicit PngReader(PageInput& input) : state{input, {}, nullptr} {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, OnError, OnWarning);
    info = png == nullptr ? nullptr : png_create_info_struct(png);
  }
  ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  PngState state;
  png_structp png;
  png_infop info;
};

class PngPage final : public PageSource {
 public:
  explicit PngPage(PageInput input) : m_input(std::move(input)) {}

  bool Next(PageImage& page) override {
    if (m_done) return false;
    m_done = true;
    PngReader reader(m_input);
    if (reader.info == nullptr) throw std::bad_alloc();
    if (!ReadHeader(reader.png, reader.info, &reader.state)) Fail(reader.state);
    ShapePage(page, png_get_image_width(reader.png, reader.info),
              png_get_image_height(reader.png, reader.info), m_input.Name());
    std::vector<png_bytep> rows(page.heightPx);
    for (std::uint32_t y = 0; y < page.heightPx; ++y) rows[y] = page.Row(y);
    if (!ReadRows(reader.png, reader.info, rows.data(), std::size_t{3} * page.widthPx)) {
      Fail(reader.state);
    }
    return true;
  }
  bool Skip(PageImage&) override { return !std::exchange(m_done, true); }
  std::optional<std::size_t> Count() const override { return 1; }

 private:
  [[noreturn]] void Fail(const PngState& state) const {
    if (state.inputError) std::rethrow_exception(state.inputError);
    throw HostError(kExitInput, m_input.Name() + ": is not a whole PNG file (" + state.reason + ")",
                    "export it again");
  }

  PageInput m_input;
  bool m_done = false;
};

}  // namespace

std::unique_ptr<PageSource> OpenPng(PageInput input, int) {
  return std::make_unique<PngPage>(std::move(input));
}
