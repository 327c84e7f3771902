#include "viewer/reports/explain.h"

#include <optional>

#include "viewer/image/png.h"
#include "viewer/language/command.h"
#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr const char* kPassedOn = "passed to the printer unchanged";

// "speed 100 mm/s", "angle 180 (half a turn)".
std::string ValueWords(const Value& value) {
  const Field& field = *value.field;
  std::string words = std::string(field.name) + " ";
  const std::string_view meaning = Meaning(value);
  if (field.choices != nullptr && meaning != value.text) {
    words += Printable(value.text) + " (" + std::string(meaning) + ")";
  } else if (value.isNumber) {
    words += Plain(value.number);
  } else {
    words += Printable(value.text);
  }
  return words + (*field.unit != 0 ? " " : "") + field.unit;
}

std::string OptionWords(const Option& option) {
  if (option.form == nullptr) return "\"" + Printable(option.text) + "\" " + kPassedOn;
  std::string words = option.form->words;
  if (!option.text.empty()) words += " " + Printable(option.text);
  if (!option.text.empty() && *option.form->unit != 0)
    words += std::string(" ") + option.form->unit;
  if (!option.rest.empty()) words += ", then \"" + Printable(option.rest) + "\" " + kPassedOn;
  return words;
}

class Explainer {
 public:
  Explanation Explain(const Piece& piece) {
    Explanation it;
    it.place = piece.place;
    it.bytes = piece.bytes;
    if (piece.kind == Piece::Kind::Data) {
      ExplainData(piece, it);
    } else {
      it.text = Printable(piece.text);
      ExplainLine(ReadLine(piece.text), it);
    }
    return it;
  }

 private:
  void ExplainData(const Piece& piece, Explanation& it) {
    const PngHeader header = ReadPngHeader(piece.text);
    const std::string bytes = std::to_string(piece.text.size());
    const std::string name = m_download.value_or("?");
    it.text = "ESC : data ESC end-of-data";
    it.command = "image data";
    it.values = {{"image", name}, {"data_bytes", bytes}};
    it.words = "PNG data of image " + name;
    if (header.found) {
      it.values.insert(it.values.end(),
                       {{"width_dots", std::to_string(header.width)},
                        {"height_dots", std::to_string(header.height)},
                        {"bits_a_dot", std::to_string(header.depth * header.channels)}});
      it.words += ": " + std::to_string(header.width) + " x " + std::to_string(header.height) +
                  " dots, " + std::to_string(header.depth * header.channels) +
                  (header.depth * header.channels == 1 ? " bit" : " bits");
    } else {
      it.words += ": not a PNG file";
    }
    it.words += ", " + bytes + " bytes";
    if (!piece.whole) it.words += ", cut off";
    m_download.reset();
  }

  void ExplainLine(const Line& line, Explanation& it) {
    if (line.form == nullptr) {
      const bool blank = line.verb == Verb::Blank;
      it.command = blank ? "blank" : "passed on";
      it.words = blank ? "empty line" : kPassedOn;
      return;
    }
    it.command = line.form->name;
    switch (line.verb) {
      case Verb::Broken:
        it.words = "cannot be read: write " + std::string(line.form->syntax);
        return;
      case Verb::Comment:
        it.words = line.form->words;
        return;
      case Verb::Options:
        ExplainOptions(line, it);
        return;
      default:
        break;
    }
    it.words = line.form->words;
    const char* separator = ": ";
    for (const Value& value : line.values) {
      if (!value.Given()) continue;
      it.values.emplace_back(value.field->name, Printable(value.text));
      it.words += separator + ValueWords(value);
      separator = ", ";
    }
    if (line.verb == Verb::NewLabel) m_twoColours = false;
    if (line.verb == Verb::Download) m_download = Printable(line.Text(0));
    if (line.verb == Verb::LabelSize && m_twoColours) {
      it.words += " (two colours of " + Plain(line.Number(5) / 2) + " mm side by side)";
    }
    if (!line.rest.empty()) it.words += ", then \"" + Printable(line.rest) + "\" " + kPassedOn;
  }

  void ExplainOptions(const Line& line, Explanation& it) {
    it.words = line.form->words;
    const char* separator = ": ";
    for (const Option& option : ReadOptions(line.rest)) {
      if (option.form != nullptr) {
        std::string key = option.form->key;
        if (key == "H") m_twoColours = true;
        if (key.ends_with('=')) key.pop_back();
        it.values.emplace_back(key, Printable(option.text));
      }
      it.words += separator + OptionWords(option);
      separator = ", ";
    }
  }

  std::optional<std::string> m_download;
  bool m_twoColours = false;
};

}  // namespace

void ExplainJob(std::string_view job, const std::function<void(const Explanation&)>& each) {
  StreamReader stream(job);
  Explainer explainer;
  while (const std::optional<Piece> piece = stream.Next()) each(explainer.Explain(*piece));
}

}  // namespace viewer
