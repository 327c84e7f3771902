#include <png.h>

#include "host/error.h"
#include "host/pages/page_reader.h"

namespace {

struct ReadState {
  std::string reason;
};

void OnError(png_structp png, png_const_charp message) {
  static_cast<ReadState*>(png_get_error_ptr(png))->reason = message;
  png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

// What the file is turned into: 8-bit blue, green, red, alpha laid on white.
void SetTransforms(png_structp png, png_infop info) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_color_16 white = {};
  white.red = white.green = white.blue = white.gray = 255;
  if (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA ||
      png_get_valid(png, info, PNG_INFO_tRNS)) {
    png_set_gamma(png, 1.0, 1.0);  // colours are mixed as they are encoded, as browsers do
    png_set_background(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
  }
  png_set_bgr(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
}

// Both steps leave by libpng's jump on an error; nothing with a destructor lives in them.
bool ReadHeader(png_structp png, png_infop info, std::FILE* file) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_init_io(png, file);
  png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);  // the page's own limit follows
  png_read_info(png, info);
  return true;
}

bool ReadRows(png_structp png, png_infop info, png_bytep* rows, std::size_t rowBytes) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  SetTransforms(png, info);
  if (png_get_rowbytes(png, info) != rowBytes) png_error(png, "rows of an unexpected length");
  png_read_image(png, rows);
  png_read_end(png, nullptr);
  return true;
}

struct Reader {
  ReadState state;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, OnError, OnWarning);
  png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

}  // namespace

void ReadPng(std::FILE* file, const std::string& source, PageImage& page) {
  Reader reader;
  if (reader.info == nullptr) throw std::bad_alloc();
  const auto fail = [&]() -> HostError {
    return HostError(kExitInput, source + ": is not a whole PNG file (" + reader.state.reason +
                                     "); export it again");
  };
  if (!ReadHeader(reader.png, reader.info, file)) throw fail();
  ShapePage(page, png_get_image_width(reader.png, reader.info),
            png_get_image_height(reader.png, reader.info), source);
  std::vector<png_bytep> rows(page.heightPx);
  for (std::uint32_t y = 0; y < page.heightPx; ++y) rows[y] = page.Row(y);
  if (!ReadRows(reader.png, reader.info, rows.data(), std::size_t{3} * page.widthPx)) {
    throw fail();
  }
}
