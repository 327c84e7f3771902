#include "printing/ipp/label_driver.h"

#include <algorithm>
#include <charconv>
#include <cmath>
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

// A vendor attribute sets a setting: by one of a few words, or by a whole number.
struct VendorAttribute {
  const char* name;
  const char* key;
  // Each is "word", which is the setting's value, or "word=KEY=VALUE,KEY=VALUE". The first is the
  // default. Null for a number.
  const char* words;
  int lowest, highest, initial;
  int unitUm;  // of a number that is a length; otherwise 0
};
constexpr VendorAttribute Words(const char* name, const char* key, const char* words) {
  return {name, key, words, 0, 0, 0, 0};
}
// The length is in hundredths of a millimetre, as in IPP.
constexpr VendorAttribute Length(const char* name, const char* key, int lowest, int highest,
                                 int initial) {
  return {name, key, nullptr, lowest, highest, initial, 10};
}
constexpr VendorAttribute kVendorAttributes[] = {
    Words("label-cut", "cut.mode",
          "none=cut.enabled=false "
          "each-label=cut.enabled=true,cut.mode=each-label,cut.at_job_end=false "
          "job-end=cut.enabled=true,cut.mode=job-end,cut.at_job_end=true "
          "count=cut.enabled=true,cut.mode=count,cut.at_job_end=false"),
    {"label-cut-count", "cut.count", nullptr, 0, 9998, 0, 0},
    Words("label-method", "print.method", "transfer direct"),
    Words("label-ribbon-saver", "print.ribbon_saver", "false true"),
    Words("label-setup-once", "print.setup_once", "false true"),
    Words("label-sensor", "paper.sensor", "l0 e l1 l2 x0 x1"),
    Length("label-gap", "paper.gap", 0, 10000, 300),
    Length("label-offset-x", "paper.offset_x", -5000, 5000, 0),
    Length("label-offset-y", "paper.offset_y", -5000, 5000, 0),
    Words("label-highlight", "colour.highlight",
          "red=colour.highlight=#FF0000 green=colour.highlight=#00FF00 "
          "blue=colour.highlight=#0000FF yellow=colour.highlight=#FFFF00 "
          "magenta=colour.highlight=#FF00FF cyan=colour.highlight=#00FFFF "
          "orange=colour.highlight=#FF8000"),
    Words("label-ditherer", "colour.ditherer",
          "floyd-steinberg threshold ordered clustered-dot blue-noise clustered-diffusion"),
};

constexpr int kSpeedUnit = 100;  // IPP counts hundredths of a millimetre per second

// The printer's darkness is 0 to 100, where 50 is print.darkness 0; a job adds -100 to 100 to it.
// Together they give the steps from -10 to 10 that a queue of CUPS offers.
constexpr int kMiddleDarkness = 50;
constexpr int kDarknessStep = 5;
constexpr int kMostSteps = 10;

int DarknessOf(const pappl_pr_options_t& options) {
  const int percent = options.darkness_configured + options.print_darkness - kMiddleDarkness;
  return std::clamp(static_cast<int>(std::lround(1.0 * percent / kDarknessStep)), -kMostSteps,
                    kMostSteps);
}

std::vector<std::string> WordsOf(const VendorAttribute& attribute) {
  std::istringstream stream(attribute.words);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

ipp_t* VendorAttributes() {
  ipp_t* attributes = ippNew();
  for (const VendorAttribute& attribute : kVendorAttributes) {
    const std::string initial = attribute.name + std::string("-default");
    const std::string supported = attribute.name + std::string("-supported");
    if (attribute.words == nullptr) {
      ippAddInteger(attributes, IPP_TAG_PRINTER, IPP_TAG_INTEGER, initial.c_str(),
                    attribute.initial);
      ippAddRange(attributes, IPP_TAG_PRINTER, supported.c_str(), attribute.lowest,
                  attribute.highest);
      continue;
    }
    std::vector<std::string> names;
    for (const std::string& word : WordsOf(attribute)) {
      names.push_back(word.substr(0, word.find('=')));
    }
    std::vector<const char*> values;
    for (const std::string& name : names) values.push_back(name.c_str());
    ippAddString(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, initial.c_str(), nullptr,
                 values.front());
    ippAddStrings(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, supported.c_str(),
                  static_cast<int>(values.size()), nullptr, values.data());
  }
  return attributes;
}

// The printer's default, which people may have changed on its web page.
std::string DefaultOf(const VendorAttribute& attribute, ipp_t* defaults) {
  const std::string name = attribute.name + std::string("-default");
  char value[256] = {};
  ippAttributeString(ippFindAttribute(defaults, name.c_str(), IPP_TAG_ZERO), value, sizeof value);
  return value;
}

// Checks the value, because PAPPL passes on any.
void ApplyVendorValue(const VendorAttribute& attribute, const std::string& value,
                      Settings& settings) {
  if (attribute.words == nullptr) {
    int number = attribute.lowest - 1;
    std::from_chars(value.data(), value.data() + value.size(), number);
    if (number < attribute.lowest || number > attribute.highest) {
      throw HostError(kExitSettings, std::string(attribute.name) + " is \"" + value + "\"",
                      "choose " + std::to_string(attribute.lowest) + " to " +
                          std::to_string(attribute.highest));
    }
    return settings.Set(attribute.key, attribute.unitUm == 0
                                           ? std::to_string(number)
                                           : std::to_string(number * attribute.unitUm) + "um");
  }
  for (const std::string& word : WordsOf(attribute)) {
    const std::size_t equals = word.find('=');
    if (word.substr(0, equals) != value || equals == word.npos) continue;
    std::istringstream several(word.substr(equals + 1));
    for (std::string setting; std::getline(several, setting, ',');) settings.Set(setting);
    return;
  }
  settings.Set(attribute.key, value);  // takes a colour like #FF8000, refuses other unknown words
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
  data.darkness_supported = 2 * kMostSteps + 1;
  data.darkness_configured = kMiddleDarkness;

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

Settings SettingsOf(const pappl_pr_options_t& options, ipp_t* defaults) {
  Settings settings;
  settings.Set("paper.dpi", std::to_string(options.printer_resolution[0]));
  settings.Set("print.copies", std::to_string(std::max(options.copies, 1)));
  if (options.print_speed > 0) {
    settings.Set("print.speed", std::to_string(options.print_speed / kSpeedUnit));
  }
  settings.Set("print.darkness", std::to_string(DarknessOf(options)));
  const bool colour = options.print_color_mode == PAPPL_COLOR_MODE_COLOR;
  settings.Set("colour.mode", colour ? "two" : "one");
  SetOrientation(settings, options.orientation_requested);
  for (const VendorAttribute& attribute : kVendorAttributes) {
    const char* value = cupsGetOption(attribute.name, options.num_vendor, options.vendor);
    ApplyVendorValue(attribute, value != nullptr ? value : DefaultOf(attribute, defaults),
                     settings);
  }
  if (options.finishings & PAPPL_FINISHINGS_TRIM) {
    ApplyVendorValue(kVendorAttributes[0], "each-label", settings);
  }
  return settings;
}

PageRequest PageRequestOf(const pappl_pr_options_t& options) {
  PageRequest request;
  request.paper = {{options.media.size_width * 10, options.media.size_length * 10}, false};
  request.dpi = options.printer_resolution[0];
  request.landscape = IsLandscape(options.orientation_requested);
  request.ranges = {{std::max(options.first_page, 1U),
                     options.last_page == 0 ? PageRange::kOpen : options.last_page}};
  return request;
}
