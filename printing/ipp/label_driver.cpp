#include "printing/ipp/label_driver.h"

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

#include "host/settings/setting_keys.h"

namespace {

constexpr int kResolutions[] = {203, 300, 600};
pappl_pr_driver_t g_drivers[] = {
    {"vlx-203", "VLX Label 203 dpi", "MFG:VLX;MDL:Label 203 dpi;", nullptr},
    {"vlx-300", "VLX Label 300 dpi", "MFG:VLX;MDL:Label 300 dpi;", nullptr},
    {"vlx-600", "VLX Label 600 dpi", "MFG:VLX;MDL:Label 600 dpi;", nullptr},
};

constexpr const char* kMedia[] = {
    "om_label_100x150mm",    "om_label_100x100mm", "om_label_100x60mm", "om_label_100x50mm",
    "om_label_83x47mm",      "om_label_80x50mm",   "om_label_70x40mm",  "om_label_60x40mm",
    "om_label_50x30mm",      "om_label_50x25mm",   "om_label_40x20mm",  "om_label_30x20mm",
    "iso_a5_148x210mm",      "iso_a6_105x148mm",   "oe_label_4x6in",    "oe_label_4x4in",
    "oe_label_4x3in",        "oe_label_4x2in",     "oe_label_3x2in",    "oe_label_2x1in",
    "custom_max_300x3000mm", "custom_min_5x3mm",
};

// A vendor attribute is a setting with words by another name. A word may stand for several
// settings.
struct VendorAttribute {
  const char* name;
  const char* key;    // empty: the words are settings themselves
  const char* words;  // the first is the default; "word" or "word=settings,settings"
};
constexpr VendorAttribute kVendorAttributes[] = {
    {"label-cut", "",
     "none=cut.enabled=false each-label=cut.enabled=true,cut.mode=each-label "
     "job-end=cut.enabled=true,cut.mode=job-end"},
    {"label-method", "print.method", "transfer direct"},
    {"label-ribbon-saver", "print.ribbon_saver", "false true"},
    {"label-setup-once", "print.setup_once", "false true"},
    {"label-sensor", "paper.sensor", "l0 e l1 l2 x0 x1"},
    {"label-gap", "paper.gap", "3mm 0mm 1mm 1.5mm 2mm 2.5mm 4mm 5mm 6mm 8mm 10mm"},
    {"label-ditherer", "colour.ditherer",
     "floyd-steinberg threshold ordered clustered-dot blue-noise clustered-diffusion"},
};

// Fits both PWG's hundredths of a millimetre a second and its -100 to 100 of darkness.
constexpr int kSpeedUnit = 100;
constexpr int kDarknessUnit = 10;

std::vector<std::string> WordsOf(const VendorAttribute& attribute) {
  std::istringstream stream(attribute.words);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

ipp_t* VendorAttributes() {
  ipp_t* attributes = ippNew();
  for (const VendorAttribute& attribute : kVendorAttributes) {
    std::vector<std::string> names;
    for (const std::string& word : WordsOf(attribute)) {
      names.push_back(word.substr(0, word.find('=')));
    }
    std::vector<const char*> values;
    for (const std::string& name : names) values.push_back(name.c_str());
    const std::string name = attribute.name;
    ippAddString(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, (name + "-default").c_str(), nullptr,
                 values.front());
    ippAddStrings(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, (name + "-supported").c_str(),
                  static_cast<int>(values.size()), nullptr, values.data());
  }
  return attributes;
}

void ApplyVendorWord(const VendorAttribute& attribute, const std::string& value,
                     Settings& settings) {
  for (const std::string& word : WordsOf(attribute)) {
    const std::size_t equals = word.find('=');
    if (word.substr(0, equals) != value) continue;
    if (equals == word.npos) return settings.Set(attribute.key, value);
    std::istringstream several(word.substr(equals + 1));
    for (std::string setting; std::getline(several, setting, ',');) settings.Set(setting);
    return;
  }
  throw HostError(kExitSettings, std::string(attribute.name) + " is \"" + value + "\"",
                  "choose one of the values that the printer offers");
}

}  // namespace

std::span<pappl_pr_driver_t> LabelDrivers() { return g_drivers; }

bool DescribePrinter(const char* driver, pappl_pr_driver_data_t& data, ipp_t** attributes) {
  const auto* known = g_drivers;
  while (known != std::end(g_drivers) && std::strcmp(known->name, driver) != 0) ++known;
  if (known == std::end(g_drivers)) return false;
  snprintf(data.make_and_model, sizeof data.make_and_model, "%s", known->description);
  data.format = kJobFormat;
  data.kind = PAPPL_KIND_LABEL | PAPPL_KIND_ROLL;
  data.ppm = 30;
  data.ppm_color = 30;
  data.orient_default = IPP_ORIENT_NONE;
  data.quality_default = IPP_QUALITY_NORMAL;
  data.scaling_default = PAPPL_SCALING_NONE;
  data.sides_supported = data.sides_default = PAPPL_SIDES_ONE_SIDED;
  data.duplex = PAPPL_DUPLEX_NONE;
  data.color_supported =
      PAPPL_COLOR_MODE_AUTO | PAPPL_COLOR_MODE_MONOCHROME | PAPPL_COLOR_MODE_COLOR;
  data.color_default = PAPPL_COLOR_MODE_MONOCHROME;
  data.raster_types =
      PAPPL_PWG_RASTER_TYPE_BLACK_1 | PAPPL_PWG_RASTER_TYPE_SGRAY_8 | PAPPL_PWG_RASTER_TYPE_SRGB_8;
  data.finishings = PAPPL_FINISHINGS_TRIM;
  data.num_resolution = 1;
  data.x_resolution[0] = data.y_resolution[0] = data.x_default = data.y_default =
      kResolutions[known - g_drivers];
  data.speed_supported[0] = 25 * kSpeedUnit;
  data.speed_supported[1] = 300 * kSpeedUnit;
  data.speed_default = 100 * kSpeedUnit;
  data.darkness_supported = 21;

  data.num_media = static_cast<int>(std::size(kMedia));
  std::copy(std::begin(kMedia), std::end(kMedia), data.media);
  data.num_source = 1;
  data.source[0] = "main-roll";
  data.num_type = 1;
  data.type[0] = "labels";
  pappl_media_col_t& media = data.media_default;
  snprintf(media.size_name, sizeof media.size_name, "%s", kMedia[0]);
  media.size_width = 10000;
  media.size_length = 15000;
  // Labels are printed to their edges. Without any margin a driverless queue of CUPS gives all
  // sizes names that do not match its default, and prints on letter paper.
  data.left_right = data.bottom_top = 1;
  media.left_margin = media.right_margin = media.top_margin = media.bottom_margin = 1;
  snprintf(media.source, sizeof media.source, "%s", data.source[0]);
  snprintf(media.type, sizeof media.type, "%s", data.type[0]);
  data.media_ready[0] = media;

  data.num_vendor = static_cast<int>(std::size(kVendorAttributes));
  for (std::size_t i = 0; i < std::size(kVendorAttributes); ++i) {
    data.vendor[i] = kVendorAttributes[i].name;
  }
  *attributes = VendorAttributes();
  return true;
}

Settings SettingsOf(const pappl_pr_options_t& options) {
  Settings settings;
  settings.Set("paper.dpi", std::to_string(options.printer_resolution[0]));
  settings.Set("print.copies", std::to_string(std::max(options.copies, 1)));
  if (options.print_speed > 0) {
    settings.Set("print.speed", std::to_string(options.print_speed / kSpeedUnit));
  }
  settings.Set("print.darkness", std::to_string(options.print_darkness / kDarknessUnit));
  const bool colour = options.print_color_mode == PAPPL_COLOR_MODE_COLOR;
  settings.Set("colour.mode", colour ? "two" : "one");
  if (options.orientation_requested == IPP_ORIENT_LANDSCAPE) {
    settings.Set("paper.orientation", "landscape");
  }
  for (const VendorAttribute& attribute : kVendorAttributes) {
    const char* value = cupsGetOption(attribute.name, options.num_vendor, options.vendor);
    if (value != nullptr) ApplyVendorWord(attribute, value, settings);
  }
  if (options.finishings & PAPPL_FINISHINGS_TRIM) {
    ApplyVendorWord(kVendorAttributes[0], "each-label", settings);
  }
  return settings;
}

PageOrder OrderOf(const pappl_pr_options_t& options) {
  PageOrder order;
  order.paper = {{options.media.size_width * 10, options.media.size_length * 10}, false};
  order.dpi = options.printer_resolution[0];
  order.landscape = options.orientation_requested == IPP_ORIENT_LANDSCAPE;
  order.ranges = {{static_cast<int>(std::max(options.first_page, 1U)),
                   options.last_page == 0 ? 1 << 30 : static_cast<int>(options.last_page)}};
  return order;
}
