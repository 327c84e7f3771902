#include "viewer/language/command.h"

#include <charconv>
#include <cmath>

#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr double kLongestMm = 3276.7;
constexpr double kWidestMm = 2 * kLongestMm + 1;  // two colours, side by side
constexpr double kFarMm = 10000;

constexpr Field Millimetres(const char* name, double least = -kFarMm, double most = kFarMm) {
  return {name, "mm", least, most, nullptr};
}
constexpr Field Word(const char* name, const char* choices = nullptr) {
  return {name, "", 0, 0, choices};
}

constexpr const char* kSensors = "e|l0|l1|l2|x0|x1";

constexpr CommandForm kForms[] = {
    {Verb::Comment, "comment", ";", "*", ";TEXT", "comment for people, nothing is printed", {}},
    {Verb::Millimetres, "unit", "mm", "", "mm", "lengths that follow are in millimetres", {}},
    {Verb::Opening, "opening", "zO", "", "zO", "fixed opening line of a set-up", {}},
    {Verb::NewLabel, "label", "J", "", "J", "begins a new label", {}},
    {Verb::Head,
     "head",
     "H",
     "#,#[:#],$,$[,B#]",
     "H SPEED,DARKNESS[:DARKNESS2],T|D,R0|R1[,B VALUE]",
     "sets the print head",
     {{"speed", "mm/s", 1, 1000},
      {"darkness"},
      {"darkness of the second colour"},
      Word("method", "T=thermal transfer|D=direct thermal"),
      Word("ribbon saver", "R0=off|R1=on"),
      {"parameter B"}}},
    {Verb::Options, "options", "O ", "*", "O OPTION,OPTION,...", "sets options", {}},
    {Verb::LabelSize,
     "label size",
     "S",
     "$;#,#,#,#,#*",
     "S SENSOR;OFFSET X,OFFSET Y,LENGTH,PITCH,WIDTH",
     "sets the label size",
     {Word("sensor", kSensors), Millimetres("offset x", -kLongestMm, kLongestMm),
      Millimetres("offset y", -kLongestMm, kLongestMm), Millimetres("length", 0.01, kLongestMm),
      Millimetres("pitch", 0.01, kFarMm), Millimetres("width", 0.01, kWidestMm)}},
    {Verb::PValue, "P value", "P", "#", "P LENGTH", "sets the P value", {Millimetres("length")}},
    {Verb::CutFirst,
     "Csp",
     "Csp,",
     "#",
     "Csp,LENGTH",
     "sets the cutter once, before the job's labels",
     {Millimetres("length")}},
    {Verb::CutStart,
     "Cs",
     "Cs,",
     "#",
     "Cs,LENGTH",
     "sets the first cut once, before the job's labels",
     {Millimetres("length")}},
    {Verb::CutPosition,
     "Cp",
     "Cp,",
     "#",
     "Cp,LENGTH",
     "sets the cutter for this label",
     {Millimetres("length")}},
    {Verb::CutAfter,
     "cut after",
     "Ce,",
     "#,#",
     "Ce,LENGTH,LENGTH",
     "cuts after this label",
     {Millimetres("first value"), Millimetres("second value")}},
    {Verb::CutEvery,
     "cut every",
     "C",
     "#,#,#",
     "C LABELS,LENGTH,LENGTH",
     "cuts after every so many labels (9998: no count)",
     {{"labels", "", 1, 9998}, Millimetres("first value"), Millimetres("second value")}},
    {Verb::EraseImages,
     "erase images",
     "eIMG;",
     "$",
     "eIMG;*",
     "erases the images the printer holds",
     {Word("names", "*=all")}},
    {Verb::Download,
     "download",
     "dPNG;",
     "$",
     "dPNG;NAME",
     "downloads the PNG image that follows",
     {Word("name")}},
    {Verb::PlaceImage,
     "place image",
     "I:",
     "$;#,#,$;$",
     "I:FIELD;X,Y,ANGLE;NAME",
     "places an image in a field of the label",
     {Word("field"), Millimetres("x"), Millimetres("y"),
      Word("angle",
           "0=as it is|90=a quarter turn to the left|180=half a turn|270=a quarter turn to the "
           "right"),
      Word("image")}},
    {Verb::Recall,
     "recall",
     "R ",
     "$;$",
     "R FIELD;NAME",
     "fills a field of an earlier label again",
     {Word("field"), Word("image")}},
    {Verb::Print, "print", "A", "#", "A COPIES", "prints the label", {{"copies", "", 1, 32767}}},
};

constexpr OptionForm kOptions[] = {
    {"A0=", '#', "option A0", ""},
    {"A1=", '$', "option A1", ""},
    {"A2=", '#', "option A2", ""},
    {"A3=", '#', "option A3", ""},
    {"A4=", '#', "option A4", ""},
    {"A5=", '#', "option A5", "mm"},
    {"C", '#', "option C", "mm"},
    {"D", 0, "option D", ""},
    {"E", 0, "option E", ""},
    {"H", '#', "two colours, option H", "mm"},
    {"M", 0, "option M", ""},
    {"N", 0, "option N", ""},
    {"P", 0, "option P", ""},
    {"S", 0, "option S", ""},
    {"X", 0, "two darkness values", ""},
    {"T", '#', "option T", "mm"},
};

// Returns the decimal number at the start of the text; empty if there is none.
std::string_view NumberAt(std::string_view text) {
  std::size_t at = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  const auto digits = [&] {
    const std::size_t start = at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
    return at > start;
  };
  if (!digits()) return {};
  if (at < text.size() && text[at] == '.') {
    const std::size_t point = at++;
    if (!digits()) at = point;
  }
  return text.substr(0, at);
}

std::string_view WordAt(std::string_view text) {
  return text.substr(0, std::min(text.find_first_of(",;"), text.size()));
}

double ToNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc::result_out_of_range ? HUGE_VAL : number;
}

// Returns the entry "word" or "word=meaning" from a list of choices; empty if it has none.
std::string_view Choice(std::string_view choices, std::string_view word) {
  while (!choices.empty()) {
    const std::string_view entry = choices.substr(0, std::min(choices.find('|'), choices.size()));
    if (entry.substr(0, std::min(entry.find('='), entry.size())) == word) return entry;
    choices.remove_prefix(std::min(entry.size() + 1, choices.size()));
  }
  return {};
}

// Parses the values of a command by its shape.
class ShapeReader {
 public:
  ShapeReader(std::string_view text, const CommandForm& form) : m_text(text), m_form(form) {}

  bool Read(Line& line) {
    if (!ReadShape(m_form.shape, line)) return false;
    return m_text.empty();
  }
  // True if the first value can be read: then the line is meant to be this command.
  bool BeginsWell() {
    const char first = *m_form.shape;
    if (first == '#') return !NumberAt(m_text).empty();
    if (first != '$' || m_form.fields[0].choices == nullptr) return first != 0;
    return !Choice(m_form.fields[0].choices, WordAt(m_text)).empty();
  }

 private:
  bool ReadShape(std::string_view shape, Line& line) {
    while (!shape.empty()) {
      const char element = shape.front();
      if (element == '[') {
        const std::size_t end = shape.find(']');
        ReadOptional(shape.substr(1, end - 1), line);
        shape.remove_prefix(end + 1);
        continue;
      }
      if (!ReadElement(element, line)) return false;
      shape.remove_prefix(1);
    }
    return true;
  }
  // A missing optional group leaves a value without text.
  void ReadOptional(std::string_view group, Line& line) {
    const std::string_view before = m_text;
    const std::size_t count = line.values.size();
    if (ReadShape(group, line)) return;
    m_text = before;
    line.values.resize(count);
    line.values.push_back({&m_form.fields[count], {}});
  }
  bool ReadElement(char element, Line& line) {
    if (element == '*') {
      line.rest = m_text;
      m_text = {};
      return true;
    }
    if (element != '#' && element != '$') {
      if (!m_text.starts_with(element)) return false;
      m_text.remove_prefix(1);
      return true;
    }
    const std::string_view text = element == '#' ? NumberAt(m_text) : WordAt(m_text);
    if (text.empty()) return false;
    const double number = element == '#' ? ToNumber(text) : 0;
    line.values.push_back({&m_form.fields[line.values.size()], text, number, element == '#'});
    m_text.remove_prefix(text.size());
    return true;
  }

  std::string_view m_text;
  const CommandForm& m_form;
};

}  // namespace

Line ReadLine(std::string_view text) {
  Line line;
  if (text.empty()) {
    line.verb = Verb::Blank;
    return line;
  }
  for (const CommandForm& form : kForms) {
    if (!text.starts_with(form.token)) continue;
    const std::string_view values = text.substr(std::string_view(form.token).size());
    line = {form.verb, &form, {}, {}};
    if (ShapeReader(values, form).Read(line)) return line;
    if (ShapeReader(values, form).BeginsWell()) return {Verb::Broken, &form, {}, text};
  }
  return {Verb::Passed, nullptr, {}, text};
}

std::vector<Option> ReadOptions(std::string_view list) {
  std::vector<Option> options;
  while (!list.empty()) {
    const std::string_view text = list.substr(0, std::min(list.find(','), list.size()));
    list.remove_prefix(std::min(text.size() + 1, list.size()));
    Option option = {nullptr, text, {}};
    for (const OptionForm& form : kOptions) {
      const std::string_view key = form.key;
      if (!text.starts_with(key)) continue;
      const std::string_view after = text.substr(key.size());
      const std::string_view value = form.value == '#'   ? NumberAt(after)
                                     : form.value == '$' ? after
                                                         : std::string_view();
      option = {&form, value, after.substr(value.size())};
      break;
    }
    options.push_back(option);
  }
  return options;
}

std::optional<std::string> RangeFault(const Line& line, const Value& value) {
  const Field& field = *value.field;
  if (!value.Given()) return std::nullopt;
  const std::string what = std::string("The ") + field.name + " of the " + line.form->name +
                           " command is " + Printable(value.text);
  if (field.choices != nullptr) {
    if (!Choice(field.choices, value.text).empty()) return std::nullopt;
    std::string words;
    for (const char* c = field.choices; *c != 0;) {
      const std::string_view rest = c;
      const std::string_view entry = rest.substr(0, std::min(rest.find('|'), rest.size()));
      words += (words.empty() ? "" : ", ");
      words += entry.substr(0, std::min(entry.find('='), entry.size()));
      c += entry.size() + (entry.size() < rest.size() ? 1 : 0);
    }
    return what + ": write one of " + words;
  }
  if (field.least == field.most) return std::nullopt;
  const bool whole = *field.unit != 'm' || std::string_view(field.unit) == "mm/s";
  if (value.number >= field.least && value.number <= field.most &&
      (!whole || value.number == std::floor(value.number))) {
    return std::nullopt;
  }
  return what + ": write " + (whole ? "a whole number from " : "a number from ") +
         Plain(field.least) + " to " + Plain(field.most) + (*field.unit ? " " : "") + field.unit;
}

std::string_view Meaning(const Value& value) {
  if (value.field->choices == nullptr) return value.text;
  const std::string_view entry = Choice(value.field->choices, value.text);
  const std::size_t equals = entry.find('=');
  return equals == entry.npos ? value.text : entry.substr(equals + 1);
}

}  // namespace viewer
